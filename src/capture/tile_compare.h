#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace brisko {

// The first row, from the top, in which a tile of the new BGRA frame shows other colours than the
// same tile of the RGBA reference; `rows` when every row matches. Alpha is not compared (the
// reference holds 255 there). Strides are in bytes. This is where an idle screen spends its time.
std::size_t firstChangedRow(const std::uint8_t* bgra, std::size_t bgraStride, const std::uint8_t* rgba,
                            std::size_t rgbaStride, std::size_t pixels, std::size_t rows);

// Whether every 4-byte pixel of the run is the same.
bool isOneColour(std::span<const std::uint8_t> pixels);

}  // namespace brisko
