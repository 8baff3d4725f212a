#pragma once

#include <istream>
#include <ostream>
#include <string_view>

namespace brisko::platform {

// The process's standard streams and its exit, so that whole commands run in-process in tests.
class ProcessStreams {
public:
    virtual ~ProcessStreams() = default;
    // Each call is one write of the whole text. False when it could not all be written.
    virtual bool writeOut(std::string_view bytes) = 0;
    virtual bool writeErr(std::string_view bytes) = 0;
    // Buffered standard output, for commands that answer many lines.
    virtual std::ostream& bufferedOut() = 0;
    virtual std::istream& in() = 0;
    // Ends the process with the status, flushing buffered output.
    [[noreturn]] virtual void exit(int status) = 0;
    // Ends the process at once, as from a signal handler: nothing is flushed or released.
    [[noreturn]] virtual void exitImmediately(int status) = 0;
};

}  // namespace brisko::platform
