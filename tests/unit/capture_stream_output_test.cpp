#include <gtest/gtest.h>

#include <cstring>
#include <optional>

#include "capture/capture_stream_output.h"
#include "capture/frame_read_plan.h"
#include "capture/tile_mask.h"
#include "fake/fake_platform.h"
#include "support/capture_records.h"

namespace brisko {
namespace {

using testing::BgraImage;
using testing::noiseImage;
using testing::rgbaOf;

std::vector<TileRect> rects(const decode::FrameRecord& record) {
    std::vector<TileRect> out;
    for (const decode::TileEntry& t : record.tiles) out.push_back({t.x, t.y, t.w, t.h});
    return out;
}

void setPixel(BgraImage& image, std::int64_t x, std::int64_t y, std::array<std::uint8_t, 4> bgra) {
    std::memcpy(image.pixel(x, y), bgra.data(), 4);
}

class CaptureStreamOutputTest : public ::testing::Test {
protected:
    // Hands a frame to the encoder and returns the records it wrote, as the reader applied them.
    std::vector<decode::FrameRecord> encode(const BgraImage& image, FrameOutcome expected,
                                            platform::FrameStatus status = std::nullopt) {
        EXPECT_EQ(output.encodeFrame(image.view(), status), expected);
        return reader.readNew();
    }
    // Hands over a frame that must give one record, and checks that the reader now shows it.
    decode::FrameRecord send(const BgraImage& image) {
        const auto records = encode(image, FrameOutcome::sent);
        EXPECT_EQ(records.size(), 1u);
        EXPECT_EQ(reader.decoder().picture(), rgbaOf(image));
        return records.empty() ? decode::FrameRecord{} : records[0];
    }

