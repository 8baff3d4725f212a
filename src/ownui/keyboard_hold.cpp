#include "ownui/keyboard_hold.h"

#include <array>

namespace brisko {
namespace {

constexpr std::array holds{BriskoKeyboardHold::menu, BriskoKeyboardHold::brisko, BriskoKeyboardHold::other};

}  // namespace

std::string_view rawValue(BriskoKeyboardHold hold) {
    switch (hold) {
        case BriskoKeyboardHold::menu: return "menu";
        case BriskoKeyboardHold::brisko: return "brisko";
        case BriskoKeyboardHold::other: return "other";
    }
    return "other";  // not reached: every enumerator is listed
}

std::optional<BriskoKeyboardHold> keyboardHoldFromRawValue(std::string_view raw) {
    for (const BriskoKeyboardHold hold : holds) {
        if (rawValue(hold) == raw) return hold;
    }
    return std::nullopt;
}

}  // namespace brisko
