#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/geometry.h"

namespace brisko {

// The cells of the tile grid over a width x height frame (tileSize pixels square, anchored at the
// top-left corner) that the areas touch: one flag per cell, rows of the grid top to bottom, each
// left to right. Areas reaching outside the frame count for their part inside it. Fills `cells`,
// whose memory is reused from frame to frame.
void markTouchedTiles(std::span<const platform::PixelRect> areas, std::int64_t width, std::int64_t height,
                      std::int64_t tileSize, std::vector<std::uint8_t>& cells);

}  // namespace brisko