    fake::FakePlatform platform;
    testing::RecordReader reader;
    CaptureStreamOutput output{[this](std::string_view record) { return reader.keep(record); }, 1};
};

TEST_F(CaptureStreamOutputTest, FirstFrameIsOneWholeTileAndAnIdenticalFrameWritesNothing) {
    const BgraImage desktop = testing::renderDesktop(1440, 900, 1, 48);
    const decode::FrameRecord first = send(desktop);
    EXPECT_EQ(first.width, 1440u);
    EXPECT_EQ(first.height, 900u);
    EXPECT_EQ(rects(first), (std::vector<TileRect>{{0, 0, 1440, 900}}));

    EXPECT_TRUE(encode(desktop, FrameOutcome::unchanged).empty());
    EXPECT_EQ(reader.records().size(), 1u);
}

TEST_F(CaptureStreamOutputTest, ChangedTilesGoInGridOrder) {
    struct Case {
        std::int64_t width, height;
        std::vector<TileRect> tiles;
    };
    const std::vector<Case> cases = {
        {130, 70, {{0, 0, 64, 64}, {64, 0, 64, 64}, {128, 0, 2, 64}, {0, 64, 64, 6}, {64, 64, 64, 6}, {128, 64, 2, 6}}},
        {64, 64, {{0, 0, 64, 64}}},
        {1, 130, {{0, 0, 1, 64}, {0, 64, 1, 64}, {0, 128, 1, 2}}},
        {193, 1, {{0, 0, 64, 1}, {64, 0, 64, 1}, {128, 0, 64, 1}, {192, 0, 1, 1}}},
    };
    for (const Case& c : cases) {
        fake::FakePlatform fresh;
        testing::RecordReader frames;
        CaptureStreamOutput encoder([&](std::string_view record) { return frames.keep(record); }, 1);
        EXPECT_EQ(encoder.encodeFrame(noiseImage(c.width, c.height, 1).view(), 0), FrameOutcome::sent);
        const BgraImage changed = noiseImage(c.width, c.height, 2, 12);
        EXPECT_EQ(encoder.encodeFrame(changed.view(), 0), FrameOutcome::sent);
        const auto records = frames.readNew();
        ASSERT_EQ(records.size(), 2u);
        EXPECT_EQ(rects(records[1]), c.tiles) << c.width << " x " << c.height;
        EXPECT_EQ(frames.decoder().picture(), rgbaOf(changed));
    }
}

TEST_F(CaptureStreamOutputTest, OneChangedPixelSendsItsWholeTile) {
    struct Case {
        std::int64_t x, y;
        std::size_t channel;  // B, G, R
        TileRect tile;
    };
    // A 200 x 150 frame: columns at 0, 64, 128 and 192 (8 wide), rows at 0, 64 and 128 (22 high).
    const std::vector<Case> cases = {
        {70, 63, 0, {64, 0, 64, 64}},     // the last row of a tile
        {127, 127, 1, {64, 64, 64, 64}},  // its last pixel
        {0, 0, 2, {0, 0, 64, 64}},
        {199, 149, 0, {192, 128, 8, 22}},  // the corner tile, cut by both edges
        {192, 64, 2, {192, 64, 8, 64}},
        {5, 149, 1, {0, 128, 64, 22}},
    };
    BgraImage frame = noiseImage(200, 150, 3, 20);
    send(frame);
    for (const Case& c : cases) {
        frame.pixel(c.x, c.y)[c.channel] ^= 1;
        EXPECT_EQ(rects(send(frame)), std::vector<TileRect>{c.tile}) << "pixel " << c.x << ", " << c.y;
    }
}

TEST_F(CaptureStreamOutputTest, AlphaIsForcedOpaqueAndItsChangesAreNotChanges) {
    BgraImage pixel{1, 1, 4, {0x10, 0x20, 0x30, 0x00}};
    send(pixel);
    EXPECT_EQ(reader.decoder().picture(), (std::vector<std::uint8_t>{0x30, 0x20, 0x10, 0xFF}));

    BgraImage frame = noiseImage(130, 70, 4);
    send(frame);
    for (std::size_t i = 3; i < frame.bytes.size(); i += 4) frame.bytes[i] ^= 0x5A;
    EXPECT_TRUE(encode(frame, FrameOutcome::unchanged).empty());
}

TEST_F(CaptureStreamOutputTest, AFrameOfAnotherSizeIsSentWhole) {
    const std::vector<std::pair<std::int64_t, std::int64_t>> sizes = {
        {130, 70}, {200, 150}, {200, 149}, {201, 149}, {130, 70}};
    std::uint32_t seed = 10;
    for (const auto& [width, height] : sizes) {
        const BgraImage frame = noiseImage(width, height, seed++);
        EXPECT_EQ(rects(send(frame)), (std::vector<TileRect>{{0, 0, width, height}})) << width << " x " << height;
    }
    // Back on the grid once the size holds.
    EXPECT_EQ(send(noiseImage(130, 70, seed)).tiles.size(), 6u);
}

TEST_F(CaptureStreamOutputTest, OnlyCompleteFramesCount) {
    const BgraImage first = noiseImage(130, 70, 5), second = noiseImage(130, 70, 6);
    send(first);
    for (const std::int64_t status : {1, 2, 3, 4, 5, -1, 99}) {
        EXPECT_TRUE(encode(second, FrameOutcome::ignored, status).empty()) << "status " << status;
    }
    // The ignored frames did not become the reference: the first frame is still it.
    EXPECT_TRUE(encode(first, FrameOutcome::unchanged, 0).empty());
    EXPECT_EQ(encode(second, FrameOutcome::sent, std::nullopt).size(), 1u);
}

TEST_F(CaptureStreamOutputTest, FramesWithoutPixelsAreIgnored) {
    const BgraImage image = noiseImage(8, 8, 7);
    const std::vector<platform::BgraFrameView> views = {
        {nullptr, 8, 8, 32}, {image.bytes.data(), 0, 8, 32}, {image.bytes.data(), 8, 0, 32},
        {image.bytes.data(), -8, 8, 32}, {image.bytes.data(), 8, 8, 28},
    };
    for (const platform::BgraFrameView& view : views) EXPECT_EQ(output.encodeFrame(view, 0), FrameOutcome::ignored);
    EXPECT_TRUE(reader.records().empty());
    EXPECT_EQ(rects(send(image)), (std::vector<TileRect>{{0, 0, 8, 8}}));
}

TEST_F(CaptureStreamOutputTest, AFailedWriteIsReportedAfterTheReferenceMoved) {
    CaptureStreamOutput closed([](std::string_view) { return false; }, 1);
    const BgraImage frame = noiseImage(130, 70, 8);
    EXPECT_EQ(closed.encodeFrame(frame.view(), 0), FrameOutcome::writeFailed);
    EXPECT_EQ(closed.encodeFrame(frame.view(), 0), FrameOutcome::unchanged);
}

// Fails on every tile whose first pixel is the marker colour; compresses the rest for real.
class MarkerRefusingDeflater final : public RawDeflater {
public:
    static constexpr std::array<std::uint8_t, 3> marker = {0x12, 0x34, 0x56};  // R, G, B
    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        if (input.size() >= 3 && std::equal(marker.begin(), marker.end(), input.begin())) return 0;
        return real_->deflateRaw(input, output);
    }

private:
    std::unique_ptr<RawDeflater> real_ = makeRawDeflater(1);
};

TEST_F(CaptureStreamOutputTest, ATileThatFailsToCompressIsLeftOut) {
    testing::RecordReader frames;
    CaptureStreamOutput encoder([&](std::string_view record) { return frames.keep(record); }, 1,
                                [] { return std::make_unique<MarkerRefusingDeflater>(); });
    const auto mark = [](BgraImage& image, std::int64_t x, std::int64_t y) {
        setPixel(image, x, y, {0x56, 0x34, 0x12, 0x00});
    };
    BgraImage frame = noiseImage(200, 150, 9);
    ASSERT_EQ(encoder.encodeFrame(frame.view(), 0), FrameOutcome::sent);
    frames.readNew();

    // Three tiles change; the marked one fails and is left out of the record.
    frame.pixel(10, 10)[0] ^= 1;
    mark(frame, 64, 0);
    frame.pixel(130, 70)[1] ^= 1;
    ASSERT_EQ(encoder.encodeFrame(frame.view(), 0), FrameOutcome::sent);
    auto records = frames.readNew();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(rects(records[0]), (std::vector<TileRect>{{0, 0, 64, 64}, {128, 64, 64, 64}}));
    EXPECT_NE(frames.decoder().picture(), rgbaOf(frame));

    // The reference took the failed tile's pixels: it is not sent again while it stays the same.
    frame.pixel(130, 70)[1] ^= 2;
    ASSERT_EQ(encoder.encodeFrame(frame.view(), 0), FrameOutcome::sent);
    records = frames.readNew();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(rects(records[0]), (std::vector<TileRect>{{128, 64, 64, 64}}));

    // When every changed tile fails nothing is written, and the next frame, even an unchanged
    // one, is sent whole.
    frame.pixel(100, 30)[2] ^= 1;
    EXPECT_EQ(encoder.encodeFrame(frame.view(), 0), FrameOutcome::nothingCompressed);
    EXPECT_TRUE(frames.readNew().empty());
    EXPECT_EQ(encoder.encodeFrame(frame.view(), 0), FrameOutcome::sent);
    records = frames.readNew();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(rects(records[0]), (std::vector<TileRect>{{0, 0, 200, 150}}));
    EXPECT_EQ(frames.decoder().picture(), rgbaOf(frame));
}

TEST_F(CaptureStreamOutputTest, TheReaderFollowsALongSession) {
    // Typing, window switches, size changes and idle frames, as a session brings them; after
    // every record the reader must show exactly the source frame.
    BgraImage frame = testing::renderDesktop(400, 250, 1, 16);
    send(frame);
    for (std::uint32_t step = 0; step < 24; ++step) {
        if (step % 8 == 7) {
            frame = testing::renderDesktop(step % 16 == 7 ? 336 : 400, 250, step, 0);
            EXPECT_EQ(send(frame).tiles.size(), 1u);
            continue;
        }
        if (step % 5 == 4) {
            EXPECT_TRUE(encode(frame, FrameOutcome::unchanged).empty());
            EXPECT_TRUE(encode(testing::renderDesktop(frame.width, 250, 99, 0), FrameOutcome::ignored, 1).empty());
            continue;
        }
        const std::int64_t touched = testing::retypeTiles(frame, 0.04 * (step % 4 + 1), step);
        EXPECT_EQ(send(frame).tiles.size(), static_cast<std::size_t>(touched));
    }
}

}  // namespace
}  // namespace brisko

