#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/geometry.h"

namespace brisko::platform {

// One captured frame as the capture source hands it over: rows of 32-bit pixels whose bytes are
// B, G, R, A in memory order. The view borrows the source's memory for the duration of one call.
struct BgraFrameView {
    const std::uint8_t* base = nullptr;
    std::int64_t width = 0;  // pixels
    std::int64_t height = 0;
    std::int64_t bytesPerRow = 0;  // at least width * 4; rows may be padded
    // Where, in frame pixels, this frame may differ from the frame the source delivered before
    // it, when the source knows; absent: anywhere.
    std::optional<std::span<const PixelRect>> changedAreas = std::nullopt;
};

// The completeness the capture source reports with a frame: 0 means complete; other values mean
// idle, blank, suspended, started or stopped. Absent when the source reports none, or reports
// something that is not an integer.
using FrameStatus = std::optional<std::int64_t>;

}  // namespace brisko::platform
