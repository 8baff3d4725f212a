// capture-stream's session in-process over the X backend, so that the filter the session hands
// the stream can be watched while host processes come and go.
#include <chrono>
#include <functional>
#include <mutex>
#include <sstream>
#include <thread>

#include "capture/capture_commands.h"
#include "capture_stream_decoder.h"
#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "backends/posix/steady_clock.h"
#include "support/x11_display_test.h"

namespace brisko::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct FilterUpdate {
    Clock::time_point at;
    std::vector<std::int32_t> excludedPids;
};

// The backend's stream, with every filter replacement noted.
class NotedStream final : public platform::FrameStream {
public:
    NotedStream(std::unique_ptr<platform::FrameStream> inner, std::vector<FilterUpdate>& updates)
        : inner_(std::move(inner)), updates_(updates) {}
    std::optional<std::string> addOutput(platform::FrameStreamOutput& output) override {
        return inner_->addOutput(output);
    }
    std::optional<std::string> startCapture() override { return inner_->startCapture(); }
    std::optional<std::string> updateFilter(const platform::CaptureFilter& filter) override {
        updates_.push_back({Clock::now(), filter.excludedPids});
        return inner_->updateFilter(filter);
    }
    void stop() override { inner_->stop(); }

private:
    std::unique_ptr<platform::FrameStream> inner_;
    std::vector<FilterUpdate>& updates_;
};

class NotingCapture final : public platform::ScreenCapture {
public:
    explicit NotingCapture(platform::ScreenCapture& inner) : inner_(inner) {}
    platform::ShareableContentResult shareableContent() override { return inner_.shareableContent(); }
    std::uint32_t mainDisplayID() override { return inner_.mainDisplayID(); }
    std::optional<platform::PixelSize> displayPixelSize(std::uint32_t id) override {
        return inner_.displayPixelSize(id);
    }
    platform::CapturedImageResult captureImage(const platform::CaptureFilter& filter, platform::PixelSize size,
                                               bool cursor) override {
        return inner_.captureImage(filter, size, cursor);
    }
    std::unique_ptr<platform::FrameStream> makeFrameStream(
        const platform::CaptureFilter& filter, const platform::FrameStreamConfiguration& configuration) override {
        initial = filter.excludedPids;
        return std::make_unique<NotedStream>(inner_.makeFrameStream(filter, configuration), updates);
    }

    std::vector<std::int32_t> initial;
    std::vector<FilterUpdate> updates;

private:
    platform::ScreenCapture& inner_;
};

// A session loop on the real clock that does what the test planned at the planned moments and
// ends the input after the last.
class PlannedLoop final : public platform::SessionLoop {
public:
    void plan(std::chrono::milliseconds at, std::function<void()> action) { plan_.push_back({at, std::move(action)}); }
    void open() override { start_ = Clock::now(); }
    Wake wait(double timeoutMs) override {
        const auto deadline = Clock::now() + std::chrono::microseconds(static_cast<long long>(timeoutMs * 1000));
        if (next_ == plan_.size()) return Wake::inputEnded;
        const auto due = start_ + plan_[next_].first;
        std::this_thread::sleep_until(std::min(deadline, due));
        if (Clock::now() >= due) plan_[next_++].second();
        return Wake::timedOut;
    }
    void post() override {}

private:
    Clock::time_point start_;
    std::vector<std::pair<std::chrono::milliseconds, std::function<void()>>> plan_;
    std::size_t next_ = 0;
};

class X11CaptureSession : public X11DisplayTest {};

TEST_F(X11CaptureSession, AHostProcessEntersTheFilterAtTheNextRefreshAndLeavesItWhenItEnds) {
    const auto backend = platform::makeBackend();
    platform::Services& x = backend->services();
    NotingCapture capture(x.capture);
    platform::SteadyClock clock;
    fake::FakeStreams streams;
    fake::FakeSignals signals;
    PlannedLoop loop;
    platform::Services services{x.events, x.windows, capture, x.pasteboard, x.probe, clock, streams, signals, loop};
    startProcess(services);

    WindowClientProcess& app = startClient();
    app.map("a", "100 100 600 400 color=c08020");
    std::unique_ptr<WindowClientProcess> host;
    Clock::time_point hostMapped, hostEnded;
    std::int32_t hostPid = 0;
    loop.plan(300ms, [&] {
        host = std::make_unique<WindowClientProcess>(menubarClientPath(), display().name());
        host->map("panel", "200 200 200 100 color=2040ff");
        hostMapped = Clock::now();
        hostPid = host->pid();
    });
    loop.plan(3000ms, [&] {
        host.reset();  // the process ends, and its windows with it
        hostEnded = Clock::now();
    });
    loop.plan(5600ms, [] {});
    EXPECT_EQ(fake::exitStatusOf([] { runCaptureStream(); }), 0);
    EXPECT_EQ(streams.err(), "");

    EXPECT_EQ(capture.initial, std::vector<std::int32_t>{});
    ASSERT_EQ(capture.updates.size(), 2u);
    EXPECT_EQ(capture.updates[0].excludedPids, std::vector<std::int32_t>{hostPid});
    EXPECT_LE(capture.updates[0].at - hostMapped, 2500ms);
    EXPECT_EQ(capture.updates[1].excludedPids, std::vector<std::int32_t>{});
    EXPECT_LE(capture.updates[1].at - hostEnded, 2500ms);

    // The host's panel was seen at most until the first update; the stream ends showing the window.
    std::istringstream bytes(streams.out());
    decode::CaptureStreamDecoder decoder;
    decode::decodeCaptureStream(bytes, decoder, [](const decode::FrameRecord&) {});
    const auto& rgba = decoder.picture();
    const std::size_t centre = (250 * std::size_t{decoder.width()} + 300) * 4;
    EXPECT_EQ(rgba[centre], 0xc0);
    EXPECT_EQ(rgba[centre + 1], 0x80);
    EXPECT_EQ(rgba[centre + 2], 0x20);
}

}  // namespace
}  // namespace brisko::testing
