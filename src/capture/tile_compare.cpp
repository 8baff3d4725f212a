#include "capture/tile_compare.h"

#include <cstring>

#include "capture/pixel_convert.h"

namespace brisko {
namespace {

// Four pixels at a time with the compiler's portable vector types (SSE2 on x86-64, NEON on arm64),
// which give the same code at every optimisation level.
using Pixels4 = std::uint32_t __attribute__((vector_size(16)));

Pixels4 load(const std::uint8_t* bytes) {
    Pixels4 v;
    std::memcpy(&v, bytes, sizeof v);
    return v;
}

bool rowMatches(const std::uint8_t* bgra, const std::uint8_t* rgba, std::size_t pixels) {
    std::size_t i = 0;
    // 16 pixels per step: differences are gathered without branching, and the row stops at the
    // first step that differs.
    for (; i + 16 <= pixels; i += 16) {
        Pixels4 differ = {0, 0, 0, 0};
        for (std::size_t k = 0; k < 16; k += 4) {
            const Pixels4 s = load(bgra + (i + k) * 4);
            const Pixels4 converted = ((s >> 16) & 0xFFu) | (s & 0xFF00u) | ((s & 0xFFu) << 16) | 0xFF000000u;
            differ |= converted ^ load(rgba + (i + k) * 4);
        }
        if ((differ[0] | differ[1] | differ[2] | differ[3]) != 0) return false;
    }
    for (; i < pixels; ++i) {
        std::uint32_t source, reference;
        std::memcpy(&source, bgra + i * 4, 4);
        std::memcpy(&reference, rgba + i * 4, 4);
        if (rgbaOfBgra(source) != reference) return false;
    }
    return true;
}

}  // namespace

std::size_t firstChangedRow(const std::uint8_t* bgra, std::size_t bgraStride, const std::uint8_t* rgba,
                            std::size_t rgbaStride, std::size_t pixels, std::size_t rows) {
    for (std::size_t r = 0; r < rows; ++r) {
        if (!rowMatches(bgra + r * bgraStride, rgba + r * rgbaStride, pixels)) return r;
    }
    return rows;
}

bool isOneColour(std::span<const std::uint8_t> pixels) {
    // Equal to itself moved on by one pixel: every pixel equals the next.
    return pixels.size() <= 4 || std::memcmp(pixels.data(), pixels.data() + 4, pixels.size() - 4) == 0;
}

}  // namespace brisko
