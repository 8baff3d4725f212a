#pragma once

#include <stdexcept>
#include <string>

namespace brisko {

// The program's failure value: one complete line for whoever reads standard error, without the
// program prefix (the reporter adds it).
class InputCommandError : public std::runtime_error {
public:
    explicit InputCommandError(const std::string& message) : std::runtime_error(message) {}
    std::string message() const { return what(); }
};

}  // namespace brisko
