// What runs on several threads, in-process over the fake (also run under ThreadSanitizer): the
// whole input-stream command with its reader and player, the capture encoder's lanes, and the
// capture session fed from the stream's thread.
#include <gtest/gtest.h>

#include <future>
#include <semaphore>
#include <thread>

#include "capture/capture_stream_output.h"
#include "capture/record_gate.h"
#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "support/capture_records.h"
#include "support/fed_input.h"
#include "support/journal_text.h"

namespace brisko {
namespace {

using namespace std::chrono_literals;
using testing::eventText;
using Texts = std::vector<std::string>;
using Wake = platform::SessionLoop::Wake;

const std::string banner = "brisko-mac-input input-stream v2\n";

// The input-stream command with its reader on a thread of the test and its player on its own,
// over the fake platform with a clock in real time.
class InputStreamThreads : public ::testing::Test {
protected:
    InputStreamThreads() {
        platform.clock.realTime = true;
        platform.streams.input.std::istream::rdbuf(&input);
        status = std::async(std::launch::async, [this] { return platform.run({"input-stream"}); });
    }
    ~InputStreamThreads() override { finish(); }
    int finish() {
        input.close();
        return status.valid() ? status.get() : -1;
    }

    fake::FakePlatform platform;
    testing::FedInput input;
    std::future<int> status;
};

TEST_F(InputStreamThreads, WorkRunsInArrivalOrderAndEndOfInputCancelsAPlayingBlockReleasingWhatItPressed) {
    input.feed("play a 30 1\n0 keydown 4 none\nkeyup 4 none\nplay b 0 0\nhello\n"
               "play c 600000 3\n0 keydown 55 cmd\n0 mousedown 10 20 left\n500000 keyup 55 none\n");
    ASSERT_TRUE(platform.journal.awaitEvents(4));
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a ok 0\nplayed b ok 0\nplayed c cancelled 0\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"keydown 4", "keyup 4", "flags 55 cmd", "leftdown 10,20 #1 cmd",
                                                  "leftup 10,20 #1 cmd", "flags 55"}));
    EXPECT_EQ(processState().postPacingMicroseconds, 0u);
}

TEST_F(InputStreamThreads, AStopEndsAPlayingOrQueuedBlockAtOnceButNotFromInsideABody) {
    input.feed("play a 600000 1\n0 keydown 4 none\nplay b 100 1\n0 keydown 5 none\nstop b\nplay c 600000 1\nstop a\n");
    ASSERT_TRUE(platform.journal.awaitEvents(1));
    input.awaitReaderWaiting();
    EXPECT_FALSE(processState().playControl.isStopped("a")) << "taken as a stop from inside c's body";
    EXPECT_EQ(platform.streams.out(), banner);
    input.feed("stop a\n");
    ASSERT_TRUE(platform.streams.awaitOut("played c refused"));
    input.feed("stop a\n");  // a finished block is no longer active
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a cancelled 0\nplayed b cancelled 0\n"
                                               "played c refused line 1: expected a non-negative integer t, got 'stop a'\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"keydown 4", "keyup 4"}));
    // The refusal is written before its answer, so before the second stop.
    EXPECT_EQ(platform.streams.err(),
              "brisko-mac-input: play: refused c: line 1: expected a non-negative integer t, got 'stop a'\n"
              "brisko-mac-input: input-stream: nothing to stop for line 'stop a'\n");
}

TEST_F(InputStreamThreads, APlatformFailureOnThePlayerEndsTheStreamWithStatusTwo) {
    platform.events.failFrom = 1;
    input.feed("keydown 4 none\nkeydown 5 none\nkeydown 6 none\n");
    EXPECT_EQ(finish(), 2);
    EXPECT_EQ(platform.streams.out(), banner);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: failed to create CGEvent\n");
    EXPECT_EQ(platform.streams.immediateExits, 1) << "no static destructors while the reader runs";
    EXPECT_EQ(eventText(platform.journal), Texts{"keydown 4"});
}

