#include <gtest/gtest.h>
#include <spng.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "capture/capture_stream_output.h"
#include "capture/stream_format.h"
#include "fake/fake_platform.h"
#include "support/capture_records.h"
#include "support/process.h"

namespace brisko {
namespace {

namespace fs = std::filesystem;
using testing::runProgram;

struct Png {
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> rgba;
};

Png readPng(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    Png png;
    spng_ctx* ctx = spng_ctx_new(0);
    spng_set_png_buffer(ctx, bytes.data(), bytes.size());
    spng_ihdr header{};
    std::size_t size = 0;
    if (spng_get_ihdr(ctx, &header) == 0 && spng_decoded_image_size(ctx, SPNG_FMT_RGBA8, &size) == 0) {
        png.rgba.resize(size);
        if (spng_decode_image(ctx, png.rgba.data(), size, SPNG_FMT_RGBA8, 0) == 0) {
            png.width = header.width;
            png.height = header.height;
        }
    }
    spng_ctx_free(ctx);
    return png;
}

class CaptureDecodeTool : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("capture-decode-" + std::to_string(std::random_device{}()));
        fs::create_directories(dir / "frames");
        // A session: a first frame, a change of two tiles, and a resolution change.
        fake::FakePlatform platform;
        const auto preamble = captureStreamPreamble("BCS2", 2);
        stream.assign(preamble.begin(), preamble.end());
        CaptureStreamOutput output([&](std::string_view record) { return records.keep(record); }, 1);
        frames.push_back(testing::noiseImage(130, 70, 1));
        frames.push_back(frames.back());
        frames.back().pixel(0, 0)[0] ^= 1;
        frames.back().pixel(129, 69)[0] ^= 1;
        frames.push_back(testing::noiseImage(90, 50, 2));
        for (const auto& frame : frames) output.encodeFrame(frame.view(), 0);
        for (const std::string& record : records.records()) stream += record;
        write("stream.bcs", stream);
    }
    void TearDown() override { fs::remove_all(dir); }

    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream(dir / name, std::ios::binary) << bytes;
    }
    std::string recordSize(std::size_t i) const { return std::to_string(records.records()[i].size() - 4); }

    fs::path dir;
    std::string stream;
    testing::RecordReader records;
    std::vector<testing::BgraImage> frames;
};

TEST_F(CaptureDecodeTool, WritesTheFinalPictureAndEveryFrame) {
    const auto result = runProgram(CAPTURE_DECODE_PATH, {"--list", "--frames", (dir / "frames").string(),
                                                         (dir / "stream.bcs").string(), (dir / "last.png").string()});
    EXPECT_EQ(result.status, 0) << result.err;
    const std::size_t second = 8 + records.records()[0].size(), third = second + records.records()[1].size();
    EXPECT_EQ(result.out, "record 1 at byte 8: 130 x 70, 1 tile, " + recordSize(0) + " bytes\n" +
                              "record 2 at byte " + std::to_string(second) + ": 130 x 70, 2 tiles, " + recordSize(1) +
                              " bytes\n" + "record 3 at byte " + std::to_string(third) + ": 90 x 50, 1 tile, " +
                              recordSize(2) + " bytes\n" + "decoded 3 records; final frame 90 x 50\n");
    EXPECT_EQ(result.err, "");

    const Png last = readPng(dir / "last.png");
    EXPECT_EQ(last.width, 90u);
    EXPECT_EQ(last.height, 50u);
    EXPECT_EQ(last.rgba, testing::rgbaOf(frames[2]));
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const Png frame = readPng(dir / "frames" / ("frame-00000" + std::to_string(i + 1) + ".png"));
        EXPECT_EQ(frame.rgba, testing::rgbaOf(frames[i])) << "frame " << i + 1;
    }
}

TEST_F(CaptureDecodeTool, ReadsStandardInput) {
    const auto result = runProgram(CAPTURE_DECODE_PATH, {"-", (dir / "last.png").string()}, stream);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "decoded 3 records; final frame 90 x 50\n");
    EXPECT_EQ(readPng(dir / "last.png").rgba, testing::rgbaOf(frames[2]));
}

TEST_F(CaptureDecodeTool, RefusesBadStreamsAndBadUsage) {
    write("cut.bcs", stream.substr(0, stream.size() - 1));
    write("empty.bcs", stream.substr(0, 8));
    const std::size_t third = stream.size() - records.records()[2].size();
    const std::vector<std::pair<std::vector<std::string>, std::string>> failures = {
        {{(dir / "cut.bcs").string(), (dir / "x.png").string()},
         "capture-decode: record 3 at byte " + std::to_string(third) + ": the stream ends after " +
             std::to_string(records.records()[2].size() - 5) + " of the record's " + recordSize(2) + " bytes\n"},
        {{(dir / "empty.bcs").string(), (dir / "x.png").string()}, "capture-decode: the stream holds no frame records\n"},
        {{(dir / "missing.bcs").string(), (dir / "x.png").string()},
         "capture-decode: cannot open " + (dir / "missing.bcs").string() + "\n"},
        {{(dir / "stream.bcs").string(), (dir / "no-such-dir" / "x.png").string()},
         "capture-decode: cannot create " + (dir / "no-such-dir" / "x.png").string() + "\n"},
    };
    for (const auto& [args, message] : failures) {
        const auto result = runProgram(CAPTURE_DECODE_PATH, args);
        EXPECT_EQ(result.status, 1) << message;
        EXPECT_EQ(result.err, message);
    }
    EXPECT_FALSE(fs::exists(dir / "x.png"));
    for (const std::vector<std::string>& args :
         std::vector<std::vector<std::string>>{{}, {"only-one"}, {"--frames"}, {"--bogus", "a", "b"}, {"a", "b", "c"}}) {
        const auto result = runProgram(CAPTURE_DECODE_PATH, args);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err.rfind("usage: capture-decode", 0), 0u) << result.err;
    }
}

}  // namespace
}  // namespace brisko
