// capture-stream on a real X server (a private Xvfb), run as the host runs it, with its records
// read and decoded as they arrive by a reader that timestamps them; the changes come from another
// client of the same server:
//   - afterStillness: after a second of stillness a small window is mapped; the time until a
//     record shows it (32 times). Its pixels come from the server (a background colour), or from
//     its client, which draws once the window is mapped, as toolkits do.
//   - continuousChange: a window changes colour 12 to 20 times a second; for each
//     change, the time until a record shows it or a later change.
//   - stillScreen: the program's processor time over 10 s of a still screen.
//   - repaint/...: a region repainted 30 times a second, with one colour or with new desktop-like
//     content (200 x 200, 1240 x 700, the whole screen, the whole screen under a host panel, which
//     is then drawn afresh from the window's own contents every frame, and a 2880 x 1800 screen);
//     records per second, how far the stream's picture lags behind the region, processor time and
//     peak resident memory.
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
#include "support/x_servers.h"

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

void reportLatencies(benchmark::State& state, const std::vector<double>& latencies) {
    state.counters["changes_seen"] = static_cast<double>(latencies.size());
    state.counters["p50_ms"] = percentile(latencies, 0.5);
    state.counters["p95_ms"] = percentile(latencies, 0.95);
    state.counters["max_ms"] = percentile(latencies, 1.0);
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

// The most memory the process has held resident so far, in MB.
double peakResidentMb(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1024.0;
    }
    return 0;
}

// The benchmark's own client on a private display.
class Screen {
public:
    Screen(int width = 1440, int height = 900)
        : display_(width, height), connection_(xcb_connect(display_.name().c_str(), nullptr)) {
        if (xcb_connection_has_error(connection_)) throw std::runtime_error("cannot open the display");
        screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    }
    ~Screen() { xcb_disconnect(connection_); }

    const std::string& name() const { return display_.name(); }

    // A window painted by the server in its background colour.
    xcb_window_t map(int x, int y, int width, int height, std::uint32_t color = 0) {
        return create(x, y, width, height, XCB_CW_BACK_PIXEL, color);
    }
    // A window without a background, mapped, then filled by its client as a toolkit does once
    // the window shows.
    xcb_window_t mapThenFill(int x, int y, int width, int height, std::uint32_t color) {
        const xcb_window_t window = create(x, y, width, height, XCB_CW_BACK_PIXMAP, XCB_BACK_PIXMAP_NONE);
        const xcb_gcontext_t gc = xcb_generate_id(connection_);
        xcb_create_gc(connection_, gc, window, XCB_GC_FOREGROUND, &color);
        const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
        xcb_poly_fill_rectangle(connection_, window, gc, 1, &all);
        xcb_free_gc(connection_, gc);
        sync();
        return window;
    }
    void destroy(xcb_window_t window) {
        xcb_destroy_window(connection_, window);
        sync();
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
        const std::int64_t band = std::max<std::int64_t>(1, 100000 / image.bytesPerRow);
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
    xcb_window_t create(int x, int y, int width, int height, std::uint32_t backgroundMask, std::uint32_t background) {
        const xcb_window_t window = xcb_generate_id(connection_);
        const std::uint32_t values[] = {background, 1};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                          backgroundMask | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(connection_, window);
        sync();
        return window;
    }

    brisko::testing::XvfbDisplay display_;
    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
    xcb_gcontext_t gc_ = XCB_NONE;
};

// A small window mapped after a second of stillness, each time elsewhere and in another colour:
// painted by the server from its background, or drawn by its client once mapped.
void afterStillness(benchmark::State& state, bool drawnByClient) {
    Screen screen;
    screen.map(100, 100, 300, 200, 0x404040);
    std::vector<double> latencies;
    for (auto _ : state) {
        CaptureStreamProcess stream(screen.name());
        if (!stream.waitForRecords(1)) throw std::runtime_error("no first record");
        for (int i = 0; i < 32; ++i) {
            std::this_thread::sleep_for(1s);
            const int x = 500 + (i % 8) * 100, y = 200 + (i / 8) * 150;
            const std::uint32_t color = 0x200000u + static_cast<std::uint32_t>(i) * 0x0103u;
            const auto mapped = Clock::now();
            const xcb_window_t window = drawnByClient ? screen.mapThenFill(x, y, 80, 60, color) : screen.map(x, y, 80, 60, color);
            const auto seen = stream.waitForPicture(
                [&](const RgbaPicture& p) { return p.rgb(static_cast<std::uint32_t>(x + 40), static_cast<std::uint32_t>(y + 30)) == color; },
                2s);
            if (seen) latencies.push_back(ms(*seen - mapped));
            screen.destroy(window);
        }
    }
    reportLatencies(state, latencies);
}

// Changes 12 to 20 times a second; change n paints colour n, so a record showing n or later
// carries change n.
void continuousChange(benchmark::State& state) {
    Screen screen;
    const xcb_window_t window = screen.map(100, 100, 300, 200);
    constexpr std::uint32_t firstColor = 0x100000;
    std::mutex lock;
    std::vector<Clock::time_point> changed;
    std::vector<Clock::time_point> shown;  // when a record first carried each change
    std::vector<double> latencies;
    for (auto _ : state) {
        CaptureStreamProcess stream(screen.name(), [&](const RgbaPicture& picture) {
            const std::uint32_t color = picture.rgb(110, 110);
            const auto now = Clock::now();
            const std::lock_guard guard(lock);
            if (color < firstColor) return;
            const std::size_t upTo = std::min<std::size_t>(color - firstColor + 1, changed.size());
            while (shown.size() < upTo) shown.push_back(now);
        });
        if (!stream.waitForRecords(1)) throw std::runtime_error("no first record");
        std::this_thread::sleep_for(300ms);
        std::mt19937 random(7);
        std::uniform_int_distribution<int> gapMs(50, 83);
        for (std::uint32_t n = 0; n < 90; ++n) {
            {
                const std::lock_guard guard(lock);
                changed.push_back(Clock::now());
            }
            screen.paint(window, firstColor + n);
            std::this_thread::sleep_for(std::chrono::milliseconds(gapMs(random)));
        }
        std::this_thread::sleep_for(300ms);
    }
    const std::lock_guard guard(lock);
    for (std::size_t n = 0; n < shown.size(); ++n) latencies.push_back(ms(shown[n] - changed[n]));
    reportLatencies(state, latencies);
    state.counters["changes_made"] = static_cast<double>(changed.size());
}

void stillScreen(benchmark::State& state) {
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
        state.counters["peak_resident_mb"] = peakResidentMb(stream.pid());
    }
    state.counters["cpu_percent_of_one_core"] = share * 100.0;
}

