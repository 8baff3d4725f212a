#include "capture/stream_format.h"

namespace brisko {
namespace {

// Every value the stream carries fits in 32 bits for any real display.
std::uint32_t field(std::int64_t value) { return static_cast<std::uint32_t>(value); }

}  // namespace

void appendU32(std::vector<std::uint8_t>& data, std::uint32_t value) {
    data.push_back(static_cast<std::uint8_t>(value));
    data.push_back(static_cast<std::uint8_t>(value >> 8));
    data.push_back(static_cast<std::uint8_t>(value >> 16));
    data.push_back(static_cast<std::uint8_t>(value >> 24));
}

std::vector<std::uint8_t> captureStreamPreamble(std::string_view magic, std::uint32_t version) {
    std::vector<std::uint8_t> preamble(magic.begin(), magic.end());
    appendU32(preamble, version);
    return preamble;
}

void buildFrameRecord(std::vector<std::uint8_t>& record, std::int64_t width, std::int64_t height,
                      std::span<const EncodedTile> tiles) {
    std::size_t length = recordFrameHeaderBytes;
    for (const EncodedTile& tile : tiles) length += tileEntryHeaderBytes + tile.data.size();
    record.clear();
    record.reserve(recordLengthBytes + length);
    appendU32(record, field(static_cast<std::int64_t>(length)));
    appendU32(record, field(width));
    appendU32(record, field(height));
    appendU32(record, field(static_cast<std::int64_t>(tiles.size())));
    for (const EncodedTile& tile : tiles) {
        appendU32(record, field(tile.rect.x));
        appendU32(record, field(tile.rect.y));
        appendU32(record, field(tile.rect.w));
        appendU32(record, field(tile.rect.h));
        appendU32(record, field(static_cast<std::int64_t>(tile.data.size())));
        record.insert(record.end(), tile.data.begin(), tile.data.end());
    }
}

}  // namespace brisko
