#pragma once

namespace brisko::platform {

// Where the main thread of a long-running session waits for what ends or steers it: the end of
// standard input, a termination request (SIGTERM), a timeout, or a post from another thread.
class SessionLoop {
public:
    enum class Wake { inputEnded, terminateRequested, timedOut, posted };

    virtual ~SessionLoop() = default;
    // From now on a termination request is a wake rather than the end of the process, and
    // standard input is watched: whatever arrives on it is read and thrown away. Called once,
    // before the session starts other threads.
    virtual void open() = 0;
    // Returns what happens first within timeoutMs (0 or less: only what is already there;
    // infinite: no time limit).
    virtual Wake wait(double timeoutMs) = 0;
    // From any thread: the current or next wait returns posted.
    virtual void post() = 0;
};

}  // namespace brisko::platform
