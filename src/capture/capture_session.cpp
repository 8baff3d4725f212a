// capture-stream: the preamble, a frame stream of the capture display with the host's windows
// left out, and the main thread waiting for the end of input, a termination request, the end
// that the stream thread reports, or the next exclusion refresh.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <variant>

#include "capture/capture_commands.h"
#include "capture/capture_preamble.h"
#include "capture/capture_stream_output.h"
#include "capture/exclusion_refresh.h"
#include "capture/record_gate.h"
#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "ownui/capture_exclusion.h"

namespace brisko {
namespace {

// How long the end of the session waits for a record on its way out.
constexpr std::chrono::milliseconds recordDrainWait{1000};

struct Ending {
    int status = 0;
    std::string message;  // a diagnostic line's message; none when empty
};

bool peerHasEnded(platform::SessionLoop::Wake wake) {
    return wake == platform::SessionLoop::Wake::inputEnded || wake == platform::SessionLoop::Wake::terminateRequested;
}

// Ends the process without a partial record. The stream thread, the encoder's lanes and the
// start-up may still run, so nothing is torn down: the process ends at once. A failure that
// comes after the host has closed the input or asked the session to end is no failure of the
// session, which had already ended.
[[noreturn]] void endSession(RecordGate& gate, Ending ending) {
    if (ending.status != 0 && peerHasEnded(processState().services.sessionLoop.wait(0))) ending = {0, {}};
    gate.close(recordDrainWait);
    if (!ending.message.empty()) warn(ending.message);
    processState().services.streams.exitImmediately(ending.status);
    std::abort();  // not reached: the exit does not return
}

// How the stream thread asks the main thread to end the session; the first request stands.
class EndRequest {
public:
    explicit EndRequest(platform::SessionLoop& loop) : loop_(loop) {}

    void request(Ending ending) {
        {
            const std::lock_guard guard(lock_);
            if (ending_) return;
            ending_ = std::move(ending);
        }
        loop_.post();
    }
    std::optional<Ending> requested() {
        const std::lock_guard guard(lock_);
        return ending_;
    }

private:
    platform::SessionLoop& loop_;
    std::mutex lock_;
    std::optional<Ending> ending_;
};

// The stream's output: every frame goes to the encoder, whose records go out through the gate.
// Runs on the stream's delivery thread.
class SessionOutput final : public platform::FrameStreamOutput {
public:
    SessionOutput(RecordGate& gate, EndRequest& end)
        : end_(end), encoder_([&gate](std::string_view record) { return gate.write(record); }) {}

    bool didOutputFrame(const platform::BgraFrameView& frame, platform::FrameStatus status) override {
        if (readerGone_) return true;
        const FrameOutcome outcome = encoder_.encodeFrame(frame, status);
        if (outcome == FrameOutcome::writeFailed) {
            readerGone_ = true;
            end_.request({0, {}});
        }
        return outcome != FrameOutcome::ignored && outcome != FrameOutcome::unchanged;
    }
    void didStopWithError(const std::string& error) override {
        end_.request({2, "ScreenCaptureKit stopped the stream: " + error});
    }

private:
    EndRequest& end_;
    CaptureStreamOutput encoder_;
    bool readerGone_ = false;
};

struct StartedStream {
    std::unique_ptr<platform::FrameStream> stream;
    std::uint32_t displayID = 0;
    std::vector<std::int32_t> excluded;
};

// The started stream, or the message of the failure that kept it from starting.
using StartOutcome = std::variant<StartedStream, std::string>;

StartOutcome startStream(SessionOutput& output) {
    platform::ScreenCapture& capture = processState().services.capture;
    const platform::ShareableContentResult listed = capture.shareableContent();
    if (!listed.content) {
        return "ScreenCaptureKit could not list displays (" + listed.error.value_or("unknown error") +
               "). Is Screen Recording granted in System Settings \u2192 Privacy & Security \u2192 Screen Recording?";
    }
    const std::optional<platform::CaptureDisplay> display = mainSCDisplay(*listed.content);
    if (!display) return "ScreenCaptureKit reported no displays to capture";
    // Frames at the display's size in points; the pace and the cursor as the host expects them.
    const platform::FrameStreamConfiguration configuration{{display->width, display->height}, 1.0 / 15.0, true, 3};
    const platform::CaptureFilter filter = briskoExcludingFilter(*display, *listed.content);
    StartedStream started{capture.makeFrameStream(filter, configuration), display->displayID, filter.excludedPids};
    if (const auto error = started.stream->addOutput(output)) {
        return "ScreenCaptureKit refused the stream output: " + *error;
    }
    if (const auto error = started.stream->startCapture()) return "ScreenCaptureKit could not start capturing: " + *error;
    return started;
}

// The stream starts on a thread of its own, so that the main thread still acts on the end of the
// input and on termination requests while the start takes its time (a busy or grabbed display).
StartedStream startWhileListening(SessionOutput& output, EndRequest& end, RecordGate& gate) {
    platform::SessionLoop& loop = processState().services.sessionLoop;
    StartOutcome outcome;
    std::atomic<bool> started{false};
    std::thread starter([&] {
        outcome = startStream(output);
        started = true;
        loop.post();
    });
    for (;;) {
        if (peerHasEnded(loop.wait(std::numeric_limits<double>::infinity()))) endSession(gate, {0, {}});
        if (const std::optional<Ending> ending = end.requested()) endSession(gate, *ending);
        if (started) break;
    }
    starter.join();
    if (std::string* failure = std::get_if<std::string>(&outcome)) endSession(gate, {2, std::move(*failure)});
    return std::move(std::get<StartedStream>(outcome));
}

// The main thread from here on: the exclusion is refreshed on a fixed period until something
// ends the session.
[[noreturn]] void serveSession(ExclusionRefresh& refresh, EndRequest& end, RecordGate& gate) {
    ProcessState& state = processState();
    platform::Clock& clock = state.services.clock;
    platform::SessionLoop& loop = state.services.sessionLoop;
    const double periodMs = state.briskoExclusionRefreshSeconds * 1000.0;
    double nextTickMs = clock.monotonicMs() + periodMs;
    for (;;) {
        switch (loop.wait(nextTickMs - clock.monotonicMs())) {
            case platform::SessionLoop::Wake::inputEnded:
            case platform::SessionLoop::Wake::terminateRequested:
                endSession(gate, {0, {}});
            case platform::SessionLoop::Wake::posted:
                if (const std::optional<Ending> ending = end.requested()) endSession(gate, *ending);
                break;
            case platform::SessionLoop::Wake::timedOut: {
                const double nowMs = clock.monotonicMs();
                if (nowMs < nextTickMs) break;
                refresh.tick();
                // A late tick does not bring the following ones forward: they stay on the period.
                while (nextTickMs <= nowMs) nextTickMs += periodMs;
                break;
            }
        }
    }
}

}  // namespace

void runCaptureStream() {
    platform::Services& services = processState().services;
    services.signals.ignoreBrokenPipe();
    services.sessionLoop.open();
    // The preamble goes out before any display is looked up, so even a failed start has it.
    writeCaptureStreamPreamble();
    RecordGate gate(services.streams);
    EndRequest end(services.sessionLoop);
    SessionOutput output(gate, end);
    StartedStream started = startWhileListening(output, end, gate);
    ExclusionRefresh refresh(*started.stream, started.displayID, std::move(started.excluded));
    serveSession(refresh, end, gate);
}

}  // namespace brisko
