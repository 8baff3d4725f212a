#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace brisko {

// The rectangle a tile entry replaces, in frame pixels.
struct TileRect {
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t w = 0;
    std::int64_t h = 0;
    bool operator==(const TileRect&) const = default;
};

// One tile as it goes into a record: its rectangle and its raw DEFLATE data.
struct EncodedTile {
    TileRect rect;
    std::span<const std::uint8_t> data;
};

// Every integer of the stream is an unsigned 32-bit value, least significant byte first, with no
// padding anywhere. A record is its length field, then width, height and tile count, then the
// tile entries; an entry is x, y, w, h and the compressed length, then the compressed bytes.
inline constexpr std::size_t recordLengthBytes = 4;
inline constexpr std::size_t recordFrameHeaderBytes = 12;
inline constexpr std::size_t tileEntryHeaderBytes = 20;

void appendU32(std::vector<std::uint8_t>& data, std::uint32_t value);

// The 8 bytes that open every stream: the magic's UTF-8 bytes, then the version.
std::vector<std::uint8_t> captureStreamPreamble(std::string_view magic, std::uint32_t version);

// Replaces the contents of `record` with one whole frame record (capacity is kept). The tiles
// go in the order given; there must be at least one.
void buildFrameRecord(std::vector<std::uint8_t>& record, std::int64_t width, std::int64_t height,
                      std::span<const EncodedTile> tiles);

}  // namespace brisko
