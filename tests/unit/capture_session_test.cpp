#include <gtest/gtest.h>

#include <sstream>

#include "fake/fake_platform.h"
#include "support/capture_records.h"

namespace brisko {
namespace {

using Wake = platform::SessionLoop::Wake;

constexpr std::int32_t editorPid = 300;
constexpr std::int32_t panelPid = 902;
constexpr std::int32_t menuBarPid = 611;
const std::string preamble("BCS2\x02\x00\x00\x00", 8);

class CaptureSession : public ::testing::Test {
protected:
    CaptureSession() {
        platform.windows.paths[editorPid] = "/usr/bin/editor";
        platform.windows.paths[menuBarPid] = "/opt/brisko/brisko-mac-menubar";
        platform.capture.mainDisplay = 5;
        platform.capture.pixelSizes[5] = {2880, 1800};
        platform.capture.content.content = platform::ShareableContent{
            {{4, 800, 600}, {5, 1440, 900}}, {{editorPid, "org.example.editor"}, {panelPid, "com.brisko.desktop"}}};
    }

    int run() { return platform.run({"capture-stream"}); }
    fake::FakeStreamLog& stream() { return platform.capture.streams.back(); }
    // A step that hands the stream a frame and returns what happened meanwhile.
    void deliver(const testing::BgraImage& image, platform::FrameStatus status = 0, Wake then = Wake::timedOut) {
        platform.sessionLoop.steps.push_back([this, &image, status, then] {
            stream().output->didOutputFrame(image.view(), status);
            return then;
        });
    }
    void then(std::function<void()> action, Wake wake = Wake::timedOut) {
        platform.sessionLoop.steps.push_back([action = std::move(action), wake] {
            action();
            return wake;
        });
    }
    // The records after the preamble, read back by the reference decoder.
    std::vector<decode::FrameRecord> records(decode::CaptureStreamDecoder& decoder) {
        std::istringstream in(platform.streams.out());
        std::vector<decode::FrameRecord> all;
        decode::decodeCaptureStream(in, decoder, [&](const decode::FrameRecord& r) { all.push_back(r); });
        return all;
    }
    std::vector<std::vector<std::int32_t>> updates() {
        std::vector<std::vector<std::int32_t>> pids;
        for (const auto& filter : stream().updates) pids.push_back(filter.excludedPids);
        return pids;
    }

