#pragma once

#include <string>
#include <vector>

namespace brisko {

// Selects and runs the command named by args[0] (the arguments without the program name), then
// ends the process: status 0 when the action returns, 2 on every failure.
[[noreturn]] void runCommandLine(const std::vector<std::string>& args);

}  // namespace brisko
