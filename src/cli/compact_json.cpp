#include "cli/compact_json.h"

namespace brisko {

std::string compactJson(const nlohmann::json& value) {
    const std::string dumped = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::string out;
    out.reserve(dumped.size());
    // A "/" only ever occurs inside strings, where the escape is valid JSON.
    for (const char c : dumped) {
        if (c == '/') out += '\\';
        out += c;
    }
    return out;
}

}  // namespace brisko