struct Region {
    int x, y, width, height;
};

// What each paint puts there: a new desktop-like picture (every tile changes, and compressing
// them is most of the work), or one colour (what capturing costs besides compressing).
enum class Paint { desktop, colour };

// The region repainted 30 times a second for 6 s, on a screen of the given size.
void repaint(benchmark::State& state, int screenWidth, int screenHeight, Region region, Paint kind, bool hostPanel) {
    Screen screen(screenWidth, screenHeight);
    const xcb_window_t window = screen.map(region.x, region.y, region.width, region.height);
    std::optional<brisko::testing::WindowClientProcess> host;
    if (hostPanel) host.emplace(brisko::testing::menubarClientPath(), screen.name());
    if (host) host->map("panel", "400 200 500 400 color=2040ff above");
    std::vector<brisko::testing::BgraImage> pictures;
    for (std::uint32_t seed = 0; kind == Paint::desktop && seed < 4; ++seed) {
        pictures.push_back(brisko::testing::renderDesktop(region.width, region.height, seed));
    }
    // The paint's number is the colour of the region's top-left pixel, so a record tells which
    // paint it shows.
    std::atomic<std::uint32_t> painted{0};
    std::mutex lock;
    std::vector<double> lags;
    std::vector<Clock::time_point> arrivals;
    int hostSeen = 0;  // records that show the panel's colour where it lies
    double cpu = 0, peakMb = 0;
    const auto x = static_cast<std::uint32_t>(region.x), y = static_cast<std::uint32_t>(region.y);
    for (auto _ : state) {
        CaptureStreamProcess stream(screen.name(), [&](const RgbaPicture& picture) {
            const std::uint32_t shown = picture.rgb(x, y);
            const std::lock_guard guard(lock);
            arrivals.push_back(Clock::now());
            if (hostPanel && picture.rgb(650, 400) == 0x2040ff) ++hostSeen;
            // A paint every 33 ms: how many paints behind the newest the record is, in time.
            if (shown != 0) lags.push_back(33.3 * static_cast<double>(painted.load() - std::min(shown, painted.load())));
        });
        if (!stream.waitForRecords(1)) throw std::runtime_error("no first record");
        std::this_thread::sleep_for(500ms);
        const double before = cpuSeconds(stream.pid());
        const auto start = Clock::now();
        for (std::uint32_t n = 1; Clock::now() - start < 6s; ++n) {
            if (kind == Paint::colour) {
                screen.paint(window, n);
                screen.sync();
            } else {
                brisko::testing::BgraImage& picture = pictures[n % pictures.size()];
                std::memcpy(picture.pixel(0, 0), &n, 3);  // B, G, R: the paint's number
                screen.draw(window, picture);
            }
            painted = n;
            std::this_thread::sleep_until(start + n * 33333us);
        }
        cpu = (cpuSeconds(stream.pid()) - before) / ms(Clock::now() - start) * 1000.0;
        state.counters["paints_per_second"] = painted.load() / (ms(Clock::now() - start) / 1000.0);
        peakMb = peakResidentMb(stream.pid());
    }
    const std::lock_guard guard(lock);
    const auto since = arrivals.front() + 1500ms;  // leave out the start
    const auto counted = std::count_if(arrivals.begin(), arrivals.end(), [&](auto t) { return t >= since; });
    state.counters["records_per_second"] = static_cast<double>(counted) / (ms(arrivals.back() - since) / 1000.0);
    state.counters["lag_p95_ms"] = percentile(lags, 0.95);
    state.counters["lag_max_ms"] = percentile(lags, 1.0);
    state.counters["cpu_percent_of_one_core"] = cpu * 100.0;
    state.counters["peak_resident_mb"] = peakMb;
    if (hostPanel) state.counters["records_showing_the_host"] = hostSeen;
}

BENCHMARK_CAPTURE(afterStillness, window_with_a_background, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(afterStillness, window_drawn_by_its_client, true)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(continuousChange)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(stillScreen)->Iterations(1)->Unit(benchmark::kMillisecond);
constexpr Region small{600, 300, 200, 200}, large{100, 100, 1240, 700}, whole{0, 0, 1440, 900};
BENCHMARK_CAPTURE(repaint, region_200x200_colour, 1440, 900, small, Paint::colour, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, region_200x200_desktop, 1440, 900, small, Paint::desktop, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, region_1240x700_colour, 1440, 900, large, Paint::colour, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, region_1240x700_desktop, 1440, 900, large, Paint::desktop, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, full_screen_desktop, 1440, 900, whole, Paint::desktop, false)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, full_screen_desktop_under_a_host_panel, 1440, 900, whole, Paint::desktop, true)
    ->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(repaint, full_screen_desktop_2880x1800, 2880, 1800, Region{0, 0, 2880, 1800}, Paint::desktop, false)
    ->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
