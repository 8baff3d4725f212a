#pragma once

#include <cstdint>

#include "support/capture_records.h"

namespace brisko::testing {

// A picture that compresses like a real screen: a photographic wallpaper with grain, a menu bar,
// a dock of glossy icons, and overlapping windows with title bars, shadows, lines of glyph-like
// text and a photo. Elements are sized for a 1440-point-wide screen and scaled with the width,
// so 2880 x 1800 looks like a Retina screen. The same seed always gives the same bytes; different
// seeds differ in every 64 x 64 tile. Alpha bytes vary, as real sources leave them undefined.
BgraImage renderDesktop(std::int64_t width, std::int64_t height, std::uint32_t seed,
                        std::int64_t rowPadding = 0);

// Retypes a line of text inside a share of the 64 x 64 tiles (chosen by the seed), as typing and
// small updates do; returns how many tiles it touched.
std::int64_t retypeTiles(BgraImage& image, double share, std::uint32_t seed);

}  // namespace brisko::testing
