#pragma once

#include <cstddef>
#include <cstdint>

namespace brisko {

// Blends a run of pixels whose bytes are B, G, R, A with the colours premultiplied by alpha (as
// window systems keep translucent pictures) over a run of B, G, R pixels: source over, rounded,
// each channel clamped at 255 for sources that are not well-formed. The destination's fourth
// byte is left as it is.
void blendOver(const std::uint8_t* source, std::uint8_t* destination, std::size_t pixels);

}  // namespace brisko
