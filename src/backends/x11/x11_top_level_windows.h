#pragma once

#include <vector>

#include <xcb/xcb.h>

#include "platform/geometry.h"

namespace brisko::platform::x11 {

// One child of the root window. Under a reparenting window manager the child is the manager's
// frame and the application's window lies inside it (the one with WM_STATE, or before the manager
// has set that, the one another client created); without a manager the two are the same window.
struct TopLevelWindow {
    xcb_window_t frame = XCB_NONE;
    xcb_window_t client = XCB_NONE;
    Rect bounds;  // the frame's outer rectangle (border included) in root coordinates
    bool viewable = false;
    bool overrideRedirect = false;
};

enum class Mapped { viewableOnly, any };

// The root's InputOutput children, front to back. Input-only windows are left out: they show
// nothing, and window managers use them as invisible helpers.
std::vector<TopLevelWindow> topLevelWindows(xcb_connection_t* connection, xcb_window_t root, xcb_atom_t wmState,
                                            Mapped which);

}  // namespace brisko::platform::x11
