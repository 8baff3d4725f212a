#pragma once

namespace brisko::platform {

// The signal dispositions of the long-running modes.
class ProcessSignals {
public:
    virtual ~ProcessSignals() = default;
    // Writing to a closed pipe then fails the write instead of ending the process.
    virtual void ignoreBrokenPipe() = 0;
    // A termination request then ends the process at once with status 0, releasing nothing and
    // waiting for nothing.
    virtual void exitZeroOnTerminate() = 0;
};

}  // namespace brisko::platform
