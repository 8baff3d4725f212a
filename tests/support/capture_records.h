#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "capture_stream_decoder.h"
#include "platform/capture_frame.h"

namespace brisko::testing {

// A BGRA picture laid out as a capture source delivers it (rows may be padded).
struct BgraImage {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t bytesPerRow = 0;
    std::vector<std::uint8_t> bytes;

    platform::BgraFrameView view() const { return {bytes.data(), width, height, bytesPerRow}; }
    std::uint8_t* pixel(std::int64_t x, std::int64_t y) { return bytes.data() + y * bytesPerRow + x * 4; }
};

// What the stream should show for a source picture: R, G, B, 255 per pixel, rows packed.
std::vector<std::uint8_t> rgbaOf(const BgraImage& image);

// Random bytes in every channel: nothing to compress, every tile different from another seed's.
BgraImage noiseImage(std::int64_t width, std::int64_t height, std::uint32_t seed, std::int64_t rowPadding = 0);

// Reads a whole stream as the program writes it, preamble first, with the reference decoder: how
// many records it held and the picture they end with.
std::pair<std::size_t, std::vector<std::uint8_t>> decodeStream(const std::string& stream);

// Keeps every record an encoder writes and reads each back with the reference decoder.
class RecordReader {
public:
    // The sink to give the encoder: keeps each record.
    bool keep(std::string_view record);
    // Applies the records kept since the last call, in order; returns what they were.
    std::vector<decode::FrameRecord> readNew();
    const std::vector<std::string>& records() const { return records_; }
    const decode::CaptureStreamDecoder& decoder() const { return decoder_; }

private:
    std::vector<std::string> records_;
    std::size_t read_ = 0;
    decode::CaptureStreamDecoder decoder_;
};

}  // namespace brisko::testing
