#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace brisko::e2e {

using namespace std::chrono_literals;

// A program running beside the test, talked to line by line: its standard input is a pipe the
// test writes, its standard output one the test reads with a deadline; standard error is the
// test's own. Killed and reaped on destruction if still running.
class ChildProcess {
public:
    ChildProcess(const std::string& path, const std::vector<std::string>& args,
                 const std::map<std::string, std::string>& extraEnv = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void write(const std::string& text);
    void closeInput();
    // The next output line without its line feed; absent at end of output or after the timeout.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout = 10s);
    // Reads lines until one equals line; the lines before it, or absent when it never came.
    std::optional<std::vector<std::string>> readUntil(const std::string& line,
                                                      std::chrono::milliseconds timeout = 10s);
    // Waits for the process to end; its exit status (128 + signal), absent after the timeout.
    std::optional<int> wait(std::chrono::milliseconds timeout = 10s);
    void signal(int number);
    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string buffered_;
    std::optional<int> status_;
};

}  // namespace brisko::e2e
