#include "capture/pixel_convert.h"

#include <bit>
#include <cstring>

namespace brisko {
namespace {

static_assert(std::endian::native == std::endian::little, "pixels are read as little-endian words");

// Four pixels at a time with the compiler's portable vector types (SSE2 on x86-64, NEON on arm64).
using Pixels4 = std::uint32_t __attribute__((vector_size(16)));

}  // namespace

void bgraToRgba(const std::uint8_t* bgra, std::uint8_t* rgba, std::size_t pixels) {
    std::size_t i = 0;
    for (; i + 4 <= pixels; i += 4) {
        Pixels4 s;
        std::memcpy(&s, bgra + i * 4, sizeof s);
        const Pixels4 converted = ((s >> 16) & 0xFFu) | (s & 0xFF00u) | ((s & 0xFFu) << 16) | 0xFF000000u;
        std::memcpy(rgba + i * 4, &converted, sizeof converted);
    }
    for (; i < pixels; ++i) {
        std::uint32_t word;
        std::memcpy(&word, bgra + i * 4, 4);
        word = rgbaOfBgra(word);
        std::memcpy(rgba + i * 4, &word, 4);
    }
}

}  // namespace brisko
