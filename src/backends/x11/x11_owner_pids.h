#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// The process id of the client that created each window, as the server knows it from the local
// connection (X-Resource extension), never what the client claims about itself (_NET_WM_PID).
// Absent for clients on other machines, and for every window when the extension is missing.
std::vector<std::optional<std::int32_t>> ownerPids(xcb_connection_t* connection,
                                                   const std::vector<xcb_window_t>& windows);

}  // namespace brisko::platform::x11
