#pragma once

#include <array>
#include <optional>

#include <xcb/xproto.h>

#include "input/key_vocabulary.h"

namespace brisko::platform::x11 {

// The keysym of a key of the program's vocabulary (US ANSI virtual key codes); absent for codes
// with no X counterpart (fn) or outside the keyboard.
std::optional<xcb_keysym_t> keysymForKeyCode(KeyCode code);

// The keysym that types one Unicode character: Latin-1 characters have their own keysyms, every
// other character the Unicode keysym 0x01000000 + code point.
xcb_keysym_t keysymForCharacter(char32_t character);

// The modifier keys that stand for each flag of an event, left key first. Caps lock is a lock,
// not a held key, and fn has no X counterpart: neither is brought to an event's flags.
struct ModifierKeys {
    EventFlags flag;
    xcb_keysym_t left;
    xcb_keysym_t right;
};
inline constexpr std::size_t modifierGroupCount = 4;
const std::array<ModifierKeys, modifierGroupCount>& modifierKeys();

}  // namespace brisko::platform::x11
