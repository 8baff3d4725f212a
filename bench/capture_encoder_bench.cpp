// The capture-stream encoder on screen-like frames, against a plain encoder (zlib level 6, one
// thread, same format) and, for an idle screen, against one memcmp of the two frames. After the
// benchmarks it prints the ratios that matter, all from this one run.
#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "capture/capture_stream_output.h"
#include "fake/fake_platform.h"
#include "support/synthetic_desktop.h"

namespace brisko {
namespace {

using testing::BgraImage;

// The reference compressor: zlib at its default level, raw DEFLATE, one stream state reused.
class ZlibDeflater final : public RawDeflater {
public:
    explicit ZlibDeflater(int level) { deflateInit2(&stream_, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY); }
    ~ZlibDeflater() override { deflateEnd(&stream_); }
    ZlibDeflater(const ZlibDeflater&) = delete;
    ZlibDeflater& operator=(const ZlibDeflater&) = delete;

    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        deflateReset(&stream_);
        stream_.next_in = const_cast<Bytef*>(input.data());
        stream_.avail_in = static_cast<uInt>(input.size());
        stream_.next_out = output.data();
        stream_.avail_out = static_cast<uInt>(output.size());
        return deflate(&stream_, Z_FINISH) == Z_STREAM_END ? stream_.total_out : 0;
    }

private:
    z_stream stream_{};
};

// Three pictures per size: a desktop, another desktop (every tile differs), and the first with
// 5% of its tiles retyped.
struct Scene {
    BgraImage desktop, other, typed, desktopCopy;
};

const Scene& scene(std::int64_t width) {
    static std::map<std::int64_t, Scene> scenes;
    auto found = scenes.find(width);
    if (found == scenes.end()) {
        const std::int64_t height = width * 5 / 8;
        Scene s{testing::renderDesktop(width, height, 1), testing::renderDesktop(width, height, 2), {}, {}};
        s.typed = s.desktop;
        testing::retypeTiles(s.typed, 0.05, 7);
        s.desktopCopy = s.desktop;
        found = scenes.emplace(width, std::move(s)).first;
    }
    return found->second;
}

enum class Encoder { ours, zlib6OneThread };

std::unique_ptr<CaptureStreamOutput> makeEncoder(Encoder kind, std::size_t& recordBytes, std::size_t& tiles) {
    auto sink = [&recordBytes, &tiles](std::string_view record) {
        recordBytes += record.size();
        tiles += static_cast<unsigned char>(record[12]) | static_cast<unsigned char>(record[13]) << 8;
        return true;
    };
    if (kind == Encoder::ours) return std::make_unique<CaptureStreamOutput>(sink);
    return std::make_unique<CaptureStreamOutput>(sink, 1, [] { return std::make_unique<ZlibDeflater>(6); });
}

void report(benchmark::State& state, std::size_t recordBytes, std::size_t tiles, std::size_t frames) {
    state.counters["record_bytes"] = static_cast<double>(recordBytes) / static_cast<double>(frames);
    state.counters["tiles"] = static_cast<double>(tiles) / static_cast<double>(frames);
}

// Frames alternate between two pictures of one size, so that every frame changes the same tiles.
// The record sizes come from one untimed round, so that both directions count equally.
void alternate(benchmark::State& state, Encoder kind, const BgraImage& a, const BgraImage& b) {
    std::size_t bytes = 0, tiles = 0, frames = 0;
    auto encoder = makeEncoder(kind, bytes, tiles);
    encoder->encodeFrame(a.view(), 0);
    bytes = tiles = 0;
    encoder->encodeFrame(b.view(), 0);
    encoder->encodeFrame(a.view(), 0);
    report(state, bytes, tiles, 2);
    for (auto _ : state) benchmark::DoNotOptimize(encoder->encodeFrame((frames++ % 2 == 0 ? b : a).view(), 0));
}

// Every tile changed: two different desktops.
void fullChange(benchmark::State& state, Encoder kind) {
    const Scene& s = scene(state.range(0));
    alternate(state, kind, s.desktop, s.other);
}

// The first frame of a session: the whole frame as one tile (one compressor, whatever the lanes).
void firstFrame(benchmark::State& state, Encoder kind) {
    const Scene& s = scene(state.range(0));
    std::size_t bytes = 0, tiles = 0, frames = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto encoder = makeEncoder(kind, bytes, tiles);
        state.ResumeTiming();
        benchmark::DoNotOptimize(encoder->encodeFrame(s.desktop.view(), 0));
        ++frames;
        state.PauseTiming();
        encoder.reset();
        state.ResumeTiming();
    }
    report(state, bytes, tiles, frames);
}

