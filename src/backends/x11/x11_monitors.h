#pragma once

#include <cstdint>
#include <vector>

#include <xcb/xcb.h>

#include "platform/geometry.h"

namespace brisko::platform::x11 {

// One display as X describes it. X has no scale factor, so points are pixels.
struct Monitor {
    std::uint32_t id = 0;  // the RandR monitor's name atom, or the root window for the whole screen
    Rect bounds;           // in root coordinates
    bool primary = false;
};

// The active RandR monitors; the whole screen as the one monitor when RandR lists none.
std::vector<Monitor> monitors(xcb_connection_t* connection, const xcb_screen_t& screen);

// The primary monitor, or the first when none is primary. The list must not be empty.
const Monitor& mainMonitor(const std::vector<Monitor>& monitors);

// Where the main display lies on the screen. The program's points count from its top-left corner:
// a point plus its corner is a place on the root window.
Rect mainDisplayBounds(xcb_connection_t* connection, const xcb_screen_t& screen);

}  // namespace brisko::platform::x11
