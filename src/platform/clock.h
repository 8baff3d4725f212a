#pragma once

namespace brisko::platform {

// Monotonic time and sleeping, so that timing logic can be driven by a fake in tests.
class Clock {
public:
    virtual ~Clock() = default;
    virtual double monotonicMs() = 0;
    virtual void sleepMicroseconds(unsigned long long us) = 0;
};

}  // namespace brisko::platform
