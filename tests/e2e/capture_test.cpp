// screenshot and capture-stream against a real X server: windows of known colours, some of them
// owned by a process named like the host's menu-bar process, which must never be seen.
#include <atomic>
#include <chrono>
#include <thread>
#include <filesystem>
#include <fstream>
#include <functional>
#include <unistd.h>
#include <random>
#include <sstream>

#include "capture_stream_decoder.h"
#include "support/child_process.h"
#include "support/capture_stream_process.h"
#include "support/screen_control.h"
#include "support/x11_display_test.h"

namespace brisko::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr std::uint32_t wallpaper = 0x203040;
constexpr std::uint32_t red = 0xd02010;
constexpr std::uint32_t green = 0x10c040;
constexpr std::uint32_t hostBlue = 0x2040ff;

struct Box {
    int x, y, width, height;
    bool contains(std::uint32_t px, std::uint32_t py) const {
        return int(px) >= x && int(px) < x + width && int(py) >= y && int(py) < y + height;
    }
    std::string spec(std::uint32_t color) const {
        char hex[8];
        std::snprintf(hex, sizeof hex, "%06x", color);
        return std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(width) + " " +
               std::to_string(height) + " color=" + hex;
    }
};

// Whether every pixel of the box has the colour.
bool filled(const RgbaPicture& picture, const Box& box, std::uint32_t color) {
    for (int y = box.y; y < box.y + box.height; ++y) {
        for (int x = box.x; x < box.x + box.width; ++x) {
            if (picture.rgb(std::uint32_t(x), std::uint32_t(y)) != color) return false;
        }
    }
    return true;
}

class Capture : public X11DisplayTest {
protected:
    // The connection lasts the suite: a server whose last client leaves starts afresh, and
    // refuses connections meanwhile.
    static void SetUpTestSuite() {
        X11DisplayTest::SetUpTestSuite();
        screen = new ScreenControl(display().name());
        screen->setWallpaper(wallpaper);
    }
    static void TearDownTestSuite() {
        delete screen;
        X11DisplayTest::TearDownTestSuite();
    }
    void SetUp() override { screen->warpPointer(1400, 860); }

    static inline ScreenControl* screen = nullptr;
};

TEST_F(Capture, ScreenshotShowsWhatLiesBeneathTheHostAndNoCursor) {
    const Box a{100, 100, 400, 300}, b{600, 100, 300, 300}, host{300, 200, 500, 300};
    WindowClientProcess& app = startClient();
    app.map("a", a.spec(red));
    app.map("b", b.spec(green));
    startClient(menubarClientPath()).map("panel", host.spec(hostBlue));
    screen->warpPointer(150, 150);  // over a window, outside the host's
    const RgbaPicture shown = screen->screen();
    ASSERT_TRUE(filled(shown, host, hostBlue));

    const fs::path path = fs::temp_directory_path() / ("brisko-shot-" + std::to_string(std::random_device{}()) + ".png");
    const ProgramResult result = brisko({"screenshot", path.string()});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    const std::optional<RgbaPicture> shot = readPng(path.string());
    fs::remove(path);
    ASSERT_TRUE(shot);
    ASSERT_EQ(shot->width, 1440u);
    ASSERT_EQ(shot->height, 900u);
    int wrong = 0;
    for (std::uint32_t y = 0; y < shot->height; ++y) {
        for (std::uint32_t x = 0; x < shot->width; ++x) {
            // Outside the host's window, exactly the screen (which holds no pointer sprite);
            // inside it, the windows below it and the wallpaper.
            const std::uint32_t expected = !host.contains(x, y) ? shown.rgb(x, y)
                                           : b.contains(x, y)   ? green
                                           : a.contains(x, y)   ? red
                                                                : wallpaper;
            if (shot->rgb(x, y) != expected && ++wrong <= 5) {
                ADD_FAILURE() << "pixel " << x << "," << y << ": " << std::hex << shot->rgb(x, y) << " instead of "
                              << expected;
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(Capture, StreamFollowsEachChangeWithTheCursorDrawnIn) {
    const Box a{100, 100, 400, 300}, b{600, 100, 300, 300};
    WindowClientProcess& app = startClient();
    app.map("a", a.spec(red));
    app.map("b", b.spec(green));
    CaptureStreamProcess stream(display().name());
    const auto showsTheScreen = [&] {
        const RgbaPicture expected = screen->screen();
        return stream.waitForPicture([&](const RgbaPicture& p) { return samePixels(p, expected, 1400, 860, 24); });
    };
    ASSERT_TRUE(showsTheScreen());
    app.paint("a", 0x777777);
    ASSERT_TRUE(showsTheScreen()) << "after repainting a window";
    app.unmap("b");
    ASSERT_TRUE(showsTheScreen()) << "after unmapping a window";
    app.map("c", Box{1000, 500, 100, 100}.spec(0xabcdef));
    ASSERT_TRUE(showsTheScreen()) << "after mapping a window";

    // The cursor is drawn where the pointer is, and follows it.
    EXPECT_FALSE(samePixels(stream.picture(), screen->screen()));
    screen->warpPointer(300, 250);
    EXPECT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return !filled(p, {290, 240, 20, 20}, 0x777777); }));

    stream.closeInput();
    EXPECT_EQ(stream.wait(), 0);
    EXPECT_EQ(stream.errors(), "");
}

TEST_F(Capture, AHostWindowMappedDuringTheStreamDisappearsWithinTheRefresh) {
    const Box a{100, 100, 800, 600}, host{300, 200, 300, 200}, marker{1200, 700, 50, 50};
    WindowClientProcess& app = startClient();
    app.map("a", a.spec(red));
    app.map("marker", marker.spec(0x000001));
    CaptureStreamProcess stream(display().name());
    ASSERT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, a, red); }));

    WindowClientProcess& brisko = startClient(menubarClientPath());
    const auto mapped = CaptureStreamProcess::Clock::now();
    brisko.map("panel", host.spec(hostBlue));
    app.paint("marker", 0x000002);  // a change after the host's window appeared, seen in the same frame or later
    const auto hidden = stream.waitForPicture(
        [&](const RgbaPicture& p) { return filled(p, marker, 0x000002) && filled(p, a, red); }, 5s);
    ASSERT_TRUE(hidden);
    EXPECT_LE(*hidden - mapped, 2500ms);

    // Once the host process has ended, the stream goes on showing every change.
    brisko.unmap("panel");
    app.paint("a", green);
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, a, green); }));
}

