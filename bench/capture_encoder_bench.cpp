// The capture-stream encoder on screen-like frames: the program's encoder as it runs (every
// lane, its own compressor), then each candidate raw DEFLATE library on one lane, so that their
// time and bytes compare (zlib level 6 is the yardstick for size), and, for an idle screen, one
// memcmp of the two frames. After the benchmarks it prints the ratios and the library table, all
// from this one run.
#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <zlib.h>
#ifdef BRISKO_BENCH_IGZIP
#include <isa-l/igzip_lib.h>
#endif

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "capture/capture_stream_output.h"
#include "fake/fake_platform.h"
#include "support/synthetic_desktop.h"

namespace brisko {
namespace {

using testing::BgraImage;

// zlib, raw DEFLATE, one stream state reused.
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

class LibdeflateDeflater final : public RawDeflater {
public:
    explicit LibdeflateDeflater(int level) : compressor_(libdeflate_alloc_compressor(level)) {}
    ~LibdeflateDeflater() override { libdeflate_free_compressor(compressor_); }
    LibdeflateDeflater(const LibdeflateDeflater&) = delete;
    LibdeflateDeflater& operator=(const LibdeflateDeflater&) = delete;

    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        return libdeflate_deflate_compress(compressor_, input.data(), input.size(), output.data(), output.size());
    }

private:
    libdeflate_compressor* compressor_;
};

#ifdef BRISKO_BENCH_IGZIP
// ISA-L's igzip, one call per input (stateless), raw DEFLATE. Measured when libisal-dev is
// installed: it was the fastest here, but gave 1.10 to 1.65 times zlib 6's bytes at level 1.
class IgzipDeflater final : public RawDeflater {
public:
    explicit IgzipDeflater(std::uint32_t level)
        : level_(level), levelBuffer_(level == 0 ? 0 : ISAL_DEF_LVL1_DEFAULT) {}

