#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace brisko::decode {

// Writes packed RGBA rows as an 8-bit RGBA PNG file. Returns why it failed, or nothing.
std::optional<std::string> writePng(const std::string& path, std::uint32_t width, std::uint32_t height,
                                    std::span<const std::uint8_t> rgba);

}  // namespace brisko::decode
