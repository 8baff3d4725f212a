#include "capture/cursor_overlay.h"

#include <algorithm>

namespace brisko {
namespace {

// dst * (255 - alpha) / 255, rounded, plus the premultiplied source channel; at most 255 for
// any well-formed premultiplied source, clamped for the others.
std::uint8_t over(std::uint32_t source, std::uint8_t destination, std::uint32_t alpha) {
    const std::uint32_t kept = (destination * (255 - alpha) + 127) / 255;
    return static_cast<std::uint8_t>(std::min<std::uint32_t>(255, source + kept));
}

}  // namespace

void drawCursor(const BgraCanvas& canvas, const CursorImage& cursor) {
    if (cursor.width <= 0 || cursor.height <= 0 ||
        cursor.argb.size() < static_cast<std::size_t>(cursor.width * cursor.height)) {
        return;
    }
    const std::int64_t left = cursor.left - canvas.originX;
    const std::int64_t top = cursor.top - canvas.originY;
    const std::int64_t firstColumn = std::max<std::int64_t>(0, -left);
    const std::int64_t endColumn = std::min(cursor.width, canvas.width - left);
    const std::int64_t firstRow = std::max<std::int64_t>(0, -top);
    const std::int64_t endRow = std::min(cursor.height, canvas.height - top);
    for (std::int64_t row = firstRow; row < endRow; ++row) {
        std::uint8_t* line = canvas.base + (top + row) * canvas.bytesPerRow;
        for (std::int64_t column = firstColumn; column < endColumn; ++column) {
            const std::uint32_t pixel = cursor.argb[static_cast<std::size_t>(row * cursor.width + column)];
            const std::uint32_t alpha = pixel >> 24;
            if (alpha == 0 && (pixel & 0xffffffu) == 0) continue;
            std::uint8_t* bgra = line + (left + column) * 4;
            bgra[0] = over(pixel & 0xff, bgra[0], alpha);
            bgra[1] = over((pixel >> 8) & 0xff, bgra[1], alpha);
            bgra[2] = over((pixel >> 16) & 0xff, bgra[2], alpha);
        }
    }
}

}  // namespace brisko
