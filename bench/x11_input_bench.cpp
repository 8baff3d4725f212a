// Input on a real X server (a private Xvfb): how soon the events of a one-shot process arrive,
// counted from the moment the process is started, and how many events per second input-stream
// delivers; the same actions through xdotool for comparison. An X client of the benchmark's own
// covers the screen and timestamps the events as they reach it.
#include <benchmark/benchmark.h>

#include <poll.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "backends/backend.h"
#include "support/process.h"
#include "support/x_servers.h"

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double, std::milli>(end - start).count();
}

// A full-screen window on a private display that notes when each pointer event reaches it.
class Observer {
public:
    Observer() {
        ::setenv("DISPLAY", display_.name().c_str(), 1);
        connection_ = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(connection_)) throw std::runtime_error("cannot open the display");
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {1, XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_BUTTON_PRESS |
                                               XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_EXPOSURE};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, screen->width_in_pixels,
                          screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(connection_, window);
        xcb_flush(connection_);
        waitFor(XCB_EXPOSE);
    }
    ~Observer() { xcb_disconnect(connection_); }

    // The time the next event of the type arrives (a button event of that button); absent when
    // none comes within a few seconds.
    std::optional<Clock::time_point> waitFor(std::uint8_t type, std::uint8_t detail = 0) {
        const auto deadline = Clock::now() + std::chrono::seconds(5);
        for (;;) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
                const auto now = Clock::now();
                const bool match = (event->response_type & 0x7F) == type &&
                                   (detail == 0 || reinterpret_cast<xcb_button_press_event_t*>(event)->detail == detail);
                std::free(event);
                if (match) return now;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) return std::nullopt;
            pollfd fd{xcb_get_file_descriptor(connection_), POLLIN, 0};
            ::poll(&fd, 1, static_cast<int>(left));
        }
    }
    // Forgets the events that arrived so far.
    void drain() {
        std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) std::free(event);
    }

private:
    brisko::testing::XvfbDisplay display_;
    xcb_connection_t* connection_ = nullptr;
};

Observer& observer() {
    static Observer instance;
    return instance;
}

std::unique_ptr<brisko::testing::Process> launch(const std::vector<std::string>& args) {
    return std::make_unique<brisko::testing::Process>(args[0], std::vector<std::string>(args.begin() + 1, args.end()),
                                                      brisko::testing::Environment{},
                                                      brisko::testing::Streams::pipedOwnErr);
}

// One process that moves and clicks: the time to its first event (the motion) and to its last
// (the release). Iterations alternate between two points so that every move is a real motion.
void measureOneShotClick(benchmark::State& state, const std::vector<std::string>& (*command)(int x)) {
    Observer& screen = observer();
    double firstMs = 0;
    int i = 0;
    for (auto _ : state) {
        screen.drain();
        const int x = 200 + 10 * (i++ % 2);
        const auto start = Clock::now();
        const auto process = launch(command(x));
        const auto first = screen.waitFor(XCB_MOTION_NOTIFY);
        const auto last = screen.waitFor(XCB_BUTTON_RELEASE, 1);
        if (process->wait() != 0 || !first || !last) {
            state.SkipWithError("the click did not arrive");
            return;
        }
        firstMs += msSince(start, *first);
        state.SetIterationTime(std::chrono::duration<double>(*last - start).count());
    }
    state.counters["first_event_ms"] = benchmark::Counter(firstMs, benchmark::Counter::kAvgIterations);
}

const std::vector<std::string>& briskoClick(int x) {
    static std::vector<std::string> args;
    args = {brisko::testing::programPath(), "click", std::to_string(x), "300"};
    return args;
}

const std::vector<std::string>& xdotoolClick(int x) {
    static std::vector<std::string> args;
    args = {"xdotool", "mousemove", std::to_string(x), "300", "click", "1"};
    return args;
}

void BM_OneShotClick(benchmark::State& state) { measureOneShotClick(state, briskoClick); }
void BM_OneShotClickXdotool(benchmark::State& state) { measureOneShotClick(state, xdotoolClick); }
BENCHMARK(BM_OneShotClick)->Iterations(40)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneShotClickXdotool)->Iterations(40)->UseManualTime()->Unit(benchmark::kMillisecond);

// Moves fed to one long-running process on its standard input: the time from the first line
// written to the last motion delivered.
constexpr int streamMoves = 2000;

void measureStream(benchmark::State& state, const std::vector<std::string>& args,
                   std::string (*line)(int x, int y)) {
    Observer& screen = observer();
    std::string input;
    for (int i = 0; i < streamMoves; ++i) input += line(100 + i % 500, 100 + (i / 500) % 400);
    for (auto _ : state) {
        screen.drain();
        const auto process = launch(args);
        const auto begin = Clock::now();
        process->write(input);
        process->closeInput();
        std::optional<Clock::time_point> last;
        int seen = 0;
        while (auto at = screen.waitFor(XCB_MOTION_NOTIFY)) {
            last = at;
            if (++seen == streamMoves) break;
        }
        process->finish();
        if (seen != streamMoves || !last) {
            state.SkipWithError(("only " + std::to_string(seen) + " moves arrived").c_str());
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(*last - begin).count());
    }
    state.counters["events_per_s"] =
        benchmark::Counter(static_cast<double>(streamMoves) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
}

std::string rawMove(int x, int y) { return "mousemove " + std::to_string(x) + " " + std::to_string(y) + "\n"; }
std::string xdotoolMove(int x, int y) { return "mousemove " + std::to_string(x) + " " + std::to_string(y) + "\n"; }

void BM_InputStreamMoves(benchmark::State& state) {
    measureStream(state, {brisko::testing::programPath(), "input-stream"}, rawMove);
}
void BM_XdotoolScriptMoves(benchmark::State& state) { measureStream(state, {"xdotool", "-"}, xdotoolMove); }
BENCHMARK(BM_InputStreamMoves)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XdotoolScriptMoves)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

// The backend alone, in this process: connecting and posting the first event.
void BM_BackendFirstEvent(benchmark::State& state) {
    Observer& screen = observer();
    int i = 0;
    for (auto _ : state) {
        screen.drain();
        const auto start = Clock::now();
        const auto backend = brisko::platform::makeBackend();
        brisko::platform::InputEvent move;
        move.type = brisko::platform::event_type::mouseMoved;
        move.point = {200.0 + 10 * (i++ % 2), 300};
        const bool posted = backend->services().events.post(move);
        const auto arrived = screen.waitFor(XCB_MOTION_NOTIFY);
        if (!posted || !arrived) {
            state.SkipWithError("the move did not arrive");
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(*arrived - start).count());
    }
}
BENCHMARK(BM_BackendFirstEvent)->Iterations(100)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The backend alone, connected: moves posted back to back, each one handled by the server before
// post returns.
void BM_BackendMoves(benchmark::State& state) {
    Observer& screen = observer();
    const auto backend = brisko::platform::makeBackend();
    brisko::platform::InputEvent move;
    move.type = brisko::platform::event_type::mouseMoved;
    int i = 0;
    for (auto _ : state) {
        move.point = {100.0 + i % 500, 100.0 + (i / 500) % 400};
        ++i;
        if (!backend->services().events.post(move)) {
            state.SkipWithError("the move was not posted");
            return;
        }
    }
    screen.drain();
    state.counters["events_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_BackendMoves)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
