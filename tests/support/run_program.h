#pragma once

#include <map>
#include <string>
#include <vector>

namespace brisko::testing {

struct ProgramResult {
    int status = -1;  // exit status, or 128 + signal number
    std::string out;
    std::string err;
};

// Runs a program with arguments and standard input, and collects its output and status.
// extraEnv entries are added to (or replace) the environment.
ProgramResult runProgram(const std::string& path, const std::vector<std::string>& args,
                         const std::string& stdinText = "",
                         const std::map<std::string, std::string>& extraEnv = {});

// The built brisko-mac-input.
const std::string& programPath();

}  // namespace brisko::testing
