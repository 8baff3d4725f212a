#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace brisko::platform::x11 {

// What a window is for, from its _NET_WM_WINDOW_TYPE, as far as stacking and input are concerned.
enum class WindowKind { desktop, normal, dock, menu, popUpMenu, notification, tooltip, dragAndDrop };

// Each window type name and its kind. A window's kind is that of the first name in its type list
// found here; a window without a known type is normal.
const std::vector<std::pair<std::string_view, WindowKind>>& windowTypeKinds();

// The layer the guard sees a window at, in the window server's numbers: normal 0, kept above 3,
// docks 20, open menus popUpMenuLayer, notifications, tooltips and drag icons above those.
// A menu window that the window manager does not manage (override-redirect) is an open menu; a
// managed one is a torn-off menu, which floats like a window kept above. An override-redirect
// window of no known type (kind absent) is a pop-up, as toolkits make their menus.
std::int64_t windowLayer(std::optional<WindowKind> kind, bool keptAbove, bool overrideRedirect,
                         std::int64_t popUpMenuLayer);

}  // namespace brisko::platform::x11
