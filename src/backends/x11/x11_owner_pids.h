#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// The process id of the client that created each window, as the server knows it from the local
// connection (X-Resource extension) rather than what the client claims about itself. Absent for
// clients on other machines. A server without the extension knows none: there the claim
// (_NET_WM_PID) is all there is, and absent for a window that makes none.
std::vector<std::optional<std::int32_t>> ownerPids(xcb_connection_t* connection,
                                                   const std::vector<xcb_window_t>& windows);

// Whether the server names the owners of windows itself (X-Resource).
bool serverKnowsOwners(xcb_connection_t* connection);

}  // namespace brisko::platform::x11
