#include "ownui/guard_rules.h"

#include <algorithm>

#include "cli/process_state.h"

namespace brisko {
namespace {

// Strict comparisons, so that a NaN opacity or size never counts as visible.
bool isEligible(const platform::ScreenWindow& window) {
    const platform::Rect bounds = platform::standardized(window.bounds);
    return window.alpha > 0 && bounds.width > 0 && bounds.height > 0;
}

// As a press lands: the minimum edges belong to the window, the maximum edges to its neighbour.
bool contains(const platform::Rect& stored, platform::Point point) {
    const platform::Rect r = platform::standardized(stored);
    return point.x >= r.x && point.x < r.x + r.width && point.y >= r.y && point.y < r.y + r.height;
}

}  // namespace

std::optional<platform::ScreenWindow> briskoWindowAt(platform::Point point,
                                                     const std::vector<platform::ScreenWindow>& windows,
                                                     const HostTest& isBrisko) {
    const std::int64_t overlayLayer = processState().systemOverlayLayer;
    for (const platform::ScreenWindow& window : windows) {
        if (!isEligible(window) || !contains(window.bounds, point)) continue;
        if (isBrisko(window.ownerPID)) return window;
        if (window.layer < overlayLayer) return std::nullopt;
    }
    return std::nullopt;
}

BriskoKeyboardHold briskoKeyboardHold(const std::vector<platform::ScreenWindow>& windows,
                                      const HostTest& isBrisko) {
    const std::int64_t menuLayer = processState().popUpMenuLayer;
    const platform::ScreenWindow* frontNormal = nullptr;
    for (const platform::ScreenWindow& window : windows) {
        if (!isEligible(window)) continue;
        if (window.layer == menuLayer && isBrisko(window.ownerPID)) return BriskoKeyboardHold::menu;
        if (window.layer == 0 && frontNormal == nullptr) frontNormal = &window;
    }
    if (frontNormal == nullptr || !isBrisko(frontNormal->ownerPID)) return BriskoKeyboardHold::other;
    return BriskoKeyboardHold::brisko;
}

std::vector<platform::ScreenWindow> keyboardOrder(std::vector<platform::ScreenWindow> windows,
                                                  std::optional<std::uint32_t> focus) {
    if (!focus) return windows;
    const auto focused = std::find_if(windows.begin(), windows.end(),
                                      [&](const platform::ScreenWindow& w) { return w.windowID == *focus; });
    std::optional<platform::ScreenWindow> front;
    if (focused != windows.end()) front = *focused;
    std::erase_if(windows, [](const platform::ScreenWindow& w) { return w.layer == 0; });
    if (front) {
        front->layer = 0;
        windows.insert(windows.begin(), *front);
    }
    return windows;
}

}  // namespace brisko