    std::size_t deflateRaw(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        isal_zstream stream;
        isal_deflate_stateless_init(&stream);
        stream.level = level_;
        stream.level_buf = levelBuffer_.data();
        stream.level_buf_size = static_cast<std::uint32_t>(levelBuffer_.size());
        stream.next_in = const_cast<std::uint8_t*>(input.data());
        stream.avail_in = static_cast<std::uint32_t>(input.size());
        stream.next_out = output.data();
        stream.avail_out = static_cast<std::uint32_t>(output.size());
        stream.end_of_stream = 1;
        return isal_deflate_stateless(&stream) == COMP_OK ? stream.total_out : 0;
    }

private:
    std::uint32_t level_;
    std::vector<std::uint8_t> levelBuffer_;
};
#endif

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

// The program's own encoder, or one lane with one library.
struct Encoder {
    const char* name;
    std::function<std::unique_ptr<RawDeflater>()> makeDeflater;  // empty: the program's own, on every lane
};

const Encoder ours{"ours", {}};
const Encoder libraries[] = {
    {"zlib6", [] { return std::make_unique<ZlibDeflater>(6); }},
    {"libdeflate1", [] { return std::make_unique<LibdeflateDeflater>(1); }},
    {"libdeflate6", [] { return std::make_unique<LibdeflateDeflater>(6); }},
#ifdef BRISKO_BENCH_IGZIP
    {"igzip0", [] { return std::make_unique<IgzipDeflater>(0); }},
    {"igzip1", [] { return std::make_unique<IgzipDeflater>(1); }},
#endif
};

std::unique_ptr<CaptureStreamOutput> makeEncoder(const Encoder& kind, std::size_t& recordBytes, std::size_t& tiles) {
    auto sink = [&recordBytes, &tiles](std::string_view record) {
        recordBytes += record.size();
        tiles += static_cast<unsigned char>(record[12]) | static_cast<unsigned char>(record[13]) << 8;
        return true;
    };
    if (!kind.makeDeflater) return std::make_unique<CaptureStreamOutput>(sink);
    return std::make_unique<CaptureStreamOutput>(sink, 1, kind.makeDeflater);
}

void report(benchmark::State& state, std::size_t recordBytes, std::size_t tiles, std::size_t frames) {
    state.counters["record_bytes"] = static_cast<double>(recordBytes) / static_cast<double>(frames);
    state.counters["tiles"] = static_cast<double>(tiles) / static_cast<double>(frames);
}

// Frames alternate between two pictures of one size, so that every frame changes the same tiles.
// The record sizes come from one untimed round, so that both directions count equally.
void alternate(benchmark::State& state, const Encoder& kind, const BgraImage& a, const BgraImage& b) {
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
void fullChange(benchmark::State& state, const Encoder& kind) {
    const Scene& s = scene(state.range(0));
    alternate(state, kind, s.desktop, s.other);
}

// The first frame of a session: the whole frame as one tile (one compressor, whatever the lanes).
void firstFrame(benchmark::State& state, const Encoder& kind) {
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
    auto encoder = makeEncoder(ours, bytes, tiles);
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
    alternate(state, ours, s.desktop, s.typed);
}

void sizes(benchmark::internal::Benchmark* b) { b->Arg(1440)->Arg(2880)->UseRealTime()->Unit(benchmark::kMillisecond); }

BENCHMARK_CAPTURE(fullChange, ours, ours)->Apply(sizes);
BENCHMARK_CAPTURE(firstFrame, ours, ours)->Apply(sizes);
BENCHMARK(unchanged)->Apply(sizes);
BENCHMARK(memcmpOfTwoFrames)->Apply(sizes);
BENCHMARK(fivePercent)->Apply(sizes);

// Every library on one lane, registered by name.
[[maybe_unused]] const bool librariesRegistered = [] {
    for (const Encoder& library : libraries) {
        const std::string name(library.name);
        benchmark::RegisterBenchmark(("fullChange/" + name + "_one_lane").c_str(), fullChange, library)->Apply(sizes);
        benchmark::RegisterBenchmark(("firstFrame/" + name + "_one_lane").c_str(), firstFrame, library)->Apply(sizes);
    }
    return true;
}();

// Keeps each run's time and record size, to print the ratios at the end.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            // With repetitions, the median stands for the benchmark.
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
            const auto bytes = run.counters.find("record_bytes");
            results_[run.run_name.str()] = {run.GetAdjustedRealTime(), run.GetAdjustedCPUTime(),
                                            bytes == run.counters.end() ? 0.0 : bytes->second.value};
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void printRatios() const {
        std::printf("\nRatios (this run, %u hardware threads):\n", std::thread::hardware_concurrency());
        for (const char* size : {"1440", "2880"}) {
            ratio("full change", "fullChange/zlib6_one_lane/", "fullChange/ours/", size, true);
            ratio("first frame", "firstFrame/zlib6_one_lane/", "firstFrame/ours/", size, true);
            ratio("unchanged  ", "unchanged/", "memcmpOfTwoFrames/", size, false);
        }
        // One lane is one thread: its processor time is its cost, also on a busy machine.
        std::printf("\nLibraries on one lane (processor ms per frame, bytes per record, bytes against zlib 6):\n");
        std::printf("  %-12s %5s %12s %12s %7s %12s %12s %7s\n", "library", "width", "full ms", "full bytes", "x zlib6",
                    "first ms", "first bytes", "x zlib6");
        for (const char* size : {"1440", "2880"}) {
            for (const Encoder& library : libraries) {
                const Result* full = find("fullChange/", library.name, size);
                const Result* first = find("firstFrame/", library.name, size);
                const Result* fullZlib = find("fullChange/", "zlib6", size);
                const Result* firstZlib = find("firstFrame/", "zlib6", size);
                if (!full || !first || !fullZlib || !firstZlib) continue;
                std::printf("  %-12s %5s %12.2f %12.0f %7.3f %12.2f %12.0f %7.3f\n", library.name, size, full->cpuTime,
                            full->bytes, full->bytes / fullZlib->bytes, first->cpuTime, first->bytes,
                            first->bytes / firstZlib->bytes);
            }
        }
    }

private:
    struct Result {
        double time = 0, cpuTime = 0, bytes = 0;
    };
    void ratio(const char* what, const std::string& a, const std::string& b, const char* size, bool withBytes) const {
        const auto x = results_.find(a + size + "/real_time"), y = results_.find(b + size + "/real_time");
        if (x == results_.end() || y == results_.end()) return;
        std::printf("  %s %s wide: %s / %s = %.2f", what, size, a.c_str(), b.c_str(), x->second.time / y->second.time);
        if (withBytes) std::printf("   bytes ours / zlib6 = %.3f", y->second.bytes / x->second.bytes);
        std::printf("\n");
    }
    const Result* find(const std::string& benchmark, const std::string& library, const char* size) const {
        const auto found = results_.find(benchmark + library + "_one_lane/" + size + "/real_time");
        return found == results_.end() ? nullptr : &found->second;
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
