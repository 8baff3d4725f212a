// How punctually the player runs timed lines on the real clock, and how soon a stop is answered.
// Events go to a poster that only notes when each arrived.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <random>
#include <thread>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "backends/posix/steady_clock.h"
#include "play/player.h"

namespace {

using namespace brisko;

double nowMs() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

class TimedPoster final : public platform::EventPoster {
public:
    bool post(const platform::InputEvent&) override {
        const double at = nowMs();
        std::lock_guard guard(lock_);
        times_.push_back(at);
        return true;
    }
    std::vector<double> take() {
        std::lock_guard guard(lock_);
        return std::exchange(times_, {});
    }

private:
    std::mutex lock_;
    std::vector<double> times_;
};

// The fake platform, but with the timing poster and the real clock.
struct TimedPlatform {
    TimedPlatform() {
        startProcess(services);
        processState().postPacingMicroseconds = 0;
    }
    fake::FakePlatform fakes;
    TimedPoster poster;
    platform::SteadyClock clock;
    platform::Services services{poster,        fakes.windows, fakes.capture, fakes.pasteboard,   fakes.probe,
                                clock,         fakes.streams, fakes.signals, fakes.sessionLoop};
};

double percentile(std::vector<double> values, double p) {
    std::sort(values.begin(), values.end());
    const auto at = static_cast<std::size_t>(p * static_cast<double>(values.size() - 1) + 0.5);
    return values[at];
}

void report(benchmark::State& state, const std::string& what, const std::vector<double>& ms) {
    if (ms.empty()) {
        state.SkipWithError("nothing was measured: no line posted");
        return;
    }
    state.counters[what + "_p50_ms"] = percentile(ms, 0.50);
    state.counters[what + "_p99_ms"] = percentile(ms, 0.99);
    state.counters[what + "_max_ms"] = *std::max_element(ms.begin(), ms.end());
    state.counters["samples"] = static_cast<double>(ms.size());
}

// 60 lines at uneven offsets over about 400 ms: presses and releases of one key.
PlayBlock timedBlock() {
    std::vector<std::string> lines;
    std::int64_t t = 0;
    for (int i = 0; i < 60; ++i) {
        t += 1 + (i * 7) % 13;
        lines.push_back(std::to_string(t) + (i % 2 == 0 ? " keydown 4 none" : " keyup 4 none"));
    }
    return parsePlayBlock("timed", t + 3, lines);
}

void BM_LineLateness(benchmark::State& state) {
    TimedPlatform timed;
    const PlayBlock block = timedBlock();
    std::vector<double> lateness;
    for (auto _ : state) {
        const double start = nowMs();
        playBlock(block, [] { return false; });
        const std::vector<double> posted = timed.poster.take();
        for (std::size_t i = 0; i < posted.size(); ++i) {
            lateness.push_back(posted[i] - (start + static_cast<double>(block.lines[i].t)));
        }
    }
    report(state, "late", lateness);
}
BENCHMARK(BM_LineLateness)->Iterations(15)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StopToAnswer(benchmark::State& state) {
    TimedPlatform timed;
    const PlayBlock block = parsePlayBlock("long", 600000, {"0 keydown 55 cmd", "0 keydown 4 cmd"});
    PlayControl& control = processState().playControl;
    std::mt19937 random(7);
    std::uniform_int_distribution<int> delayUs(500, 20000);
    std::vector<double> answered;
    for (auto _ : state) {
        control.begin(block.id);
        double answeredAt = 0;
        std::thread player([&] {
            runBlock(block, [&] { return control.isStopped(block.id); });
            answeredAt = nowMs();
            control.finish(block.id);
        });
        std::this_thread::sleep_for(std::chrono::microseconds(delayUs(random)));
        const double stoppedAt = nowMs();
        control.requestStop(block.id);
        player.join();
        answered.push_back(answeredAt - stoppedAt);
        timed.poster.take();
    }
    report(state, "stop_to_answer", answered);
}
BENCHMARK(BM_StopToAnswer)->Iterations(300)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
