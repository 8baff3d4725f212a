#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "capture/capture_stream_output.h"
#include "capture/worker_pool.h"
#include "fake/fake_platform.h"
#include "support/capture_records.h"

namespace brisko {
namespace {

TEST(WorkerPool, RunsEveryJobOnceAndNeverTwoAtOnceOnALane) {
    constexpr std::size_t lanes = 3;
    WorkerPool pool(lanes);
    ASSERT_EQ(pool.lanes(), lanes);
    for (const std::size_t jobs : {0u, 1u, 2u, 7u, 1000u, 3u, 1000u}) {
        std::vector<std::atomic<int>> runs(jobs);
        std::array<std::atomic<bool>, lanes> busy{};
        std::atomic<bool> overlapped{false}, badLane{false};
        pool.run(jobs, [&](std::size_t lane, std::size_t job) {
            if (lane >= lanes) {
                badLane = true;
                return;
            }
            if (busy[lane].exchange(true)) overlapped = true;
            runs[job].fetch_add(1);
            busy[lane] = false;
        });
        for (std::size_t job = 0; job < jobs; ++job) EXPECT_EQ(runs[job].load(), 1) << "job " << job << " of " << jobs;
        EXPECT_FALSE(overlapped);
        EXPECT_FALSE(badLane);
    }
}

TEST(WorkerPool, ResultsWrittenByTheLanesAreSeenByTheCaller) {
    WorkerPool pool(4);
    std::vector<std::size_t> squares(5000);  // plain memory: run must publish it
    for (int round = 0; round < 20; ++round) {
        pool.run(squares.size(), [&](std::size_t, std::size_t job) { squares[job] = job * job + round; });
        for (std::size_t job = 0; job < squares.size(); job += 499) ASSERT_EQ(squares[job], job * job + round);
    }
}

// Frames a session brings: a first frame, a window switch (every tile), typing (a few tiles),
// idle, a resolution change and a photo-like picture that hardly compresses.
std::vector<testing::BgraImage> sessionFrames() {
    std::vector<testing::BgraImage> frames;
    frames.push_back(testing::noiseImage(720, 450, 1, 64));
    frames.push_back(testing::noiseImage(720, 450, 2, 64));
    frames.push_back(frames.back());
    testing::touchTiles(frames.back(), 5, 3);
    frames.push_back(frames.back());
    frames.push_back(testing::noiseImage(640, 400, 4, 0));
    frames.push_back(testing::noiseImage(640, 400, 5));
    frames.push_back(frames[4]);
    return frames;
}

TEST(CaptureStreamOutputLanes, EveryLaneCountWritesTheSameBytes) {
    fake::FakePlatform platform;
    const std::vector<testing::BgraImage> frames = sessionFrames();
    for (const int level : {1, 6}) {
        std::vector<std::vector<std::string>> streams;
        for (const std::size_t lanes : {1u, 2u, 4u}) {
            testing::RecordReader reader;
            CaptureStreamOutput output([&](std::string_view record) { return reader.keep(record); }, lanes,
                                       [level] { return makeRawDeflater(level); });
            for (const testing::BgraImage& frame : frames) {
                output.encodeFrame(frame.view(), 0);
                reader.readNew();
                EXPECT_EQ(reader.decoder().picture(), testing::rgbaOf(frame)) << lanes << " lanes";
            }
            streams.push_back(reader.records());
        }
        ASSERT_EQ(streams[0].size(), 6u);  // the idle frame writes nothing
        EXPECT_EQ(streams[1], streams[0]) << "2 lanes, level " << level;
        EXPECT_EQ(streams[2], streams[0]) << "4 lanes, level " << level;
    }
}

}  // namespace
}  // namespace brisko
