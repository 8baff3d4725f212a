// capture-stream on a real X server (a private Xvfb), run as the host runs it, with its records
// read and decoded as they arrive:
//   - change_to_record: a window of the benchmark's changes colour; the time until a record shows
//     the new colour. Once on a still screen, once with changes coming 15 times a second.
//   - still_screen_cpu: the program's processor time over 10 s of a still screen.
//   - full_screen_repaint: a 1440 x 900 window repainted with new desktop-like content 30 times
//     a second; the records per second and how far the stream's picture lags behind the window.
//     Once alone, once with a host panel over it, so that every frame is also drawn afresh under
//     the panel from the window's own contents.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <fstream>
#include <mutex>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <xcb/xcb.h>

#include "support/capture_stream_process.h"
#include "support/synthetic_desktop.h"
#include "support/window_client_process.h"
#include "support/xvfb_display.h"

namespace {

using namespace std::chrono_literals;
using brisko::testing::CaptureStreamProcess;
using brisko::testing::RgbaPicture;
using Clock = std::chrono::steady_clock;

double ms(Clock::duration d) { return std::chrono::duration<double, std::milli>(d).count(); }

double percentile(std::vector<double> values, double p) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(p * static_cast<double>(values.size() - 1) + 0.5)];
}

// Processor time (user and system) of a process so far, in seconds.
double cpuSeconds(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long long user = 0, system = 0;
    for (int i = 3; i <= 15 && fields >> field; ++i) {
        if (i == 14) user = std::stoull(field);
        if (i == 15) system = std::stoull(field);
    }
    return static_cast<double>(user + system) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

// The benchmark's own window on a private display.
class Screen {
public:
    Screen() : connection_(xcb_connect(display_.name().c_str(), nullptr)) {
        if (xcb_connection_has_error(connection_)) throw std::runtime_error("cannot open the display");
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    }
    ~Screen() { xcb_disconnect(connection_); }

    const std::string& name() const { return display_.name(); }

    xcb_window_t map(int x, int y, int width, int height) {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {0, 1};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(connection_, window);
        sync();
        return window;
    }
    void paint(xcb_window_t window, std::uint32_t color) {
        xcb_change_window_attributes(connection_, window, XCB_CW_BACK_PIXEL, &color);
        xcb_clear_area(connection_, 0, window, 0, 0, 0, 0);
        xcb_flush(connection_);
    }
    // Draws a BGRA picture into the window, in bands that fit a plain request.
    void draw(xcb_window_t window, const brisko::testing::BgraImage& image) {
        if (gc_ == XCB_NONE) {
            gc_ = xcb_generate_id(connection_);
            xcb_create_gc(connection_, gc_, window, 0, nullptr);
        }
        constexpr std::int64_t band = 32;
        for (std::int64_t y = 0; y < image.height; y += band) {
            const std::int64_t rows = std::min(band, image.height - y);
            xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, gc_, static_cast<std::uint16_t>(image.width),
                          static_cast<std::uint16_t>(rows), 0, static_cast<std::int16_t>(y), 0, screen_->root_depth,
                          static_cast<std::uint32_t>(rows * image.bytesPerRow), image.bytes.data() + y * image.bytesPerRow);
        }
        sync();
    }
    void sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

private:
    brisko::testing::XvfbDisplay display_;
    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
    xcb_gcontext_t gc_ = XCB_NONE;
};

// Changes a window's colour at the given pace and times each change until a record shows it.
std::vector<double> changeLatencies(Screen& screen, xcb_window_t window, Clock::duration minGap,
                                    Clock::duration maxGap, int changes) {
    std::mutex lock;
    std::uint32_t wanted = 0;
    Clock::time_point changed;
    std::vector<double> latencies;
    CaptureStreamProcess stream(screen.name(), [&](const RgbaPicture& picture) {
        const std::lock_guard guard(lock);
        if (wanted != 0 && picture.rgb(110, 110) == wanted) {
            latencies.push_back(ms(Clock::now() - changed));
            wanted = 0;
        }
    });
    if (!stream.waitForRecords(1)) throw std::runtime_error("no first record");
    std::this_thread::sleep_for(300ms);
    std::mt19937 random(7);
    std::uniform_int_distribution<Clock::rep> gap(minGap.count(), maxGap.count());
    for (int i = 1; i <= changes; ++i) {
        {
            const std::lock_guard guard(lock);
            wanted = 0x010101u * static_cast<std::uint32_t>(i % 200 + 20);
            changed = Clock::now();
        }
        screen.paint(window, 0x010101u * static_cast<std::uint32_t>(i % 200 + 20));
        std::this_thread::sleep_for(Clock::duration(gap(random)));
    }
    std::this_thread::sleep_for(300ms);
    const std::lock_guard guard(lock);
    return latencies;
}

