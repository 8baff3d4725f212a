#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brisko::testing {

// A PNG file's picture as 8-bit R, G, B, A per pixel, rows packed.
struct RgbaPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> rgba;

    // The pixel as 0xRRGGBB.
    std::uint32_t rgb(std::uint32_t x, std::uint32_t y) const;
};

// Absent when the file cannot be read or is no PNG.
std::optional<RgbaPicture> readPng(const std::string& path);

}  // namespace brisko::testing