    fake::FakePlatform platform;
};

TEST_F(CaptureSession, FailuresToStartComeAfterThePreamble) {
    struct Case {
        std::string name;
        std::function<void(fake::FakePlatform&)> arrange;
        std::string message;
    };
    const std::string listFailure = "ScreenCaptureKit could not list displays ({}). Is Screen Recording granted in "
                                    "System Settings \u2192 Privacy & Security \u2192 Screen Recording?";
    const auto listing = [&](const std::string& reason) {
        std::string text = listFailure;
        return text.replace(text.find("{}"), 2, reason);
    };
    const std::vector<Case> cases = {
        {"no content", [](auto& p) { p.capture.content = {std::nullopt, "cannot connect to X display :7"}; },
         listing("cannot connect to X display :7")},
        {"no content, no reason", [](auto& p) { p.capture.content = {std::nullopt, std::nullopt}; },
         listing("unknown error")},
        {"no display", [](auto& p) { p.capture.content.content->displays.clear(); },
         "ScreenCaptureKit reported no displays to capture"},
        {"output refused", [](auto& p) { p.capture.outputError = "no room"; },
         "ScreenCaptureKit refused the stream output: no room"},
        {"start refused", [](auto& p) { p.capture.startError = "BadMatch"; },
         "ScreenCaptureKit could not start capturing: BadMatch"},
    };
    for (const Case& c : cases) {
        fake::FakePlatform fresh;
        fresh.capture.content.content = platform.capture.content.content;
        c.arrange(fresh);
        EXPECT_EQ(fresh.run({"capture-stream"}), 2) << c.name;
        EXPECT_EQ(fresh.streams.out(), preamble) << c.name;
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: " + c.message + "\n") << c.name;
        EXPECT_TRUE(fresh.signals.brokenPipeIgnored) << c.name;
    }
}

TEST_F(CaptureSession, StreamsTheMainDisplayInPointsWithTheHostLeftOut) {
    EXPECT_EQ(run(), 0);
    ASSERT_EQ(platform.capture.streams.size(), 1u);
    const fake::FakeStreamLog& log = stream();
    EXPECT_TRUE(log.started);
    EXPECT_EQ(log.filter.display.displayID, 5u);
    EXPECT_EQ(log.filter.excludedPids, (std::vector<std::int32_t>{panelPid}));
    EXPECT_EQ(log.configuration.size.width, 1440);
    EXPECT_EQ(log.configuration.size.height, 900);
    EXPECT_DOUBLE_EQ(log.configuration.minimumFrameIntervalSeconds, 1.0 / 15.0);
    EXPECT_TRUE(log.configuration.showsCursor);
    EXPECT_TRUE(platform.sessionLoop.opened);
}

TEST_F(CaptureSession, CompleteFramesBecomeRecordsUntilTheInputEnds) {
    const testing::BgraImage first = testing::noiseImage(160, 100, 1);
    const testing::BgraImage idle = testing::noiseImage(160, 100, 2);
    testing::BgraImage second = first;
    testing::touchTiles(second, 5, 3);
    deliver(first);
    deliver(idle, 1);  // not complete: ignored
    deliver(first);    // unchanged: nothing written
    deliver(second);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(platform.streams.err(), "");
    decode::CaptureStreamDecoder decoder;
    const auto written = records(decoder);
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(written[0].tiles.size(), 1u);
    EXPECT_EQ(decoder.picture(), testing::rgbaOf(second));
}

TEST_F(CaptureSession, EndsWithZeroOnTerminationAndOnAFailedWrite) {
    const testing::BgraImage frame = testing::noiseImage(64, 64, 1);
    platform.sessionLoop.idle(1);
    then([] {}, Wake::terminateRequested);
    platform.sessionLoop.idle(3);  // never reached
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(platform.sessionLoop.steps.size(), 3u);

    fake::FakePlatform broken;
    broken.capture.content = platform.capture.content;
    broken.sessionLoop.steps.push_back([&] {
        broken.streams.failWrites = true;
        broken.capture.streams.back().output->didOutputFrame(frame.view(), 0);
        return Wake::timedOut;
    });
    broken.sessionLoop.idle(3);
    EXPECT_EQ(broken.run({"capture-stream"}), 0);
    EXPECT_EQ(broken.streams.err(), "");
    EXPECT_EQ(broken.sessionLoop.steps.size(), 3u);  // ended at the next wait
}

TEST_F(CaptureSession, AStreamThatStopsEndsTheSessionWithItsError) {
    then([this] { stream().output->didStopWithError("the display went away"); });
    then([this] { stream().output->didStopWithError("a second stop is not reported"); });
    platform.sessionLoop.idle(2);
    EXPECT_EQ(run(), 2);
    EXPECT_EQ(platform.streams.out(), preamble);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: ScreenCaptureKit stopped the stream: the display went away\n");
}

TEST_F(CaptureSession, ExclusionIsReplacedOnlyWhenTheHostPidsChange) {
    auto& applications = platform.capture.content.content->applications;
    const auto tick = [&](std::function<void()> change) {
        then(std::move(change));  // lets the time run out to the next tick, changing the host's processes first
    };
    tick([] {});                                                                 // same pids
    tick([&] { applications.push_back({menuBarPid, ""}); });                     // a host process starts
    tick([&] { applications.push_back({menuBarPid, ""}); });                     // listed twice: [611, 611, 902]
    tick([&] { applications.erase(applications.begin() + 1); });                 // the panel ends
    tick([&] { platform.capture.content = {std::nullopt, "gone"}; });            // no content: skipped
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(updates(), (std::vector<std::vector<std::int32_t>>{
                             {menuBarPid, panelPid}, {menuBarPid, menuBarPid, panelPid}, {menuBarPid, menuBarPid}}));
    EXPECT_EQ(stream().updates.front().display.displayID, 5u);
    EXPECT_EQ(platform.streams.err(), "");
}

TEST_F(CaptureSession, RefreshKeepsItsPeriodAndSkipsAMissingDisplay) {
    auto& content = platform.capture.content.content;
    then([&] { content->displays = {{4, 800, 600}}; });                               // display 5 gone
    then([&] { content->applications.push_back({menuBarPid, ""}); });                // still gone: skipped
    then([&] { platform.clock.advanceMs(500); }, Wake::posted);                      // an early wake, no end asked
    then([&] { content->displays.push_back({5, 1440, 900}); });                      // back: one update
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(updates(), (std::vector<std::vector<std::int32_t>>{{menuBarPid, panelPid}}));
    EXPECT_EQ(platform.sessionLoop.timeouts, (std::vector<double>{2000, 2000, 2000, 1500, 2000}));
    EXPECT_EQ(platform.capture.contentQueries, 4);  // the start and three ticks
}

TEST_F(CaptureSession, AFailedUpdateWarnsAndKeepsTheNewList) {
    platform.capture.updateError = "BadWindow";
    then([&] { platform.capture.content.content->applications.push_back({menuBarPid, ""}); });
    platform.sessionLoop.idle(1);
    const testing::BgraImage frame = testing::noiseImage(64, 64, 1);
    deliver(frame);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(updates().size(), 1u);
    EXPECT_EQ(platform.streams.err(),
              "brisko-mac-input: capture-stream: could not re-exclude Brisko's windows: BadWindow\n");
    decode::CaptureStreamDecoder decoder;
    EXPECT_EQ(records(decoder).size(), 1u);  // the stream went on
}

}  // namespace
}  // namespace brisko
