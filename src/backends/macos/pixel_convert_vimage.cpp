// The pixel conversion of the capture stream with vImage: a channel permutation, then the alpha
// channel set to 255, each one vectorised pass.
#include <Accelerate/Accelerate.h>

#include "capture/pixel_convert.h"

namespace brisko {

void bgraToRgba(const std::uint8_t* bgra, std::uint8_t* rgba, std::size_t pixels) {
    if (pixels == 0) return;
    // One row of pixels. vImage fails only on malformed buffers, and these are well formed.
    const vImage_Buffer source{const_cast<std::uint8_t*>(bgra), 1, pixels, pixels * 4};
    const vImage_Buffer destination{rgba, 1, pixels, pixels * 4};
    const std::uint8_t toRgba[4] = {2, 1, 0, 3};
    // The callers spread a frame over their own threads already.
    vImagePermuteChannels_ARGB8888(&source, &destination, toRgba, kvImageDoNotTile);
    // The copy mask's lowest bit is the last channel of each pixel: alpha, in R, G, B, A order.
    vImageOverwriteChannelsWithScalar_ARGB8888(255, &destination, &destination, 0x1, kvImageDoNotTile);
}

}  // namespace brisko
