#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace brisko::platform {

// One on-screen window as the window server reports it.
struct ScreenWindow {
    std::uint32_t windowID = 0;
    std::int32_t ownerPID = 0;
    Rect bounds;
    double alpha = 1.0;
    std::int64_t layer = 0;
};

class WindowServer {
public:
    virtual ~WindowServer() = default;
    // On-screen windows without desktop elements, frontmost first; empty when unavailable.
    virtual std::vector<ScreenWindow> onScreenWindows() = 0;
    // The executable file of a process, absent when it cannot be read.
    virtual std::optional<std::string> executablePath(std::int32_t pid) = 0;
    // The bundle identifier of the application running as pid, absent when there is none.
    virtual std::optional<std::string> bundleIdentifier(std::int32_t pid) = 0;
    // The layer of pop-up menu windows.
    virtual std::int64_t popUpMenuLayer() = 0;
    // The window that keys go to now, named as onScreenWindows names it (an id it does not list
    // when keys go to no listed window, 0 when they go nowhere); absent where keys go to the
    // frontmost normal window, which the stacking order tells.
    virtual std::optional<std::uint32_t> keyboardFocusWindow() = 0;
    // Why windows were left out of the last onScreenWindows for want of a known owner; absent when
    // none were.
    virtual std::optional<std::string> ownerlessWindows() = 0;
};

}  // namespace brisko::platform
