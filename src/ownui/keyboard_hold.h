#pragma once

#include <optional>
#include <string_view>

namespace brisko {

// Who holds the keyboard, as far as the guard is concerned.
enum class BriskoKeyboardHold {
    menu,    // a pop-up menu of the host is on screen; keys would go to it
    brisko,  // the frontmost normal window is the host's
    other,   // the keyboard is not the host's
};

// "menu", "brisko" or "other".
std::string_view rawValue(BriskoKeyboardHold hold);
// The hold with that raw value; absent for any other text.
std::optional<BriskoKeyboardHold> keyboardHoldFromRawValue(std::string_view raw);

}  // namespace brisko