TEST(CaptureStreamOutputLanes, EveryLaneCountWritesTheSameBytes) {
    fake::FakePlatform platform;
    std::vector<testing::BgraImage> frames = {testing::noiseImage(720, 450, 1, 64), testing::noiseImage(720, 450, 2, 64)};
    frames.push_back(frames.back());
    for (std::int64_t tile = 3; tile < 12 * 8; tile += 7) {  // every 7th tile of the 12 x 8 grid
        frames.back().pixel(tile % 12 * 64, tile / 12 * 64)[1] ^= 0x40;
    }
    frames.push_back(frames.back());  // idle: nothing written
    frames.push_back(testing::noiseImage(640, 400, 4));
    std::vector<std::vector<std::string>> streams;
    for (const std::size_t lanes : {1u, 2u, 4u}) {
        testing::RecordReader reader;
        CaptureStreamOutput output([&](std::string_view record) { return reader.keep(record); }, lanes);
        for (const testing::BgraImage& frame : frames) {
            output.encodeFrame(frame.view(), 0);
            reader.readNew();
            EXPECT_EQ(reader.decoder().picture(), testing::rgbaOf(frame)) << lanes << " lanes";
        }
        streams.push_back(reader.records());
    }
    EXPECT_EQ(streams, std::vector(3, streams[0])) << "1, 2 and 4 lanes";
}

// Standard output whose one write waits until the reader takes it, or never when the reader is gone.
TEST(RecordGate, ClosingWaitsForTheRecordOnItsWayOutButNotForAReaderThatStoppedReading) {
    for (const bool readerGone : {false, true}) {
        fake::FakeStreams streams;
        std::binary_semaphore writing{0}, read{0};
        streams.beforeWrite = [&] {
            writing.release();
            read.acquire();
        };
        RecordGate gate(streams);
        std::thread writer([&] { EXPECT_TRUE(gate.write("a whole record")); });
        writing.acquire();
        std::thread reader([&] {
            std::this_thread::sleep_for(50ms);  // a slow reader, not a gone one
            if (!readerGone) read.release();
        });
        const auto start = std::chrono::steady_clock::now();
        gate.close(readerGone ? 30ms : 10s);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        EXPECT_EQ(streams.out(), readerGone ? "" : "a whole record");
        reader.join();
        if (readerGone) read.release();
        writer.join();
        EXPECT_TRUE(gate.write("after the end"));
        EXPECT_EQ(streams.out(), "a whole record");
    }
}

TEST(CaptureSessionThreads, FramesFromTheStreamThreadWhileTheMainThreadRefreshes) {
    fake::FakePlatform platform;
    platform.windows.paths[611] = "/opt/brisko/brisko-mac-menubar";
    platform.capture.content.content = platform::ShareableContent{{{1, 256, 192}}, {{300, "org.example.editor"}}};
    std::vector<testing::BgraImage> frames;
    for (std::uint32_t i = 0; i < 12; ++i) frames.push_back(testing::noiseImage(256, 192, i % 3));
    std::thread source;
    auto& steps = platform.sessionLoop.steps;
    steps.push_back([&] {
        platform::FrameStreamOutput* output = platform.capture.streams.back().output;
        source = std::thread([&frames, output] {
            for (const auto& frame : frames) output->didOutputFrame(frame.view(), 0);
        });
        return Wake::timedOut;
    });
    for (int tick = 0; tick < 6; ++tick) {
        steps.push_back([&, tick] {
            auto& apps = platform.capture.content.content->applications;
            if (tick % 2 == 0) apps.push_back({611, ""});
            else apps.pop_back();
            return Wake::timedOut;
        });
    }
    steps.push_back([&] {
        source.join();
        return Wake::inputEnded;
    });
    EXPECT_EQ(platform.run({"capture-stream"}), 0);
    EXPECT_EQ(testing::decodeStream(platform.streams.out()),
              std::pair(std::size_t{12}, testing::rgbaOf(frames.back())));
}

}  // namespace
}  // namespace brisko
