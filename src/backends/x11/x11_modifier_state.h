#pragma once

#include <cstdint>

#include <xcb/xcb.h>

#include "input/key_vocabulary.h"

namespace brisko::platform::x11 {

// The program's flags for the modifier bits of an X keyboard state (a pointer query's mask).
// Shift, Lock and Control mean the same on every server; which of Mod1 to Mod5 stands for Alt or
// Super is the server's modifier map's choice, so those bits go by the keys the map puts in them.
EventFlags flagsOfModifierState(xcb_connection_t* connection, std::uint16_t state);

}  // namespace brisko::platform::x11
