#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "ownui/keyboard_hold.h"
#include "platform/geometry.h"
#include "platform/window_server.h"

namespace brisko {

// Whether a pid is the host's: pidIsBrisko for the live guard, a given set of pids in own-ui-check.
using HostTest = std::function<bool(std::int32_t pid)>;

// The rules of the guard, pure functions of a window list (frontmost first) and a host test, so
// that the live guard and own-ui-check answer alike. Only eligible windows take part: alpha,
// width and height (standardized) all greater than 0, so NaN makes a window ineligible.

// The host window that would receive a press at the point, or absent. Walking front to back over
// the eligible windows containing the point (minimum edges inclusive, maximum edges exclusive):
// a host window is the answer; another application's window below systemOverlayLayer takes the
// press; one at or above it is an overlay that the press passes through.
std::optional<platform::ScreenWindow> briskoWindowAt(platform::Point point,
                                                     const std::vector<platform::ScreenWindow>& windows,
                                                     const HostTest& isBrisko);

// menu when any eligible host window sits at popUpMenuLayer (wherever it is in the list);
// otherwise brisko when the first eligible layer-0 window is the host's; otherwise other.
// The host test is asked only about pop-up-menu windows and that one layer-0 window.
BriskoKeyboardHold briskoKeyboardHold(const std::vector<platform::ScreenWindow>& windows,
                                      const HostTest& isBrisko);

// The window list as the keyboard rule reads it where the platform names the window that keys go
// to (focus): that window in front as the one normal window (layer 0) there is, since keys reach
// it whatever stands in front of it; every other window keeps its place and layer, for the menus.
// Without a focus, the stacking order stands as it is.
std::vector<platform::ScreenWindow> keyboardOrder(std::vector<platform::ScreenWindow> windows,
                                                  std::optional<std::uint32_t> focus);

}  // namespace brisko
