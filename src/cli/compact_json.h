#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace brisko {

// The JSON that the platform's writer produces with no options: no white space, non-ASCII
// characters as UTF-8 (invalid bytes replaced by U+FFFD) and "/" escaped as "\/".
std::string compactJson(const nlohmann::json& value);

}  // namespace brisko