TEST_F(Capture, AWindowHiddenUnderTheHostIsSeenChanging) {
    const Box a{350, 250, 100, 100}, host{300, 200, 300, 200};  // nothing of a shows on the screen
    WindowClientProcess& app = startClient();
    app.map("a", a.spec(red));
    startClient(menubarClientPath()).map("panel", host.spec(hostBlue));
    CaptureStreamProcess stream(display().name());
    ASSERT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, a, red); }));
    app.paint("a", green);
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, a, green); }));
}

TEST_F(Capture, EveryFrameOfSmallChangesIsExactlyAFreshPictureOfTheScreen) {
    WindowClientProcess& app = startClient();
    app.map("a", Box{100, 100, 400, 300}.spec(red));
    app.map("b", Box{900, 500, 30, 20}.spec(green));
    CaptureStreamProcess stream(display().name());
    int pointerX = 1400, pointerY = 860;
    const auto showsTheScreen = [&](const std::string& step) {
        const RgbaPicture expected = screen->screen();  // read whole, without the pointer's sprite
        EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return samePixels(p, expected, pointerX, pointerY, 24); }))
            << step;
    };
    showsTheScreen("first frame");
    const std::vector<std::pair<std::string, std::function<void()>>> steps = {
        {"a small window repainted", [&] { app.paint("b", 0x123456); }},
        {"the pointer moved onto a window", [&] { screen->warpPointer(pointerX = 200, pointerY = 200); }},
        {"the window under the pointer repainted", [&] { app.paint("a", 0x654321); }},
        {"the pointer moved off it", [&] { screen->warpPointer(pointerX = 1000, pointerY = 100); }},
        {"a window mapped and another unmapped", [&] { app.map("c", Box{300, 700, 50, 50}.spec(0xabcdef)); app.unmap("b"); }},
    };
    for (const auto& [name, step] : steps) {
        step();
        showsTheScreen(name);
    }
}

TEST_F(Capture, BeneathTheHostIsTheRootWindowsOwnBackground) {
    const Box host{300, 200, 300, 200};
    screen->setRootBackground(0x5a6b7c);
    startClient(menubarClientPath()).map("panel", host.spec(hostBlue));
    CaptureStreamProcess stream(display().name());
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, host, 0x5a6b7c); }));
    screen->setWallpaper(wallpaper);
}

TEST_F(Capture, BeneathTheHostWindowsShowOnlyWhereTheirShapesCover) {
    const Box under{300, 200, 400, 300}, shaped{350, 250, 200, 100}, host{300, 200, 300, 200};
    WindowClientProcess& app = startClient();
    app.map("under", under.spec(red));
    app.map("shaped", shaped.spec(green) + " shape=100,50");
    // The host's panel covers only its top-left 300 x 150: below that, the screen as it is.
    startClient(menubarClientPath()).map("panel", host.spec(hostBlue) + " shape=300,150");
    CaptureStreamProcess stream(display().name());
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) {
        return filled(p, {350, 250, 100, 50}, green) && filled(p, {450, 250, 150, 100}, red) &&
               filled(p, {350, 300, 100, 50}, red) && filled(p, {300, 350, 400, 150}, red);
    }));
}

