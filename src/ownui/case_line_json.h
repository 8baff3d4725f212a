#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

namespace brisko {

// A case line of own-ui-check read as JSON: standard JSON, the whole line one value; discarded
// when the line is not JSON. A number literal too large for a double does not make the line
// unreadable: it is read as an infinite number, which fails the case only if the case's kind
// reads that field.
nlohmann::json parseCaseLine(std::string_view line);

}  // namespace brisko
