#pragma once

#include <optional>
#include <string_view>

namespace brisko {

// An optional sign ("+" or "-") then one or more digits of the radix (10 or 16) and nothing else:
// no spaces, no prefix. Absent when the form is wrong or the value leaves the range of long long.
// Callers check their own range, so "-0" reads as 0 and "-1" fails an unsigned range.
std::optional<long long> parseInteger(std::string_view text, int radix);

// C-locale strtod that must consume the whole text, with no leading white space and no range
// error. Absent otherwise.
std::optional<double> parseDouble(std::string_view text);
// The same syntax, but a value out of range reads as strtod gives it (an infinity, or a value
// rounded towards zero) instead of failing.
std::optional<double> parseDoubleSaturating(std::string_view text);

}  // namespace brisko
