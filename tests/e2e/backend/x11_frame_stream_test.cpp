#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "backend/x11_server_fixture.h"
#include "support/test_window.h"

namespace brisko::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Keeps when each frame came and the colour of one pixel in it.
class FrameLog final : public platform::FrameStreamOutput {
public:
    explicit FrameLog(int probeX = 0, int probeY = 0) : probeX_(probeX), probeY_(probeY) {}

    bool didOutputFrame(const platform::BgraFrameView& frame, platform::FrameStatus status) override {
        const std::uint8_t* p = frame.base + probeY_ * frame.bytesPerRow + probeX_ * 4;
        const std::lock_guard guard(lock_);
        times.push_back(Clock::now());
        colors.push_back((std::uint32_t{p[2]} << 16) | (std::uint32_t{p[1]} << 8) | p[0]);
        complete = complete && status == 0;
        arrived_.notify_all();
        return true;
    }
    void didStopWithError(const std::string& error) override {
        const std::lock_guard guard(lock_);
        stopped = error;
    }

    // Waits for the frame with this index (from 0); false after the timeout.
    bool awaitFrame(std::size_t index, std::chrono::milliseconds timeout = 5s) {
        std::unique_lock guard(lock_);
        return arrived_.wait_for(guard, timeout, [&] { return times.size() > index; });
    }
    std::size_t count() {
        const std::lock_guard guard(lock_);
        return times.size();
    }
    std::uint32_t lastColor() {
        const std::lock_guard guard(lock_);
        return colors.back();
    }

    std::vector<Clock::time_point> times;
    std::vector<std::uint32_t> colors;
    bool complete = true;
    std::optional<std::string> stopped;

private:
    const int probeX_;
    const int probeY_;
    std::mutex lock_;
    std::condition_variable arrived_;
};

class X11FrameStreamTest : public X11Server {
protected:
    // A connection for the whole suite: a server whose last client leaves starts afresh and
    // refuses connections meanwhile, which the next test's would meet.
    static void SetUpTestSuite() {
        X11Server::SetUpTestSuite();
        keeper = xcb_connect(display().name().c_str(), nullptr);
    }
    static void TearDownTestSuite() {
        xcb_disconnect(keeper);
        X11Server::TearDownTestSuite();
    }
    static inline xcb_connection_t* keeper = nullptr;

    std::unique_ptr<platform::FrameStream> start(FrameLog& log, bool cursor) {
        const auto content = capture.shareableContent();
        EXPECT_TRUE(content.content);
        const platform::CaptureDisplay display = content.content->displays.front();
        auto stream = capture.makeFrameStream({display, {}},
                                              {{display.width, display.height}, 1.0 / 15.0, cursor, 3});
        EXPECT_EQ(stream->addOutput(log), std::nullopt);
        EXPECT_EQ(stream->startCapture(), std::nullopt);
        return stream;
    }
    void warpPointer(int x, int y) {
        xcb_warp_pointer(own, XCB_NONE, screen->root, 0, 0, 0, 0, static_cast<std::int16_t>(x),
                         static_cast<std::int16_t>(y));
        std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));
    }
};

TEST_F(X11FrameStreamTest, AStillScreenGivesNoFrames) {
    startClient().map("a", "100 100 200 200 color=336699");
    FrameLog log(150, 150);
    const auto stream = start(log, true);
    ASSERT_TRUE(log.awaitFrame(0));
    EXPECT_EQ(log.lastColor(), 0x336699u);
    // Redirecting the windows has the server draw them once more, which counts as a change.
    std::this_thread::sleep_for(300ms);
    const std::size_t settled = log.count();
    EXPECT_LE(settled, 2u);
    std::this_thread::sleep_for(1s);
    EXPECT_EQ(log.count(), settled);

    warpPointer(700, 500);  // a moved pointer is a change of the picture
    EXPECT_TRUE(log.awaitFrame(settled, 1s));
    stream->stop();
    EXPECT_TRUE(log.complete);
    EXPECT_EQ(log.stopped, std::nullopt);
}

TEST_F(X11FrameStreamTest, ContinuousChangeIsTakenAtMostFifteenTimesASecond) {
    WindowClientProcess& client = startClient();
    const xcb_window_t busy = client.map("busy", "0 0 400 400 color=000000");
    FrameLog log(10, 10);
    const auto stream = start(log, false);
    ASSERT_TRUE(log.awaitFrame(0));
    // Another connection repaints the window as fast as the server takes it.
    xcb_connection_t* painter = xcb_connect(display().name().c_str(), nullptr);
    const auto begin = Clock::now();
    for (std::uint32_t color = 1; Clock::now() - begin < 1200ms; ++color) {
        paintTestWindow(painter, busy, color);
        std::free(xcb_get_input_focus_reply(painter, xcb_get_input_focus(painter), nullptr));
    }
    xcb_disconnect(painter);
    stream->stop();
    const auto& times = log.times;
    std::size_t inWindow = 0;
    for (std::size_t i = 1; i < times.size(); ++i) {
        if (times[i] <= begin + 1200ms) ++inWindow;
        // Frames are taken an interval (67 ms) apart; their delivery varies by the time each
        // takes to read.
        EXPECT_GE(times[i] - times[i - 1], 40ms) << "frame " << i;
    }
    EXPECT_GE(inWindow, 14u);
    EXPECT_LE(inWindow, 19u);
}

}  // namespace
}  // namespace brisko::testing
