#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brisko {

// One step of typing: press a named key, or type one character as Unicode.
struct TypeStep {
    enum class Kind { key, text };
    Kind kind;
    std::string value;  // the key name, or the character's UTF-8 text

    bool operator==(const TypeStep&) const = default;
};

// One step per user-perceived character: line breaks (CR LF counting as one), tabs and
// backspaces become key steps, everything else a text step.
std::vector<TypeStep> typePlan(std::string_view text);

}  // namespace brisko