namespace brisko {
namespace {

TEST_F(CaptureStreamOutputTest, TilesOfOneColourDecodeAtEverySizeAndColour) {
    const auto solid = [](std::uint32_t bgra) {
        BgraImage image = noiseImage(130, 70, 1);
        for (std::int64_t y = 0; y < 70; ++y) {
            for (std::int64_t x = 0; x < 130; ++x) std::memcpy(image.pixel(x, y), &bgra, 4);
        }
        return image;
    };
    send(noiseImage(130, 70, 1));
    for (const std::uint32_t bgra : {0xff102030u, 0xff405060u, 0xff102030u}) EXPECT_EQ(send(solid(bgra)).tiles.size(), 6u);
}

TEST(TouchedTiles, AreTheGridCellsTheAreasReachInsideTheFrame) {
    using R = platform::PixelRect;
    const std::vector<std::pair<std::vector<R>, std::vector<std::uint8_t>>> cases = {
        {{}, {0, 0, 0, 0, 0, 0}},
        {{{63, 63, 2, 2}}, {1, 1, 0, 1, 1, 0}},                     // a corner shared by four cells
        {{{128, 64, 2, 6}, {64, 0, 0, 10}}, {0, 0, 0, 0, 0, 1}},    // the last, narrow cell; nothing from an empty area
        {{{-10, -10, 20, 20}, {200, 0, 5, 5}}, {1, 0, 0, 0, 0, 0}},  // clipped; outside the frame
    };
    std::vector<std::uint8_t> cells;
    for (const auto& [areas, expected] : cases) {
        markTouchedTiles(areas, 130, 70, 64, cells);
        EXPECT_EQ(cells, expected);
    }
}

TEST(FrameReadPlan, ReadsTheRowsTheDamageSpansOrTheWholeDisplay) {
    using R = platform::PixelRect;
    const platform::PixelSize display{1000, 800};
    const std::vector<R> damage = {{10, 300, 5, 5}, {900, 100, 200, 50}, {0, 900, 10, 10}};
    EXPECT_EQ(planFrameRead(display, damage, false),
              (FrameReadPlan{100, 205, std::vector<R>{{10, 300, 5, 5}, {900, 100, 100, 50}}}));
    EXPECT_EQ(planFrameRead(display, std::vector<R>{}, false), (FrameReadPlan{0, 0, std::vector<R>{}}));
    EXPECT_EQ(planFrameRead(display, std::nullopt, false), (FrameReadPlan{0, 800, std::nullopt}));
    EXPECT_EQ(planFrameRead(display, damage, true), (FrameReadPlan{0, 800, std::nullopt}));
}

TEST_F(CaptureStreamOutputTest, OnlyTilesWhereTheSourceSaysItChangedAreCompared) {
    const BgraImage first = noiseImage(130, 70, 1), second = noiseImage(130, 70, 2), third = noiseImage(130, 70, 3);
    send(first);
    const std::vector<platform::PixelRect> topLeft = {{10, 10, 5, 5}};
    platform::BgraFrameView hinted = second.view();
    hinted.changedAreas = topLeft;
    EXPECT_EQ(output.encodeFrame(hinted, 0), FrameOutcome::sent);
    const auto records = reader.readNew();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(rects(records[0]), (std::vector<TileRect>{{0, 0, 64, 64}}));
    // After a frame that was ignored, what the source says changed since then is not all that
    // changed since the reference: everything is compared.
    EXPECT_EQ(output.encodeFrame(third.view(), 1), FrameOutcome::ignored);
    EXPECT_EQ(output.encodeFrame(hinted, 0), FrameOutcome::sent);
    EXPECT_EQ(reader.readNew().at(0).tiles.size(), 5u) << "all but the tile taken already";
    EXPECT_EQ(reader.decoder().picture(), rgbaOf(second));
}

}  // namespace
}  // namespace brisko
