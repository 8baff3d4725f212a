#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "support/run_program.h"

namespace brisko::testing {

// A program started with pipes on its standard streams, for tests that talk to it while it runs.
class RunningProgram {
public:
    RunningProgram(const std::string& path, const std::vector<std::string>& args);
    // Kills the program if it still runs.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    void write(const std::string& text);
    void closeInput();
    // Stops reading standard output, so that the program's writes to it fail.
    void closeOutput();
    // Collects output until standard output holds text; false when it did not within the time.
    bool waitForOut(const std::string& text, int timeoutMs = 10000);
    void signal(int number);
    // Collects the rest of the output and the exit status; kills the program after the time.
    ProgramResult finish(int timeoutMs = 10000);

private:
    // Reads what is ready, waiting at most timeoutMs; false when both outputs have ended.
    bool collect(int timeoutMs);

    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
    ProgramResult result_;
};

}  // namespace brisko::testing
