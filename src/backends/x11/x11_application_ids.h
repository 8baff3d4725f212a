#pragma once

#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// What one window says about the application it belongs to; empty texts when it says nothing.
struct ApplicationIdHints {
    std::string gtkApplicationId;  // _GTK_APPLICATION_ID
    std::string wmClass;           // the class part of WM_CLASS (the second of its two strings)
};

// One batch of property requests for all the windows.
std::vector<ApplicationIdHints> applicationIdHints(xcb_connection_t* connection, xcb_atom_t gtkApplicationId,
                                                   const std::vector<xcb_window_t>& windows);

// The application id one process's windows advertise: a GTK application id on any of them, else
// a WM_CLASS class on any of them (the first in the given order); absent when none says anything.
std::optional<std::string> applicationId(const std::vector<ApplicationIdHints>& windowsOfOneProcess);

}  // namespace brisko::platform::x11
