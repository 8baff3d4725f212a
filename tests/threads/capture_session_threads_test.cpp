#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <sstream>
#include <thread>

#include "capture/record_gate.h"
#include "fake/fake_platform.h"
#include "support/capture_records.h"

namespace brisko {
namespace {

using namespace std::chrono_literals;
using Wake = platform::SessionLoop::Wake;

// Standard output whose writes hang until released, as a pipe whose reader is slow.
class HeldStreams final : public platform::ProcessStreams {
public:
    bool writeOut(std::string_view bytes) override {
        std::unique_lock guard(lock_);
        ++writers_;
        changed_.notify_all();
        changed_.wait(guard, [this] { return released_; });
        out_.append(bytes);
        return true;
    }
    bool writeErr(std::string_view) override { return true; }
    std::ostream& bufferedOut() override { return buffered_; }
    std::istream& in() override { return in_; }
    [[noreturn]] void exit(int status) override { throw fake::ProcessExit{status}; }
    [[noreturn]] void exitImmediately(int status) override { throw fake::ProcessExit{status}; }

    void awaitWriter() {
        std::unique_lock guard(lock_);
        changed_.wait(guard, [this] { return writers_ > 0; });
    }
    void release() {
        const std::lock_guard guard(lock_);
        released_ = true;
        changed_.notify_all();
    }
    std::string out() {
        const std::lock_guard guard(lock_);
        return out_;
    }

private:
    std::mutex lock_;
    std::condition_variable changed_;
    int writers_ = 0;
    bool released_ = false;
    std::string out_;
    std::ostringstream buffered_;
    std::istringstream in_;
};

TEST(RecordGate, ClosingWaitsForTheRecordOnItsWayOut) {
    HeldStreams streams;
    RecordGate gate(streams);
    std::thread writer([&] { EXPECT_TRUE(gate.write("a whole record")); });
    streams.awaitWriter();
    std::thread reader([&] {
        std::this_thread::sleep_for(50ms);
        streams.release();
    });
    gate.close(10s);
    EXPECT_EQ(streams.out(), "a whole record");
    EXPECT_TRUE(gate.write("after the end"));
    EXPECT_EQ(streams.out(), "a whole record");
    writer.join();
    reader.join();
}

TEST(RecordGate, AReaderThatStoppedReadingDoesNotHoldTheEndBack) {
    HeldStreams streams;
    RecordGate gate(streams);
    std::thread writer([&] { gate.write("stuck"); });
    streams.awaitWriter();
    const auto start = std::chrono::steady_clock::now();
    gate.close(30ms);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    streams.release();
    writer.join();
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
    EXPECT_EQ(platform.capture.streams.back().updates.size(), 6u);

    std::istringstream in(platform.streams.out());
    decode::CaptureStreamDecoder decoder;
    int records = 0;
    decode::decodeCaptureStream(in, decoder, [&](const decode::FrameRecord&) { ++records; });
    EXPECT_EQ(records, 12);
    EXPECT_EQ(decoder.picture(), testing::rgbaOf(frames.back()));
}

}  // namespace
}  // namespace brisko
