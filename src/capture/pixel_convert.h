#pragma once

#include <cstddef>
#include <cstdint>

namespace brisko {

// The stream's pixel of a source pixel: source bytes B, G, R, A become R, G, B, 255.
inline std::uint32_t rgbaOfBgra(std::uint32_t bgra) {
    return ((bgra >> 16) & 0xFFu) | (bgra & 0xFF00u) | ((bgra & 0xFFu) << 16) | 0xFF000000u;
}

// Converts a run of BGRA pixels to RGBA with alpha 255 (rows of the frame into the reference).
void bgraToRgba(const std::uint8_t* bgra, std::uint8_t* rgba, std::size_t pixels);

}  // namespace brisko
