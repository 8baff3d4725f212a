#pragma once

#include <string_view>

namespace brisko {

// The two commands that expose the key vocabulary for checking from outside; not in the usage.
void printParseChord(std::string_view combo);
void printPlanType(std::string_view text);

}  // namespace brisko
