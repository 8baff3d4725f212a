// Capture over the fake: the stream's encoder read back by the reference decoder, the session
// that drives it, the screenshot, and the small pure pieces (tile comparison, cursor, exclusion
// plan, pacing).
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <tuple>
#include <unistd.h>

#include "capture/capture_stream_output.h"
#include "capture/cursor_overlay.h"
#include "capture/exclusion_plan.h"
#include "capture/frame_pacer.h"
#include "capture/frame_read_plan.h"
#include "capture/pixel_convert.h"
#include "capture/tile_compare.h"
#include "capture/tile_mask.h"
#include "fake/fake_platform.h"
#include "support/capture_records.h"
#include "support/png_image.h"

namespace brisko {
namespace {

namespace fs = std::filesystem;
using testing::BgraImage;
using testing::noiseImage;
using testing::rgbaOf;
using Wake = platform::SessionLoop::Wake;
using Tiles = std::vector<TileRect>;

Tiles rects(const decode::FrameRecord& record) {
    Tiles out;
    for (const decode::TileEntry& t : record.tiles) out.push_back({t.x, t.y, t.w, t.h});
    return out;
}

class Encoder : public ::testing::Test {
protected:
    // Hands a frame over; the tiles of the record it gave (absent: none), after checking that the
    // reader then shows exactly the frame.
    std::optional<Tiles> encode(const BgraImage& image, FrameOutcome expected = FrameOutcome::sent,
                                platform::FrameStatus status = 0) {
        EXPECT_EQ(output.encodeFrame(image.view(), status), expected);
        const auto records = reader.readNew();
        if (records.empty()) return std::nullopt;
        EXPECT_EQ(records.size(), 1u);
        EXPECT_EQ(reader.decoder().picture(), rgbaOf(image));
        return rects(records.back());
    }