// An idle screen: the same picture again, in another buffer.
void unchanged(benchmark::State& state) {
    const Scene& s = scene(state.range(0));
    std::size_t bytes = 0, tiles = 0;
    auto encoder = makeEncoder(Encoder::ours, bytes, tiles);
    encoder->encodeFrame(s.desktop.view(), 0);
    for (auto _ : state) benchmark::DoNotOptimize(encoder->encodeFrame(s.desktopCopy.view(), 0));
}

void memcmpOfTwoFrames(benchmark::State& state) {
    const Scene& s = scene(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::memcmp(s.desktop.bytes.data(), s.desktopCopy.bytes.data(), s.desktop.bytes.size()));
    }
}

// Typing: 5% of the tiles change and change back.
void fivePercent(benchmark::State& state) {
    const Scene& s = scene(state.range(0));
    alternate(state, Encoder::ours, s.desktop, s.typed);
}

void sizes(benchmark::internal::Benchmark* b) { b->Arg(1440)->Arg(2880)->UseRealTime()->Unit(benchmark::kMillisecond); }

BENCHMARK_CAPTURE(fullChange, ours, Encoder::ours)->Apply(sizes);
BENCHMARK_CAPTURE(fullChange, zlib6_one_thread, Encoder::zlib6OneThread)->Apply(sizes);
BENCHMARK_CAPTURE(firstFrame, ours, Encoder::ours)->Apply(sizes);
BENCHMARK_CAPTURE(firstFrame, zlib6_one_thread, Encoder::zlib6OneThread)->Apply(sizes);
BENCHMARK(unchanged)->Apply(sizes);
BENCHMARK(memcmpOfTwoFrames)->Apply(sizes);
BENCHMARK(fivePercent)->Apply(sizes);

// Keeps each run's time and record size, to print the ratios at the end.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            // With repetitions, the median stands for the benchmark.
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
            const auto bytes = run.counters.find("record_bytes");
            results_[run.run_name.str()] = {run.GetAdjustedRealTime(),
                                            bytes == run.counters.end() ? 0.0 : bytes->second.value};
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void printRatios() const {
        std::printf("\nRatios (this run, %u hardware threads):\n", std::thread::hardware_concurrency());
        for (const char* size : {"1440", "2880"}) {
            ratio("full change", "fullChange/zlib6_one_thread/", "fullChange/ours/", size, true);
            ratio("first frame", "firstFrame/zlib6_one_thread/", "firstFrame/ours/", size, true);
            ratio("unchanged  ", "unchanged/", "memcmpOfTwoFrames/", size, false);
        }
    }

private:
    struct Result {
        double time = 0, bytes = 0;
    };
    void ratio(const char* what, const std::string& a, const std::string& b, const char* size, bool withBytes) const {
        const auto x = results_.find(a + size + "/real_time"), y = results_.find(b + size + "/real_time");
        if (x == results_.end() || y == results_.end()) return;
        std::printf("  %s %s wide: %s / %s = %.2f", what, size, a.c_str(), b.c_str(), x->second.time / y->second.time);
        if (withBytes) std::printf("   bytes ours / zlib6 = %.3f", y->second.bytes / x->second.bytes);
        std::printf("\n");
    }
    std::map<std::string, Result> results_;
};

}  // namespace
}  // namespace brisko

int main(int argc, char** argv) {
    brisko::fake::FakePlatform platform;  // the process state the encoder reads its constants from
    benchmark::Initialize(&argc, argv);
    brisko::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    benchmark::Shutdown();
    return 0;
}