TEST_F(Capture, BeneathTheHostTranslucentWindowsAreBlendedAsTheCompositingManagerShowsThem) {
    e2e::ChildProcess compositor("/usr/bin/xcompmgr", {}, {{"DISPLAY", display().name()}});
    WindowClientProcess& app = startClient();
    app.map("under", Box{300, 200, 400, 200}.spec(red));
    app.map("glass", Box{300, 200, 400, 200}.spec(0x0000ff) + " alpha=80");
    startClient(menubarClientPath()).map("panel", Box{300, 200, 200, 200}.spec(hostBlue));
    std::uint32_t blended = 0;  // the compositing manager's blend, where no host window lies
    for (int tries = 0; tries < 100 && (blended == 0 || blended == red || blended == 0x000080); ++tries) {
        std::this_thread::sleep_for(50ms);
        blended = screen->screen().rgb(650, 300);
    }
    CaptureStreamProcess stream(display().name());
    const auto near = [](std::uint32_t a, std::uint32_t b) {
        for (int shift = 0; shift < 24; shift += 8) {
            if (std::abs(int(a >> shift & 0xff) - int(b >> shift & 0xff)) > 2) return false;
        }
        return true;
    };
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return near(p.rgb(350, 300), blended); }))
        << std::hex << blended << " " << stream.picture().rgb(350, 300);
}

TEST(CaptureOfADisplayThatChangesSize, GoesOnAtTheNewSizeFromAWholeFrame) {
    const fs::path config = fs::temp_directory_path() / ("brisko-dummy-" + std::to_string(::getpid()) + ".conf");
    std::ofstream(config) << "Section \"Device\"\n Identifier \"d\"\n Driver \"dummy\"\n VideoRam 64000\nEndSection\n"
                             "Section \"Monitor\"\n Identifier \"m\"\n HorizSync 5-1000\n VertRefresh 5-200\n"
                             " Modeline \"1440x900\" 106.5 1440 1528 1672 1904 900 903 909 934\n"
                             " Modeline \"1024x768\" 63.5 1024 1072 1176 1328 768 771 775 798\nEndSection\n"
                             "Section \"Screen\"\n Identifier \"s\"\n Device \"d\"\n Monitor \"m\"\n DefaultDepth 24\n"
                             " SubSection \"Display\"\n Depth 24\n Modes \"1440x900\" \"1024x768\"\n EndSubSection\nEndSection\n";
    e2e::ChildProcess server("/usr/lib/xorg/Xorg", {"-config", config.string(), "-logfile", config.string() + ".log",
                                                    "-nolisten", "tcp", "-noreset", "-displayfd", "1"});
    const std::optional<std::string> number = server.readLine(20s);
    fs::remove(config);
    ASSERT_TRUE(number) << "Xorg with the dummy driver did not start";
    const std::string name = ":" + *number;
    CaptureStreamProcess stream(name);
    ASSERT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return p.width == 1440 && p.height == 900; }));
    const ProgramResult resized = runProgram("/usr/bin/xrandr", {"--output", "DUMMY0", "--mode", "1024x768"}, "", {{"DISPLAY", name}});
    ASSERT_EQ(resized.status, 0) << resized.err;
    EXPECT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return p.width == 1024 && p.height == 768; }));
    WindowClientProcess app(windowClientPath(), name);
    app.map("late", Box{900, 600, 100, 100}.spec(green));
    EXPECT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return filled(p, {900, 600, 100, 100}, green); }));
    stream.closeInput();
    EXPECT_EQ(stream.wait(), 0);
    EXPECT_EQ(stream.errors(), "");
}

// Keeps records coming: a window repainted in a new colour every few milliseconds.
class Repainter {
public:
    explicit Repainter(WindowClientProcess& client) : thread_([this, &client] {
        for (std::uint32_t color = 1; !stop_; ++color) {
            client.paint("busy", color * 0x010203);
            std::this_thread::sleep_for(5ms);
        }
    }) {}
    ~Repainter() {
        stop_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

TEST_F(Capture, EachEndOfTheStreamEndsItWithZeroAndWholeRecords) {
    WindowClientProcess& app = startClient();
    app.map("busy", Box{0, 0, 1440, 900}.spec(1));
    Repainter repainter(app);
    const std::vector<std::pair<std::string, std::function<void(CaptureStreamProcess&)>>> ends = {
        {"end of input", [](CaptureStreamProcess& s) { s.closeInput(); }},
        {"SIGTERM", [](CaptureStreamProcess& s) { s.terminate(); }},
        {"closed output", [](CaptureStreamProcess& s) { s.closeOutput(); }},
    };
    for (const auto& [name, end] : ends) {
        CaptureStreamProcess stream(display().name());
        ASSERT_TRUE(stream.waitForRecords(3)) << name;
        end(stream);
        EXPECT_EQ(stream.wait(), 0) << name;
        EXPECT_EQ(stream.errors(), "") << name;
        if (name == "closed output") continue;
        std::istringstream bytes(stream.bytes());
        decode::CaptureStreamDecoder decoder;
        int records = 0;
        EXPECT_NO_THROW(decode::decodeCaptureStream(bytes, decoder, [&](const decode::FrameRecord&) { ++records; }))
            << name;
        EXPECT_GE(records, 3) << name;
    }
}

}  // namespace
}  // namespace brisko::testing