    fake::FakePlatform platform;
    testing::RecordReader reader;
    CaptureStreamOutput output{[this](std::string_view record) { return reader.keep(record); }, 1};
};

TEST_F(Encoder, TheFirstFrameIsOneWholeTileThenChangedTilesGoInGridOrder) {
    const std::vector<std::pair<BgraImage, Tiles>> sizes = {
        {noiseImage(130, 70, 1, 12),
         {{0, 0, 64, 64}, {64, 0, 64, 64}, {128, 0, 2, 64}, {0, 64, 64, 6}, {64, 64, 64, 6}, {128, 64, 2, 6}}},
        {noiseImage(130, 1, 1), {{0, 0, 64, 1}, {64, 0, 64, 1}, {128, 0, 2, 1}}},  // only the height changed
        {noiseImage(193, 1, 1), {{0, 0, 64, 1}, {64, 0, 64, 1}, {128, 0, 64, 1}, {192, 0, 1, 1}}},  // only the width
    };
    for (const auto& [first, grid] : sizes) {
        EXPECT_EQ(encode(first), (Tiles{{0, 0, first.width, first.height}})) << first.width;  // a new size: sent whole
        EXPECT_EQ(encode(first, FrameOutcome::unchanged), std::nullopt);
        EXPECT_EQ(encode(noiseImage(first.width, first.height, 2)), grid) << first.width;
    }
}

TEST_F(Encoder, OneChangedPixelSendsItsWholeTile) {
    // 200 x 150: columns at 0, 64, 128 and 192 (8 wide), rows at 0, 64 and 128 (22 high).
    const std::vector<std::tuple<std::int64_t, std::int64_t, std::size_t, TileRect>> cases = {
        {70, 63, 0, {64, 0, 64, 64}},      // the last row of a tile
        {127, 127, 1, {64, 64, 64, 64}},   // its last pixel
        {199, 149, 0, {192, 128, 8, 22}},  // the corner tile, cut by both edges
    };
    BgraImage frame = noiseImage(200, 150, 3, 20);
    encode(frame);
    for (const auto& [x, y, channel, tile] : cases) {
        frame.pixel(x, y)[channel] ^= 1;
        EXPECT_EQ(encode(frame), Tiles{tile}) << "pixel " << x << ", " << y;
    }
}

TEST_F(Encoder, OnlyTilesWhereTheSourceSaysItChangedAreComparedUnlessAFrameWasIgnoredBetween) {
    const BgraImage first = noiseImage(130, 70, 1), second = noiseImage(130, 70, 2), third = noiseImage(130, 70, 3);
    encode(first);
    const std::vector<platform::PixelRect> topLeft = {{10, 10, 5, 5}};
    platform::BgraFrameView hinted = second.view();
    hinted.changedAreas = topLeft;
    EXPECT_EQ(output.encodeFrame(hinted, 0), FrameOutcome::sent);
    EXPECT_EQ(rects(reader.readNew().at(0)), (Tiles{{0, 0, 64, 64}}));
    // After an ignored frame, what the source says changed since then is not all that changed
    // since the reference: everything is compared.
    EXPECT_EQ(encode(third, FrameOutcome::ignored, 1), std::nullopt);
    EXPECT_EQ(output.encodeFrame(hinted, 0), FrameOutcome::sent);
    EXPECT_EQ(reader.readNew().at(0).tiles.size(), 5u) << "all but the tile taken already";
    EXPECT_EQ(reader.decoder().picture(), rgbaOf(second));
}

TEST(TouchedTiles, AreTheGridCellsTheAreasReachInsideTheFrameAndTheReadCoversTheirRows) {
    using R = platform::PixelRect;
    const std::vector<std::pair<std::vector<R>, std::vector<std::uint8_t>>> cases = {
        {{{63, 63, 2, 2}}, {1, 1, 0, 1, 1, 0}},                      // a corner shared by four cells
        {{{128, 64, 2, 6}, {64, 0, 0, 10}}, {0, 0, 0, 0, 0, 1}},     // the last, narrow cell; an empty area
        {{{-10, -10, 20, 20}, {200, 0, 5, 5}}, {1, 0, 0, 0, 0, 0}},  // clipped; outside the frame
    };
    std::vector<std::uint8_t> cells;
    for (const auto& [areas, expected] : cases) {
        markTouchedTiles(areas, 130, 70, 64, cells);
        EXPECT_EQ(cells, expected);
    }
    const platform::PixelSize display{1000, 800};
    const std::vector<R> damage = {{10, 300, 5, 5}, {900, 100, 200, 50}, {0, 900, 10, 10}};
    EXPECT_EQ(planFrameRead(display, damage, false),
              (FrameReadPlan{100, 205, std::vector<R>{{10, 300, 5, 5}, {900, 100, 100, 50}}}));
    EXPECT_EQ(planFrameRead(display, std::vector<R>{}, false), (FrameReadPlan{0, 0, std::vector<R>{}}));
    EXPECT_EQ(planFrameRead(display, std::nullopt, false), (FrameReadPlan{0, 800, std::nullopt}));
    EXPECT_EQ(planFrameRead(display, damage, true), (FrameReadPlan{0, 800, std::nullopt}));
}

TEST_F(Encoder, OnlyCompleteFramesWithPixelsCountAndAFailedWriteStillMovesTheReference) {
    const BgraImage first = noiseImage(130, 70, 5), second = noiseImage(130, 70, 6);
    encode(first);
    for (const platform::FrameStatus status : {1, 2, 3, 4, 5, -1, 99}) {
        EXPECT_EQ(encode(second, FrameOutcome::ignored, status), std::nullopt) << *status;
    }
    const std::vector<platform::BgraFrameView> empty = {
        {nullptr, 8, 8, 32}, {second.bytes.data(), 0, 8, 32}, {second.bytes.data(), 8, 0, 32},
        {second.bytes.data(), -8, 8, 32}, {second.bytes.data(), 8, 8, 28}};
    for (const auto& view : empty) EXPECT_EQ(output.encodeFrame(view, 0), FrameOutcome::ignored);
    EXPECT_EQ(encode(first, FrameOutcome::unchanged), std::nullopt) << "the ignored frames were no reference";
    EXPECT_EQ(encode(second, FrameOutcome::sent, std::nullopt)->size(), 6u);

    CaptureStreamOutput closed([](std::string_view) { return false; }, 1);
    EXPECT_EQ(closed.encodeFrame(first.view(), 0), FrameOutcome::writeFailed);
    EXPECT_EQ(closed.encodeFrame(first.view(), 0), FrameOutcome::unchanged);
}

// Fails on every tile whose first pixel is the marker colour; compresses the rest for real.
class MarkerRefusingDeflater final : public RawDeflater {
public:
    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        if (input.size() >= 3 && input[0] == 0x12 && input[1] == 0x34 && input[2] == 0x56) return 0;
        return real_->deflateRaw(input, output);
    }

private:
    std::unique_ptr<RawDeflater> real_ = makeRawDeflater(1);
};

TEST_F(Encoder, ATileThatFailsToCompressIsLeftOutAndStaysTheReference) {
    CaptureStreamOutput refusing([this](std::string_view record) { return reader.keep(record); }, 1,
                                 [] { return std::make_unique<MarkerRefusingDeflater>(); });
    BgraImage frame = noiseImage(200, 150, 9);
    const auto send = [&](FrameOutcome expected) {  // the tiles written (none: no record)
        EXPECT_EQ(refusing.encodeFrame(frame.view(), 0), expected);
        const auto records = reader.readNew();
        return records.empty() ? Tiles{} : rects(records.at(0));
    };
    EXPECT_EQ(send(FrameOutcome::sent), (Tiles{{0, 0, 200, 150}}));
    frame.pixel(10, 10)[0] ^= 1;
    std::memcpy(frame.pixel(64, 0), "\x56\x34\x12", 3);  // B, G, R of the marker
    frame.pixel(130, 70)[1] ^= 1;
    EXPECT_EQ(send(FrameOutcome::sent), (Tiles{{0, 0, 64, 64}, {128, 64, 64, 64}}));
    // The failed tile is not sent again while it stays the same; when every changed tile fails
    // nothing is written, and the next frame, even an unchanged one, is sent whole.
    frame.pixel(130, 70)[1] ^= 2;
    EXPECT_EQ(send(FrameOutcome::sent), (Tiles{{128, 64, 64, 64}}));
    frame.pixel(100, 30)[2] ^= 1;
    EXPECT_EQ(send(FrameOutcome::nothingCompressed), Tiles{});
    EXPECT_EQ(send(FrameOutcome::sent), (Tiles{{0, 0, 200, 150}}));
    EXPECT_EQ(reader.decoder().picture(), rgbaOf(frame));
}

constexpr std::int32_t panelPid = 902;
constexpr std::int32_t menuBarPid = 611;
const std::string preamble("BCS2\x02\x00\x00\x00", 8);

// Over the fake: display 5 (1440 x 900 points, 2880 x 1800 pixels) is the main one, the host's
// panel process runs, and a screenshot is a 6 x 4 picture.
void arrange(fake::FakePlatform& p) {
    p.windows.paths[menuBarPid] = "/opt/brisko/brisko-mac-menubar";
    p.capture.mainDisplay = 5;
    p.capture.pixelSizes[5] = {2880, 1800};
    p.capture.content.content = platform::ShareableContent{
        {{4, 800, 600}, {5, 1440, 900}}, {{300, "org.example.editor"}, {panelPid, "com.brisko.desktop"}}};
    p.capture.image.image = platform::CapturedImage{6, 4, std::vector<std::uint8_t>(96)};
}

TEST(CaptureSession, FailuresAfterThePreambleEndItWithTwoUnlessTheInputHasEnded) {
    const std::vector<std::pair<std::function<void(fake::FakePlatform&)>, std::string>> cases = {
        {[](auto& p) { p.capture.content = {std::nullopt, std::nullopt}; },
         "could not list displays (unknown error). Is Screen Recording granted in System Settings "
         "\u2192 Privacy & Security \u2192 Screen Recording?"},
        {[](auto& p) { p.capture.content.content->displays.clear(); }, "reported no displays to capture"},
        {[](auto& p) { p.capture.outputError = "no room"; }, "refused the stream output: no room"},
        {[](auto& p) { p.capture.startError = "BadMatch"; }, "could not start capturing: BadMatch"},
        {[](auto& p) {
             p.sessionLoop.steps.push_back([&p] {
                 p.capture.streams.back().output->didStopWithError("the display went away");
                 p.capture.streams.back().output->didStopWithError("a second stop is not reported");
                 return Wake::timedOut;
             });
         }, "stopped the stream: the display went away"},
    };
    for (const auto& [breakIt, message] : cases) {
        SCOPED_TRACE(message);
        fake::FakePlatform fresh;
        arrange(fresh);
        breakIt(fresh);
        fresh.sessionLoop.idle(3);  // never reached: the session ends first
        EXPECT_EQ(fresh.run({"capture-stream"}), 2);
        EXPECT_EQ(fresh.streams.out(), preamble);
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: ScreenCaptureKit " + message + "\n");
        EXPECT_EQ(fresh.sessionLoop.steps.size(), 3u);
    }
    fake::FakePlatform ended;  // the host closed the input before the start failed: it ends with 0
    ended.capture.content = {std::nullopt, "gone"};
    EXPECT_EQ(ended.run({"capture-stream"}), 0);
    EXPECT_EQ(ended.streams.err(), "");
    fake::FakePlatform gone;  // a reader gone before the preamble: nobody is left to tell, it ends with 0
    gone.streams.failWrites = true;
    EXPECT_EQ(gone.run({"capture-stream"}), 0);
}

TEST(CaptureSession, ItStreamsTheMainDisplayInPointsAndReplacesTheExclusionWhenTheHostsPidsChangeAtEachRefresh) {
    fake::FakePlatform platform;
    arrange(platform);
    const auto then = [&platform](std::function<void()> action, Wake wake = Wake::timedOut) {
        platform.sessionLoop.steps.push_back([action = std::move(action), wake] {
            action();
            return wake;
        });
    };
    const auto deliver = [&](const BgraImage& image, platform::FrameStatus status = 0) {
        then([&, status] { platform.capture.streams.back().output->didOutputFrame(image.view(), status); });
    };
    const BgraImage first = noiseImage(160, 100, 1), idle = noiseImage(160, 100, 2);
    BgraImage second = first;
    second.pixel(100, 70)[1] ^= 0x40;
    auto& content = platform.capture.content.content;
    auto& applications = content->applications;
    platform.capture.updateError = "BadWindow";  // warned about; the stream goes on with the new list
    deliver(first);                                                    // same pids
    deliver(idle, 1);                                                  // not complete: ignored
    deliver(first);                                                    // unchanged: nothing written
    then([&] { applications.push_back({menuBarPid, ""}); });           // a host process starts
    then([&] { applications.push_back({menuBarPid, ""}); });           // listed twice: [611, 611, 902]
    then([&] { applications.erase(applications.begin() + 1); });       // the panel ends
    then([&] { platform.capture.content = {std::nullopt, "gone"}; });  // no content: skipped
    then([&] { content = platform::ShareableContent{{{4, 800, 600}}, {{menuBarPid, ""}}}; });  // display 5 gone
    then([&] { platform.clock.advanceMs(500); }, Wake::posted);  // an early wake, no end asked
    then([&] { content->displays.push_back({5, 1440, 900}); });   // back: one update
    deliver(second);  // the same pids after a failed update: not tried again
    EXPECT_EQ(platform.run({"capture-stream"}), 0);
    const fake::FakeStreamLog& log = platform.capture.streams.back();
    EXPECT_EQ(std::tuple(log.configuration.size.width, log.configuration.size.height), std::tuple(1440LL, 900LL));
    EXPECT_DOUBLE_EQ(log.configuration.minimumFrameIntervalSeconds, 1.0 / 15.0);
    EXPECT_EQ(testing::decodeStream(platform.streams.out()), std::pair(std::size_t{2}, rgbaOf(second)));
    std::vector<std::vector<std::int32_t>> updates;  // the pids left out by each
    for (const auto& filter : log.updates) updates.push_back(filter.excludedPids);
    EXPECT_EQ(updates, (decltype(updates){{menuBarPid, panelPid}, {menuBarPid, menuBarPid, panelPid},
                                          {menuBarPid, menuBarPid}, {menuBarPid}}));
    EXPECT_EQ(log.updates.front().display.displayID, 5u);
    std::vector<double> timeouts(12, 2000);
    timeouts[9] = 1500;
    EXPECT_EQ(platform.sessionLoop.timeouts, timeouts);
    const std::string warning = "brisko-mac-input: capture-stream: could not re-exclude Brisko's windows: BadWindow\n";
    EXPECT_EQ(platform.streams.err(), warning + warning + warning + warning);
}

TEST(Screenshot, WritesTheMainDisplayAtItsPixelSizeWithoutCursorOrHostReplacingAFileAndFailuresWriteNone) {
    const fs::path dir = fs::temp_directory_path() / ("brisko-screenshot-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    const auto files = [&dir] { return std::distance(fs::directory_iterator(dir), fs::directory_iterator{}); };
    fake::FakePlatform platform;
    arrange(platform);
    const std::string path = (dir / "shot.png").string();
    std::ofstream(path) << "old contents";
    EXPECT_EQ(platform.run({"screenshot", path}), 0);
    const platform::PixelSize pixels = platform.capture.imageRequests.at(0).size;
    EXPECT_EQ(std::tuple(pixels.width, pixels.height), std::tuple(2880LL, 1800LL));
    EXPECT_TRUE(testing::readPng(path)) << "the old contents replaced";
    EXPECT_EQ(files(), 1) << "shot.png alone";
    platform.capture.pixelSizes.clear();  // without a mode: the size in points
    EXPECT_EQ(platform.run({"screenshot", path}), 0);
    const platform::PixelSize points = platform.capture.imageRequests.at(1).size;
    EXPECT_EQ(std::tuple(points.width, points.height), std::tuple(1440LL, 900LL));

    const std::string missingDir = (dir / "missing" / "shot.png").string();
    const std::string taken = (dir / "taken.png").string();
    const std::vector<std::tuple<std::function<void(fake::FakePlatform&)>, std::string, std::string>> failures = {
        {[](auto& p) { p.capture.content.content->displays.clear(); }, path,
         "ScreenCaptureKit could not list displays (no display). Is Screen Recording granted?"},
        {[](auto& p) { p.capture.image = {std::nullopt, "BadMatch"}; }, path, "capture failed (BadMatch)"},
        {[](auto& p) { p.capture.image = {std::nullopt, std::nullopt}; }, path, "capture failed (no image)"},
        {[](auto& p) { p.capture.image.image = platform::CapturedImage{}; }, path, "cannot write " + path},
        {[](auto&) {}, missingDir, "cannot write " + missingDir},
        {[&](auto&) { fs::create_directory(taken); }, taken, "cannot write " + taken},
    };
    for (const auto& [breakIt, target, message] : failures) {
        fake::FakePlatform fresh;
        arrange(fresh);
        breakIt(fresh);
        const auto before = files();
        EXPECT_EQ(fresh.run({"screenshot", target}), 2) << message;
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: screenshot: " + message + "\n");
        EXPECT_EQ(files(), before) << message;
    }
    fs::remove_all(dir);
}

// Every width up to two vector steps and a bit, so that changes land in the vector part and in
// the scalar remainder alike, in every channel and on every row.
TEST(TileCompare, FindsTheFirstChangedRowAndConvertsToOpaqueRgbaWhateverTheWidth) {
    for (std::size_t width = 1; width <= 37; ++width) {
        const BgraImage frame = noiseImage(static_cast<std::int64_t>(width), 3, 1, 8);
        const std::vector<std::uint8_t> reference = rgbaOf(frame);
        std::vector<std::uint8_t> rgba(width * 4 + 4, 0xEE);
        bgraToRgba(frame.bytes.data(), rgba.data(), width);
        EXPECT_TRUE(std::equal(reference.begin(), reference.begin() + std::ptrdiff_t(width * 4), rgba.begin()));
        EXPECT_EQ(rgba.back(), 0xEE) << "wrote past the run, width " << width;
        for (std::size_t i = 0; i < width * 3 * 4; ++i) {
            BgraImage changed = frame;
            changed.pixel(std::int64_t(i / 4 % width), std::int64_t(i / 4 / width))[i % 4] ^= 0x10;
            const std::size_t first = firstChangedRow(changed.bytes.data(), std::size_t(changed.bytesPerRow),
                                                      reference.data(), width * 4, width, 3);
            EXPECT_EQ(first, i % 4 == 3 ? 3 : i / 4 / width) << "width " << width << ", byte " << i;
        }
    }
}

TEST(CursorOverlay, BlendsPremultipliedColourClippedToTheCanvas) {
    const std::vector<std::pair<std::uint32_t, std::array<std::uint8_t, 4>>> blends = {
        {0xFF102030, {0x30, 0x20, 0x10, 77}},  // opaque: the cursor's colour, the alpha byte kept
        {0x80404040, {164, 114, 64, 77}},      // half-transparent grey
        {0x00FFFFFF, {255, 255, 255, 77}},     // additive (premultiplied with alpha 0): adds, clamped
    };
    for (const auto& [argb, expected] : blends) {
        std::array<std::uint8_t, 4> pixel = {200, 100, 0, 77};
        drawCursor({pixel.data(), 1, 1, 4, 0, 0}, {0, 0, 1, 1, {argb}});
        EXPECT_EQ(pixel, expected) << std::hex << argb;
    }
    // A 3 x 3 cursor whose pixels count up, at (102, 49) over a 4 x 3 canvas at (100, 50) with rows
    // of 20 bytes: its columns 0-1 and rows 1-2 land on canvas pixels (2..3, 0..1).
    std::vector<std::uint32_t> counting;
    for (std::uint32_t i = 0; i < 9; ++i) counting.push_back(0xFF000000 | i);
    std::vector<std::uint8_t> canvas(60, 0xEE);
    drawCursor({canvas.data(), 4, 3, 20, 100, 50}, {102, 49, 3, 3, counting});
    std::vector<std::uint8_t> blue;  // of each pixel, and of each row's padding
    for (std::size_t i = 0; i < 60; i += 4) blue.push_back(canvas[i]);
    EXPECT_EQ(blue, (std::vector<std::uint8_t>{0xEE, 0xEE, 3, 4, 0xEE, 0xEE, 0xEE, 6, 7, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE,
                                               0xEE}));
    const std::vector<std::uint8_t> before = canvas;
    drawCursor({canvas.data(), 4, 3, 20, 0, 0}, {-3, 0, 3, 3, counting});
    drawCursor({canvas.data(), 4, 3, 20, 0, 0}, {4, 3, 3, 3, counting});
    drawCursor({canvas.data(), 4, 3, 20, 0, 0}, {0, 0, 3, 3, {0xFF000000}});  // fewer pixels than its size
    EXPECT_EQ(canvas, before);
}

TEST(ExclusionPlan, HolesAreRedrawnFromEveryWindowThatStays) {
    const std::vector<std::tuple<std::string, std::vector<StackedWindow>, std::vector<ExclusionHole>>> cases = {
        {"host over parts of two windows, a third above it, one elsewhere",
         {{1, {0, 0, 60, 800}, false}, {9, {40, 40, 100, 100}, true}, {2, {120, 0, 500, 60}, false},
          {3, {700, 700, 10, 10}, false}},
         {{{40, 40, 100, 100}, {{1, {40, 40, 20, 100}}, {2, {120, 40, 20, 20}}}}}},
        {"every window under and over the hole, also those another one covers",
         {{1, {0, 0, 1000, 800}, false}, {2, {0, 0, 900, 700}, false}, {9, {50, 50, 10, 10}, true},
          {3, {55, 0, 100, 52}, false}},
         {{{50, 50, 10, 10}, {{1, {50, 50, 10, 10}}, {2, {50, 50, 10, 10}}, {3, {55, 50, 5, 2}}}}}},
        {"hosts clipped to the display, one entirely off it, never drawn into each other",
         {{1, {900, 700, 300, 300}, false}, {9, {950, 750, 200, 200}, true}, {8, {-50, -50, 40, 40}, true},
          {7, {960, 760, 10, 10}, true}},
         {{{950, 750, 50, 50}, {{1, {950, 750, 50, 50}}}}, {{960, 760, 10, 10}, {{1, {960, 760, 10, 10}}}}}},
        {"a hole for each part of a shaped host; a shaped window drawn where it covers, a translucent one blended",
         {{1, {0, 0, 100, 100}, false, {{0, 0, 100, 40}}}, {2, {0, 0, 100, 100}, false, {}, true},
          {9, {10, 10, 50, 50}, true, {{10, 10, 50, 20}, {10, 30, 20, 30}}}},
         {{{10, 10, 50, 20}, {{1, {10, 10, 50, 20}}, {2, {10, 10, 50, 20}, true}}},
          {{10, 30, 20, 30}, {{1, {10, 30, 20, 10}}, {2, {10, 30, 20, 30}, true}}}}},
    };
    for (const auto& [name, bottomToTop, holes] : cases) {
        EXPECT_EQ(planExclusion({0, 0, 1000, 800}, bottomToTop), holes) << name;
    }
}

TEST(FramePacer, TakesFramesOnlyAfterChangesAndNeverSoonerThanTheInterval) {
    using Decision = FramePacer::Decision;
    struct Moment {
        double atMs;
        bool change;
        Decision expected;
        bool showsNothing = false;  // the frame taken then shows nothing new
    };
    const std::vector<std::tuple<std::string, std::optional<double>, std::vector<Moment>>> cases = {
        {"a change inside the interval waits for its end", std::nullopt,
         {{0, false, {true, {}}}, {10, true, {false, 90.0}}, {60, true, {false, 40.0}}, {100, false, {true, {}}}}},
        {"continuous change, measured from the frames taken", std::nullopt,
         {{0, true, {true, {}}}, {50, true, {false, 50.0}}, {100, true, {true, {}}}, {230, true, {true, {}}},
          {300, true, {false, 30.0}}}},
        {"an idle source looks again at the poll period", 40.0,
         {{0, false, {true, {}}}, {5, false, {false, 40.0}}, {30, true, {false, 70.0}}}},
        {"a frame that showed nothing holds the next back by the gap only, the interval runs from the last "
         "that showed something",
         std::nullopt,
         {{0, false, {true, {}}}, {500, true, {true, {}}, true}, {501, true, {false, 4.0}}, {505, false, {true, {}}},
          {520, true, {false, 85.0}}, {605, false, {true, {}}, true}, {606, true, {false, 4.0}}}},
    };
    for (const auto& [name, idlePollMs, moments] : cases) {
        FramePacer pacer(100.0, 5.0, idlePollMs);
        for (const Moment& m : moments) {
            if (m.change) pacer.noteChange();
            const Decision decision = pacer.decide(m.atMs);
            EXPECT_EQ(decision, m.expected) << name << " at " << m.atMs;
            if (decision.takeFrame) pacer.frameTaken(m.atMs);
            if (decision.takeFrame && m.showsNothing) pacer.frameShowedNothingNew();
        }
    }
}

}  // namespace
}  // namespace brisko
