#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

namespace brisko {

// A case line of own-ui-check read as JSON.
struct CaseLineJson {
    nlohmann::json value;           // discarded when the line is not JSON
    bool hasOverflowingNumber = false;  // a number literal beyond the range of a double was read as 0
};

// Standard JSON, the whole line one value. A number literal too large for a double does not
// make the line unreadable: it stands in as 0 and is flagged, so that the line can still be
// judged as an object with a kind before it fails for the number.
CaseLineJson parseCaseLine(std::string_view line);

}  // namespace brisko
