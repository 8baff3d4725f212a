#include "capture_stream_decoder.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <string>

namespace brisko::decode {
namespace {

constexpr std::uint8_t magic[4] = {'B', 'C', 'S', '2'};
constexpr std::uint32_t version = 2;
constexpr std::uint32_t tileSize = 64;
constexpr std::size_t frameHeaderBytes = 12;
constexpr std::size_t tileHeaderBytes = 20;

std::uint32_t readU32(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

std::string describe(std::size_t index, const TileEntry& t) {
    return "tile " + std::to_string(index + 1) + " (" + std::to_string(t.x) + ", " + std::to_string(t.y) + ", " +
           std::to_string(t.w) + ", " + std::to_string(t.h) + ")";
}

bool isWholeFrame(const TileEntry& t, std::uint32_t width, std::uint32_t height) {
    return t.x == 0 && t.y == 0 && t.w == width && t.h == height;
}

bool isGridTile(const TileEntry& t, std::uint32_t width, std::uint32_t height) {
    return t.x % tileSize == 0 && t.y % tileSize == 0 && t.x < width && t.y < height &&
           t.w == std::min(tileSize, width - t.x) && t.h == std::min(tileSize, height - t.y);
}

// Grid tiles go top to bottom, each row left to right, each at most once.
bool comesAfter(const TileEntry& t, const TileEntry& before) {
    return t.y > before.y || (t.y == before.y && t.x > before.x);
}

}  // namespace

CaptureStreamDecoder::CaptureStreamDecoder(DecoderLimits limits) : limits_(limits) {
    if (inflateInit2(&inflater_, -15) != Z_OK) throw std::bad_alloc();  // -15: raw DEFLATE
}

CaptureStreamDecoder::~CaptureStreamDecoder() { inflateEnd(&inflater_); }

void CaptureStreamDecoder::checkPreamble(std::span<const std::uint8_t> preamble) {
    if (preamble.size() < 8) throw MalformedStream("the stream ends inside its 8-byte preamble");
    if (std::memcmp(preamble.data(), magic, sizeof magic) != 0) {
        throw MalformedStream("the stream does not start with the magic BCS2");
    }
    const std::uint32_t found = readU32(preamble.data() + 4);
    if (found != version) {
        throw MalformedStream("the stream has version " + std::to_string(found) + ", not " + std::to_string(version));
    }
}

void CaptureStreamDecoder::applyRecord(std::span<const std::uint8_t> body, FrameRecord& record) {
    if (body.size() < frameHeaderBytes) {
        throw MalformedStream("the record is " + std::to_string(body.size()) +
                              " bytes long, shorter than its 12-byte frame header");
    }
    const std::uint32_t width = readU32(body.data()), height = readU32(body.data() + 4);
    if (width == 0 || height == 0) {
        throw MalformedStream("the frame is empty (" + std::to_string(width) + " x " + std::to_string(height) + ")");
    }
    if (std::uint64_t{width} * height > limits_.maxFramePixels) {
        throw MalformedStream("the frame of " + std::to_string(width) + " x " + std::to_string(height) +
                              " pixels is beyond the limit of " + std::to_string(limits_.maxFramePixels) + " pixels");
    }
    std::vector<TileEntry> tiles = readTiles(body, width, height);

    const bool sizeChanges = width != width_ || height != height_;
    const bool wholeFrame = tiles.size() == 1 && isWholeFrame(tiles[0], width, height);
    if (sizeChanges && !wholeFrame) {
        throw MalformedStream(picture_.empty()
                                  ? "the first record does not carry the whole frame as its only tile"
                                  : "the frame size changes from " + std::to_string(width_) + " x " +
                                        std::to_string(height_) + " to " + std::to_string(width) + " x " +
                                        std::to_string(height) + " but the record does not carry the whole frame as its only tile");
    }

    const std::uint8_t* data = body.data() + frameHeaderBytes;
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        const TileEntry& t = tiles[i];
        data += tileHeaderBytes;
        const std::size_t rowBytes = std::size_t{t.w} * 4;
        try {
            inflateTile({data, t.compressedBytes}, rowBytes * t.h, inflated_);
            for (std::size_t k = 3; k < inflated_.size(); k += 4) {
                if (inflated_[k] != 255) {
                    const std::size_t pixel = k / 4;
                    throw MalformedStream("pixel (" + std::to_string(pixel % t.w) + ", " + std::to_string(pixel / t.w) +
                                          ") has alpha " + std::to_string(inflated_[k]) + ", not 255");
                }
            }
        } catch (const MalformedStream& e) {
            throw MalformedStream(describe(i, t) + ": " + e.what());
        }
        data += t.compressedBytes;
        if (isWholeFrame(t, width, height)) {
            picture_.swap(inflated_);  // rows of a whole frame are packed as the picture's are
            width_ = width;
            height_ = height;
            continue;
        }
        for (std::size_t r = 0; r < t.h; ++r) {
            std::memcpy(picture_.data() + ((std::size_t{t.y} + r) * width_ + t.x) * 4, inflated_.data() + r * rowBytes,
                        rowBytes);
        }
    }
    record.width = width;
    record.height = height;
    record.tiles = std::move(tiles);
}

std::vector<TileEntry> CaptureStreamDecoder::readTiles(std::span<const std::uint8_t> body, std::uint32_t width,
                                                       std::uint32_t height) const {
    const std::uint32_t count = readU32(body.data() + 8);
    if (count == 0) throw MalformedStream("the record has no tiles");
    std::vector<TileEntry> tiles;
    std::size_t at = frameHeaderBytes;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (body.size() - at < tileHeaderBytes) {
            throw MalformedStream("tile " + std::to_string(i + 1) + " of " + std::to_string(count) +
                                  " runs past the end of the record");
        }
        const std::uint8_t* p = body.data() + at;
        const TileEntry t{readU32(p), readU32(p + 4), readU32(p + 8), readU32(p + 12), readU32(p + 16)};
        at += tileHeaderBytes;
        if (body.size() - at < t.compressedBytes) {
            throw MalformedStream(describe(i, t) + ": its " + std::to_string(t.compressedBytes) +
                                  " bytes of data run past the end of the record");
        }
        at += t.compressedBytes;
        if (isWholeFrame(t, width, height) && !isGridTile(t, width, height)) {
            if (count != 1) throw MalformedStream(describe(i, t) + " is the whole frame but not the record's only tile");
        } else if (!isGridTile(t, width, height)) {
            throw MalformedStream(describe(i, t) + " is neither the whole frame nor a tile of the 64-pixel grid");
        } else if (!tiles.empty() && !comesAfter(t, tiles.back())) {
            throw MalformedStream(describe(i, t) + " is out of grid order");
        }
        tiles.push_back(t);
    }
    if (at != body.size()) {
        throw MalformedStream("the record has " + std::to_string(body.size() - at) + " bytes after its last tile");
    }
    return tiles;
}

