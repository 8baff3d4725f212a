#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <span>
#include <stdexcept>
#include <vector>

#include <zlib.h>

namespace brisko::decode {

// The reference reader of the capture stream: it checks every rule of the format and applies
// each record's tiles to a picture, so that after any record it holds what the writer held.
// It shares no code with the writer.

// What a stream may ask of the reader's memory.
struct DecoderLimits {
    std::uint64_t maxFramePixels = std::uint64_t{1} << 26;  // 64 Mi pixels; an 8K display has 33 Mi
};

struct TileEntry {
    std::uint32_t x = 0, y = 0, w = 0, h = 0;
    std::uint32_t compressedBytes = 0;
};

struct FrameRecord {
    std::uint64_t index = 0;   // counting from 1
    std::uint64_t offset = 0;  // of its length field, from the start of the stream
    std::uint32_t length = 0;  // the length field: the bytes that follow it
    std::uint32_t width = 0, height = 0;
    std::vector<TileEntry> tiles;
};

// A stream that breaks a rule of the format; the message says where and how.
class MalformedStream : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class CaptureStreamDecoder {
public:
    explicit CaptureStreamDecoder(DecoderLimits limits = {});
    ~CaptureStreamDecoder();
    CaptureStreamDecoder(const CaptureStreamDecoder&) = delete;
    CaptureStreamDecoder& operator=(const CaptureStreamDecoder&) = delete;

    // Checks the 8 bytes that open a stream: the magic "BCS2" and version 2.
    static void checkPreamble(std::span<const std::uint8_t> preamble);

    // Checks one record, given the bytes after its length field, applies its tiles to the
    // picture and describes it in `record` (width, height, tiles).
    void applyRecord(std::span<const std::uint8_t> body, FrameRecord& record);

    std::uint32_t width() const { return width_; }
    std::uint32_t height() const { return height_; }
    // R, G, B, A per pixel, rows packed; empty before the first record.
    const std::vector<std::uint8_t>& picture() const { return picture_; }

private:
    std::vector<TileEntry> readTiles(std::span<const std::uint8_t> body, std::uint32_t width, std::uint32_t height) const;
    void inflateTile(std::span<const std::uint8_t> data, std::size_t expected, std::vector<std::uint8_t>& out);

    DecoderLimits limits_;
    z_stream inflater_{};
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    std::vector<std::uint8_t> picture_;
    std::vector<std::uint8_t> inflated_;
};

// Reads a whole stream from `in` and applies every record, calling onRecord after each; throws
// MalformedStream naming the record and its byte offset.
void decodeCaptureStream(std::istream& in, CaptureStreamDecoder& decoder,
                         const std::function<void(const FrameRecord&)>& onRecord);

}  // namespace brisko::decode
