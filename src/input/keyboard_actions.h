#pragma once

#include <string_view>

#include "input/key_vocabulary.h"
#include "platform/event_poster.h"

namespace brisko {

// A key-down or key-up event of the code with exactly these flags.
platform::InputEvent keyEvent(KeyCode code, bool down, EventFlags flags);

// Types the text one user-perceived character at a time: line breaks, tabs and backspaces as
// their keys, everything else as Unicode key events. Typed events carry no modifier flags.
void typeText(std::string_view text);
// One key press and release with key code 0 carrying all UTF-16 units of chars (one character).
void typeUnicodeScalar(std::string_view chars);
// Key down and key up of the code, both with the flags.
void postKey(KeyCode code, EventFlags flags = 0);
// One modifier change: a flags-changed event of the key whose flags say what stays held. Records
// the flags in heldFlags and modifierKeysDown, also when the event cannot be created.
void postModifier(KeyCode code, EventFlags flags);
// Presses a combo such as "cmd+shift+4": modifiers down in order, the key, modifiers up in
// reverse order. A combo that names no key or an unknown part ends the process before any event.
void pressCombo(std::string_view combo);

}  // namespace brisko