// Inflates one tile's raw DEFLATE data, which must end exactly where the data ends and give
// exactly `expected` bytes. The output grows with what the data yields, never with what the
// header claims, so that a short hostile stream cannot claim much memory.
void CaptureStreamDecoder::inflateTile(std::span<const std::uint8_t> data, std::size_t expected,
                                       std::vector<std::uint8_t>& out) {
    inflateReset(&inflater_);
    inflater_.next_in = const_cast<Bytef*>(data.data());
    inflater_.avail_in = static_cast<uInt>(data.size());
    std::size_t produced = 0;
    out.clear();
    while (true) {
        if (produced == out.size()) {
            if (out.size() > expected) {
                throw MalformedStream("its data inflates to more than the " + std::to_string(expected) + " bytes of its pixels");
            }
            out.resize(std::min(expected + 1, std::max<std::size_t>(out.size() * 2, std::size_t{1} << 16)));
        }
        inflater_.next_out = out.data() + produced;
        inflater_.avail_out = static_cast<uInt>(std::min<std::size_t>(out.size() - produced, UINT_MAX));
        const int result = inflate(&inflater_, Z_NO_FLUSH);
        produced = static_cast<std::size_t>(inflater_.next_out - out.data());
        if (result == Z_STREAM_END) break;
        if (result == Z_MEM_ERROR) throw std::bad_alloc();
        if (result == Z_DATA_ERROR || result == Z_NEED_DICT) {
            throw MalformedStream(std::string("its data is not raw DEFLATE (") +
                                  (inflater_.msg != nullptr ? inflater_.msg : "invalid data") + ")");
        }
        if (inflater_.avail_in == 0 && inflater_.avail_out > 0) {
            throw MalformedStream("its DEFLATE stream is cut short after " + std::to_string(produced) + " bytes");
        }
    }
    if (produced != expected) {
        throw MalformedStream("its data inflates to " + std::to_string(produced) + " bytes, not the " +
                              std::to_string(expected) + " of its pixels");
    }
    if (inflater_.avail_in != 0) {
        throw MalformedStream(std::to_string(inflater_.avail_in) + " bytes follow the end of its DEFLATE stream");
    }
    out.resize(produced);
}

void decodeCaptureStream(std::istream& in, CaptureStreamDecoder& decoder,
                         const std::function<void(const FrameRecord&)>& onRecord) {
    std::uint8_t preamble[8];
    in.read(reinterpret_cast<char*>(preamble), sizeof preamble);
    CaptureStreamDecoder::checkPreamble({preamble, static_cast<std::size_t>(in.gcount())});

    std::vector<std::uint8_t> body;
    FrameRecord record;
    for (std::uint64_t offset = sizeof preamble, index = 1;; ++index) {
        const std::string where = "record " + std::to_string(index) + " at byte " + std::to_string(offset) + ": ";
        std::uint8_t length[4];
        in.read(reinterpret_cast<char*>(length), sizeof length);
        if (in.gcount() == 0) return;
        if (in.gcount() < 4) throw MalformedStream(where + "the stream ends inside the length field");
        record.index = index;
        record.offset = offset;
        record.length = readU32(length);
        // Read in slices, so that memory grows with the bytes that arrive, not with the claim.
        body.clear();
        while (body.size() < record.length) {
            const std::size_t had = body.size();
            const std::size_t slice = std::min<std::size_t>(record.length - had, std::size_t{1} << 20);
            body.resize(had + slice);
            in.read(reinterpret_cast<char*>(body.data() + had), static_cast<std::streamsize>(slice));
            if (static_cast<std::size_t>(in.gcount()) < slice) {
                throw MalformedStream(where + "the stream ends after " +
                                      std::to_string(had + static_cast<std::size_t>(in.gcount())) + " of the record's " +
                                      std::to_string(record.length) + " bytes");
            }
        }
        try {
            decoder.applyRecord(body, record);
        } catch (const MalformedStream& e) {
            throw MalformedStream(where + e.what());
        }
        onRecord(record);
        offset += sizeof length + record.length;
    }
}

}  // namespace brisko::decode
