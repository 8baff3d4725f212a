#include "support/capture_records.h"

#include <sstream>

namespace brisko::testing {

std::vector<std::uint8_t> rgbaOf(const BgraImage& image) {
    std::vector<std::uint8_t> rgba;
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            const std::uint8_t* p = image.bytes.data() + y * image.bytesPerRow + x * 4;
            rgba.insert(rgba.end(), {p[2], p[1], p[0], 255});
        }
    }
    return rgba;
}

BgraImage noiseImage(std::int64_t width, std::int64_t height, std::uint32_t seed, std::int64_t rowPadding) {
    BgraImage image{width, height, width * 4 + rowPadding, {}};
    image.bytes.resize(static_cast<std::size_t>(image.bytesPerRow * height));
    std::uint64_t state = seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull;
    for (std::uint8_t& byte : image.bytes) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return image;
}

std::pair<std::size_t, std::vector<std::uint8_t>> decodeStream(const std::string& stream) {
    std::istringstream in(stream);
    decode::CaptureStreamDecoder decoder;
    std::size_t records = 0;
    decode::decodeCaptureStream(in, decoder, [&](const decode::FrameRecord&) { ++records; });
    return {records, decoder.picture()};
}

bool RecordReader::keep(std::string_view record) {
    records_.emplace_back(record);
    return true;
}

std::vector<decode::FrameRecord> RecordReader::readNew() {
    std::string stream("BCS2\x02\x00\x00\x00", 8);  // the new records, behind a preamble of their own
    for (; read_ < records_.size(); ++read_) stream += records_[read_];
    std::istringstream in(stream);
    std::vector<decode::FrameRecord> read;
    decode::decodeCaptureStream(in, decoder_, [&](const decode::FrameRecord& record) { read.push_back(record); });
    return read;
}

}  // namespace brisko::testing
