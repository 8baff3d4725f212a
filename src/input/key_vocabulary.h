#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/key_tables.h"

namespace brisko {

// The key a name stands for: a key name in any case, or one character of the character table.
std::optional<KeyCode> keyCodeFor(std::string_view name);
// Splits a combo at "+", where the last part may itself be the "+" key. Never fails.
std::vector<std::string> splitChord(std::string_view combo);
// "cmd,shift" style flag lists; "none" or empty is no flags. Throws InputCommandError.
EventFlags parseFlags(std::string_view text);
// A decimal key code, 0 to 65535. Throws InputCommandError.
KeyCode parseKeyCode(std::string_view text);

}  // namespace brisko