void changeToRecord(benchmark::State& state, Clock::duration minGap, Clock::duration maxGap) {
    Screen screen;
    const xcb_window_t window = screen.map(100, 100, 300, 200);
    std::vector<double> latencies;
    for (auto _ : state) latencies = changeLatencies(screen, window, minGap, maxGap, 90);
    state.counters["changes_seen"] = static_cast<double>(latencies.size());
    state.counters["p50_ms"] = percentile(latencies, 0.5);
    state.counters["p95_ms"] = percentile(latencies, 0.95);
    state.counters["max_ms"] = percentile(latencies, 1.0);
}

void stillScreenCpu(benchmark::State& state) {
    Screen screen;
    screen.map(100, 100, 300, 200);
    double share = 0;
    for (auto _ : state) {
        CaptureStreamProcess stream(screen.name());
        if (!stream.waitForRecords(1)) throw std::runtime_error("no first record");
        std::this_thread::sleep_for(1s);
        const double before = cpuSeconds(stream.pid());
        std::this_thread::sleep_for(10s);
        share = (cpuSeconds(stream.pid()) - before) / 10.0;
        state.counters["records_while_still"] = stream.records() - 1;
    }
    state.counters["cpu_percent_of_one_core"] = share * 100.0;
}

void fullScreenRepaint(benchmark::State& state, bool hostPanel) {
    Screen screen;
    const xcb_window_t window = screen.map(0, 0, 1440, 900);
    std::optional<brisko::testing::WindowClientProcess> host;
    if (hostPanel) host.emplace(brisko::testing::menubarClientPath(), screen.name());
    if (host) host->map("panel", "400 200 500 400 color=2040ff above");
    std::vector<brisko::testing::BgraImage> pictures;
    for (std::uint32_t seed = 0; seed < 4; ++seed) pictures.push_back(brisko::testing::renderDesktop(1440, 900, seed));
    // The paint's number is written into its top-left pixel, so a record tells which paint it shows.
    std::atomic<std::uint32_t> painted{0};
    std::mutex lock;
    std::vector<double> lags;
    std::vector<Clock::time_point> arrivals;
    int hostSeen = 0;  // records that show the panel's colour where it lies
    double cpu = 0;
    for (auto _ : state) {
        CaptureStreamProcess stream(screen.name(), [&](const RgbaPicture& picture) {
            const std::uint32_t shown = picture.rgb(0, 0);
            const std::lock_guard guard(lock);
            arrivals.push_back(Clock::now());
            if (picture.rgb(650, 400) == 0x2040ff) ++hostSeen;
            // A paint every 33 ms: how many paints behind the newest the record is, in time.
            if (shown != 0) lags.push_back(33.3 * static_cast<double>(painted.load() - std::min(shown, painted.load())));
        });
        if (!stream.waitForRecords(1)) throw std::runtime_error("no first record");
        const double before = cpuSeconds(stream.pid());
        const auto start = Clock::now();
        for (std::uint32_t n = 1; Clock::now() - start < 6s; ++n) {
            brisko::testing::BgraImage& picture = pictures[n % pictures.size()];
            std::memcpy(picture.pixel(0, 0), &n, 3);  // B, G, R: the paint's number
            screen.draw(window, picture);
            painted = n;
            std::this_thread::sleep_until(start + n * 33333us);
        }
        cpu = (cpuSeconds(stream.pid()) - before) / ms(Clock::now() - start) * 1000.0;
        state.counters["paints_per_second"] = painted.load() / (ms(Clock::now() - start) / 1000.0);
    }
    const std::lock_guard guard(lock);
    const auto since = arrivals.front() + 1s;  // leave out the start
    const auto counted = std::count_if(arrivals.begin(), arrivals.end(), [&](auto t) { return t >= since; });
    state.counters["records_per_second"] = static_cast<double>(counted) / (ms(arrivals.back() - since) / 1000.0);
    state.counters["lag_p95_ms"] = percentile(lags, 0.95);
    state.counters["lag_max_ms"] = percentile(lags, 1.0);
    state.counters["cpu_percent_of_one_core"] = cpu * 100.0;
    state.counters["records_showing_the_host"] = hostSeen;
}

BENCHMARK_CAPTURE(changeToRecord, still_screen, 150ms, 300ms)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(changeToRecord, changes_15_per_second, 50ms, 83ms)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(stillScreenCpu)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fullScreenRepaint, alone, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fullScreenRepaint, under_a_host_panel, true)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
