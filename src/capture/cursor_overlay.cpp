#include "capture/cursor_overlay.h"

#include <algorithm>
#include <bit>

#include "capture/pixel_blend.h"

namespace brisko {

static_assert(std::endian::native == std::endian::little, "a cursor word's bytes are B, G, R, A in memory");

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
    if (endColumn <= firstColumn) return;
    for (std::int64_t row = firstRow; row < endRow; ++row) {
        const auto* source = reinterpret_cast<const std::uint8_t*>(cursor.argb.data() + row * cursor.width + firstColumn);
        blendOver(source, canvas.base + (top + row) * canvas.bytesPerRow + (left + firstColumn) * 4,
                  static_cast<std::size_t>(endColumn - firstColumn));
    }
}

}  // namespace brisko
