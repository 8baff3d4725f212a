#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/geometry.h"

namespace brisko {

// What a capture source that keeps its last frame reads from the window system for the next
// one: a band of whole rows, in the display's pixels.
struct FrameReadPlan {
    std::int64_t top = 0;
    std::int64_t rows = 0;
    // Where the frame may differ from the last one, inside the display; absent: anywhere.
    std::optional<std::vector<platform::PixelRect>> damaged;
    bool operator==(const FrameReadPlan&) const = default;
};

// damage: where the window system drew since the last frame (absent: unknown). The band spans the
// damage; a source without a last frame, or whose own additions moved (what it draws over
// left-out windows), reads the whole display.
FrameReadPlan planFrameRead(platform::PixelSize display, const std::optional<std::vector<platform::PixelRect>>& damage,
                            bool layoutChanged);

}  // namespace brisko
