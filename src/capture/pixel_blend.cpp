#include "capture/pixel_blend.h"

#include <algorithm>

namespace brisko {
namespace {

// destination * (255 - alpha) / 255, rounded, plus the premultiplied source channel.
std::uint8_t over(std::uint32_t source, std::uint8_t destination, std::uint32_t alpha) {
    const std::uint32_t kept = (destination * (255 - alpha) + 127) / 255;
    return static_cast<std::uint8_t>(std::min<std::uint32_t>(255, source + kept));
}

}  // namespace

void blendOver(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i, source += 4, destination += 4) {
        const std::uint32_t alpha = source[3];
        destination[0] = over(source[0], destination[0], alpha);
        destination[1] = over(source[1], destination[1], alpha);
        destination[2] = over(source[2], destination[2], alpha);
    }
}

}  // namespace brisko
