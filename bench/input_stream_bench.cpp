// Throughput of input-stream on single raw commands with pacing off: the whole command in-process
// (reader, player thread and queue) over the recording fake, which keeps every posted event.
#include <benchmark/benchmark.h>

#include <string>

#include "fake/fake_platform.h"

namespace {

constexpr int commandCount = 100000;

std::string moves() {
    std::string text;
    for (int i = 0; i < commandCount; ++i) {
        text += "mousemove " + std::to_string(i % 1440) + " " + std::to_string(i % 900) + "\n";
    }
    return text;
}

void BM_SingleCommands(benchmark::State& state) {
    const std::string input = moves();
    std::size_t lost = 0;
    for (auto _ : state) {
        brisko::fake::FakePlatform platform;
        if (platform.run({"input-stream"}, input) != 0) {
            state.SkipWithError("input-stream did not exit with 0");
            return;
        }
        const std::size_t posted = platform.journal.events().size();
        lost += commandCount - posted;
        if (!platform.streams.err().empty()) {
            state.SkipWithError(platform.streams.err().substr(0, 200).c_str());
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * commandCount);
    state.counters["commands_per_s"] =
        benchmark::Counter(static_cast<double>(state.iterations() * commandCount), benchmark::Counter::kIsRate);
    state.counters["lost"] = static_cast<double>(lost);
    if (lost != 0) state.SkipWithError("commands were lost");
}
BENCHMARK(BM_SingleCommands)->Iterations(5)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
