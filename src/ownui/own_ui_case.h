#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace brisko {

// One own-ui-check case line (without its line ending), answered by the guard's rules with the
// host given by the case instead of the live system.
struct CaseAnswer {
    std::string line;  // without line feed, e.g. "refuse=881"
};
struct CaseFailure {
    std::string message;  // the whole run ends with it
};
using CaseOutcome = std::variant<CaseAnswer, CaseFailure>;

CaseOutcome evaluateOwnUiCase(std::string_view line);

}  // namespace brisko
