#include "capture/tile_mask.h"

#include <algorithm>

namespace brisko {

void markTouchedTiles(std::span<const platform::PixelRect> areas, std::int64_t width, std::int64_t height,
                      std::int64_t tileSize, std::vector<std::uint8_t>& cells) {
    const std::int64_t columns = (width + tileSize - 1) / tileSize;
    const std::int64_t rows = (height + tileSize - 1) / tileSize;
    cells.assign(static_cast<std::size_t>(columns * rows), 0);
    for (const platform::PixelRect& area : areas) {
        const std::int64_t left = std::max<std::int64_t>(area.x, 0);
        const std::int64_t top = std::max<std::int64_t>(area.y, 0);
        const std::int64_t right = std::min(area.x + area.width, width);
        const std::int64_t bottom = std::min(area.y + area.height, height);
        if (right <= left || bottom <= top) continue;
        for (std::int64_t row = top / tileSize; row <= (bottom - 1) / tileSize; ++row) {
            std::fill_n(cells.begin() + row * columns + left / tileSize, (right - 1) / tileSize - left / tileSize + 1, 1);
        }
    }
}

}  // namespace brisko
