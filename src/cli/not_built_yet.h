#pragma once

#include <string>
#include <string_view>

#include "cli/input_command_error.h"

namespace brisko {

// Stands in for a command whose subsystem does not exist yet.
[[noreturn]] inline void notBuiltYet(std::string_view command) {
    throw InputCommandError(std::string(command) + ": not built yet");
}

}  // namespace brisko
