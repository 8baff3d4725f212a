// The reference reader of the capture stream, as a library and as the capture-decode tool.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "capture/raw_deflater.h"
#include "capture/stream_format.h"
#include "capture_stream_decoder.h"
#include "support/png_image.h"
#include "support/process.h"

namespace brisko {
namespace {

using Bytes = std::vector<std::uint8_t>;
using decode::CaptureStreamDecoder;
using decode::FrameRecord;

Bytes rawDeflate(const Bytes& input) {
    Bytes out(deflateCapacity(input.size()));
    out.resize(makeRawDeflater(6)->deflateRaw(input, out));
    return out;
}

// Opaque pixels whose colours encode their position and a seed.
Bytes pixels(std::uint32_t w, std::uint32_t h, std::uint8_t seed) {
    Bytes rgba;
    for (std::uint32_t i = 0; i < w * h; ++i) {
        rgba.insert(rgba.end(), {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8), seed, 255});
    }
    return rgba;
}

struct Tile {
    std::uint32_t x, y, w, h;
    Bytes data;
    std::optional<std::uint32_t> declaredLength = std::nullopt;
};

Tile tile(std::uint32_t x, std::uint32_t y, std::uint32_t w, std::uint32_t h, std::uint8_t seed = 1) {
    return {x, y, w, h, rawDeflate(pixels(w, h, seed))};
}

// A record as a writer would build it; `count` and `extra` bytes let a case break it.
Bytes record(std::uint32_t width, std::uint32_t height, const std::vector<Tile>& tiles,
             std::optional<std::uint32_t> count = std::nullopt, std::size_t extra = 0) {
    Bytes body;
    appendU32(body, width);
    appendU32(body, height);
    appendU32(body, count.value_or(static_cast<std::uint32_t>(tiles.size())));
    for (const Tile& t : tiles) {
        for (const std::uint32_t v : {t.x, t.y, t.w, t.h}) appendU32(body, v);
        appendU32(body, t.declaredLength.value_or(static_cast<std::uint32_t>(t.data.size())));
        body.insert(body.end(), t.data.begin(), t.data.end());
    }
    body.insert(body.end(), extra, 0);
    Bytes out;
    appendU32(out, static_cast<std::uint32_t>(body.size()));
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

const Bytes preamble = {'B', 'C', 'S', '2', 2, 0, 0, 0};

Bytes stream(const std::vector<Bytes>& records, const Bytes& start = preamble) {
    Bytes out = start;
    for (const Bytes& r : records) out.insert(out.end(), r.begin(), r.end());
    return out;
}

// Decodes a whole stream; returns the error message, empty when it was well formed.
std::string decodeError(const Bytes& bytes, decode::DecoderLimits limits = {}) {
    std::istringstream in(std::string(bytes.begin(), bytes.end()));
    CaptureStreamDecoder decoder(limits);
    try {
        decodeCaptureStream(in, decoder, [](const FrameRecord&) {});
    } catch (const decode::MalformedStream& e) {
        return e.what();
    }
    return "";
}

// Two records of a 130 x 70 frame: the whole frame, then two tiles of the grid.
const Bytes first = record(130, 70, {tile(0, 0, 130, 70, 1)});
const Bytes second = record(130, 70, {tile(64, 0, 64, 64, 2), tile(128, 64, 2, 6, 3)});

TEST(CaptureDecoder, ReportsWhereAndHowAStreamIsMalformed) {
    const std::string atSecond = "record 2 at byte " + std::to_string(8 + first.size()) + ": ";
    Bytes transparent = pixels(2, 2, 1), cut = rawDeflate(transparent), trailing = cut;
    transparent[7] = 0;
    cut.resize(cut.size() - 2);
    trailing.insert(trailing.end(), {0, 0});
    const auto tiny = [](Bytes data) { return record(2, 2, {{0, 0, 2, 2, std::move(data)}}); };
    const Bytes one = stream({first}), truncated(one.begin(), one.end() - 1);

    const std::vector<std::pair<Bytes, std::string>> cases = {
        {{'B', 'C', 'S', '2', 2, 0, 0}, "the stream ends inside its 8-byte preamble"},
        {{'B', 'C', 'S', '1', 2, 0, 0, 0}, "the stream does not start with the magic BCS2"},
        {{'B', 'C', 'S', '2', 3, 0, 0, 0}, "the stream has version 3, not 2"},
        {{'B', 'C', 'S', '2', 2, 0, 0, 0, 7, 0}, "record 1 at byte 8: the stream ends inside the length field"},
        {truncated, "record 1 at byte 8: the stream ends after " + std::to_string(first.size() - 5) + " of the record's " +
                        std::to_string(first.size() - 4) + " bytes"},
        {stream({{8, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}}), "the record is 8 bytes long, shorter than its 12-byte frame header"},
        {stream({record(0, 5, {tile(0, 0, 0, 5)})}), "record 1 at byte 8: the frame is empty (0 x 5)"},
        {stream({record(10000, 10000, {})}), "the frame of 10000 x 10000 pixels is beyond the limit of 67108864 pixels"},
        {stream({record(130, 70, {})}), "the record has no tiles"},
        {stream({record(130, 70, {tile(0, 0, 64, 64)})}), "the first record does not carry the whole frame as its only tile"},
        {stream({first, record(131, 70, {tile(0, 0, 64, 64)})}),
         atSecond + "the frame size changes from 130 x 70 to 131 x 70 but the record does not carry the whole frame"},
        {stream({first, record(130, 70, {tile(10, 0, 64, 64)})}),
         atSecond + "tile 1 (10, 0, 64, 64) is neither the whole frame nor a tile of the 64-pixel grid"},
        {stream({first, record(130, 70, {tile(128, 0, 64, 64)})}), "tile 1 (128, 0, 64, 64) is neither"},
        {stream({first, record(130, 70, {tile(0, 64, 64, 64)})}), "tile 1 (0, 64, 64, 64) is neither"},
        {stream({first, record(130, 70, {tile(64, 0, 64, 64), tile(0, 0, 64, 64)})}), "tile 2 (0, 0, 64, 64) is out of grid order"},
        {stream({first, record(130, 70, {tile(0, 0, 64, 64), tile(0, 0, 64, 64)})}), "tile 2 (0, 0, 64, 64) is out of grid order"},
        {stream({first, record(130, 70, {tile(0, 0, 130, 70), tile(0, 64, 64, 6)})}),
         "tile 1 (0, 0, 130, 70) is the whole frame but not the record's only tile"},
        {stream({record(2, 2, {{0, 0, 2, 2, {}, 999}})}),
         "tile 1 (0, 0, 2, 2): its 999 bytes of data run past the end of the record"},
        {stream({record(2, 2, {tile(0, 0, 2, 2)}, 2)}), "tile 2 of 2 runs past the end of the record"},
        {stream({record(2, 2, {tile(0, 0, 2, 2)}, std::nullopt, 3)}), "the record has 3 bytes after its last tile"},
        {stream({tiny({0xFF, 0xFF, 0xFF, 0xFF})}), "tile 1 (0, 0, 2, 2): its data is not raw DEFLATE (invalid block type)"},
        {stream({tiny(rawDeflate(pixels(3, 1, 1)))}), "tile 1 (0, 0, 2, 2): its data inflates to 12 bytes, not the 16 of its pixels"},
        {stream({tiny(rawDeflate(pixels(5, 1, 1)))}), "tile 1 (0, 0, 2, 2): its data inflates to more than the 16 bytes of its pixels"},
        {stream({tiny(cut)}), "tile 1 (0, 0, 2, 2): its DEFLATE stream is cut short"},
        {stream({tiny(trailing)}), "tile 1 (0, 0, 2, 2): 2 bytes follow the end of its DEFLATE stream"},
        {stream({tiny(rawDeflate(transparent))}), "tile 1 (0, 0, 2, 2): pixel (1, 0) has alpha 0, not 255"},
    };
    for (const auto& [bytes, message] : cases) {
        EXPECT_THAT(decodeError(bytes), ::testing::HasSubstr(message));
    }
    EXPECT_EQ(decodeError(stream({record(11, 10, {tile(0, 0, 11, 10)})}), {.maxFramePixels = 100}),
              "record 1 at byte 8: the frame of 11 x 10 pixels is beyond the limit of 100 pixels");
}

TEST(CaptureDecodeTool, WritesTheFinalPictureAndEveryFrameAndRefusesBadStreamsAndUsage) {
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / ("capture-decode-" + std::to_string(::getpid()));
    fs::create_directories(dir / "frames");
    const Bytes bytes = stream({first, second}), cut(bytes.begin(), bytes.end() - 1);
    const auto write = [&](const std::string& name, const Bytes& content) {
        std::ofstream(dir / name, std::ios::binary).write(reinterpret_cast<const char*>(content.data()),
                                                          static_cast<std::streamsize>(content.size()));
        return (dir / name).string();
    };
    const std::string tool = CAPTURE_DECODE_PATH, last = (dir / "last.png").string(), whole = write("s.bcs", bytes);
    auto r = testing::runProgram(tool, {"--list", "--frames", (dir / "frames").string(), whole, last});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "record 1 at byte 8: 130 x 70, 1 tile, " + std::to_string(first.size() - 4) +
                         " bytes\nrecord 2 at byte " + std::to_string(8 + first.size()) + ": 130 x 70, 2 tiles, " +
                         std::to_string(second.size() - 4) + " bytes\ndecoded 2 records; final frame 130 x 70\n");
    // The picture after the first record is its one tile; the reader's composing of tiles is
    // checked where the encoder's records are read back.
    EXPECT_EQ(testing::readPng((dir / "frames" / "frame-000001.png").string())->rgba, pixels(130, 70, 1));
    EXPECT_EQ(testing::readPng((dir / "frames" / "frame-000002.png").string())->rgba, testing::readPng(last)->rgba);
    const Bytes one = stream({first});
    r = testing::runProgram(tool, {"-", last}, std::string(one.begin(), one.end()));
    EXPECT_EQ(r.out, "decoded 1 record; final frame 130 x 70\n");
    EXPECT_EQ(testing::readPng(last)->rgba, pixels(130, 70, 1));

    const std::vector<std::pair<std::vector<std::string>, std::string>> failures = {
        {{write("cut.bcs", cut), last}, decodeError(cut)},  // the reader's message, checked in CaptureDecoder
        {{write("none.bcs", preamble), last}, "the stream holds no frame records"},
        {{(dir / "missing.bcs").string(), last}, "cannot open " + (dir / "missing.bcs").string()},
        {{whole, (dir / "no" / "x.png").string()}, "cannot create " + (dir / "no" / "x.png").string()},
    };
    fs::remove(last);
    for (const auto& [args, message] : failures) {
        r = testing::runProgram(tool, args);
        EXPECT_EQ(r.status, 1) << message;
        EXPECT_EQ(r.err, "capture-decode: " + message + "\n");
    }
    EXPECT_FALSE(fs::exists(last));
    for (const std::vector<std::string>& args :
         std::vector<std::vector<std::string>>{{}, {"only-one"}, {"--frames"}, {"--bogus", "a", "b"}, {"a", "b", "c"}}) {
        r = testing::runProgram(tool, args);
        EXPECT_EQ(r.status, 2);
        EXPECT_TRUE(r.err.starts_with("usage: capture-decode")) << r.err;
    }
    fs::remove_all(dir);
}

}  // namespace
}  // namespace brisko
