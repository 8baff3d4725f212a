#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace brisko::testing {

using namespace std::chrono_literals;

// Variables added to (or replacing) the test's own environment.
using Environment = std::map<std::string, std::string>;

struct ProgramResult {
    int status = -1;  // exit status, or 128 + signal number
    std::string out;
    std::string err;
};

// How a started program's standard streams are connected.
enum class Streams {
    piped,        // standard input, output and error are pipes of the test
    pipedOwnErr,  // input and output are pipes; standard error is the test's own
    outputOnly,   // standard output is a pipe; input and error are /dev/null
    detached,     // all three are /dev/null, for programs that leave a child behind holding them
};

// A program started beside the test (found on PATH when the name has no '/'). On Linux it is sent
// SIGTERM when the thread that started it ends; it is killed and reaped on destruction if it
// still runs.
class Process {
public:
    Process(const std::string& program, const std::vector<std::string>& args, const Environment& env = {},
            Streams streams = Streams::piped);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return pid_; }
    // Writes the whole text, reading the program's output meanwhile so that neither side blocks;
    // false when the program stopped reading first.
    bool write(std::string_view text);
    void closeInput();
    // Stops reading standard output, so that the program's writes to it fail.
    void closeOutput();
    // Standard output for a reader of its own; nothing else reads it then.
    int outputFd() const { return out_; }
    // The next line of standard output without its line feed; absent at its end or after the time.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout = 10s);
    // Reads standard output until what it wrote so far holds text; false when it did not in time.
    bool waitForOutput(std::string_view text, std::chrono::milliseconds timeout = 10s);
    void signal(int number);
    // The exit status once the program has ended; absent when it still runs after the time.
    std::optional<int> wait(std::chrono::milliseconds timeout = 10s);
    // Everything it wrote and its exit status, once both outputs have ended; a program still
    // writing after the time is killed.
    ProgramResult finish(std::chrono::milliseconds timeout = 10s);

private:
    using Clock = std::chrono::steady_clock;
    // Reads what the outputs have ready, waiting until the deadline; false once both have ended.
    bool collect(Clock::time_point deadline);

    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
    std::string output_;
    std::string errors_;
    std::size_t lineStart_ = 0;  // of the next line readLine gives
    std::optional<int> status_;
};

// Waits for a child of this process to end and reaps it: its exit status (128 + signal number),
// or absent when it still runs after the time.
std::optional<int> awaitExit(pid_t pid, std::chrono::milliseconds timeout = 10s);

// Runs a program to its end with the given standard input.
ProgramResult runProgram(const std::string& program, const std::vector<std::string>& args,
                         std::string_view stdinText = "", const Environment& env = {});

// The built brisko-mac-input, and the program run as a whole command line.
const std::string& programPath();
ProgramResult runBrisko(const std::vector<std::string>& args, std::string_view stdinText = "",
                        const Environment& env = {});

}  // namespace brisko::testing
