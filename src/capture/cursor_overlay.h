#pragma once

#include <cstdint>
#include <vector>

namespace brisko {

// The pointer's picture as window systems hand it over: 32-bit words holding alpha in the high
// byte, then red, green and blue, with the colours premultiplied by alpha; rows packed.
struct CursorImage {
    std::int64_t left = 0;  // where its top-left pixel goes, hot spot already taken off
    std::int64_t top = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::vector<std::uint32_t> argb;
};

// A BGRA picture to draw into, and where its top-left pixel lies in the cursor's coordinates.
struct BgraCanvas {
    std::uint8_t* base = nullptr;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t bytesPerRow = 0;
    std::int64_t originX = 0;
    std::int64_t originY = 0;
};

// Blends the cursor over the canvas (source over, premultiplied), clipped to the canvas.
void drawCursor(const BgraCanvas& canvas, const CursorImage& cursor);

}  // namespace brisko
