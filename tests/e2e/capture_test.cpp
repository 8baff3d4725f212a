// screenshot and capture-stream against a real X server: windows of known colours, some of them
// owned by a process named like the host's menu-bar process, which must never be seen.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <memory>
#include <thread>

#include <xcb/xcb.h>

#include "support/capture_stream_process.h"
#include "support/window_client_process.h"
#include "support/x_servers.h"

namespace brisko::testing {
namespace {

constexpr std::uint32_t red = 0xd02010;
constexpr std::uint32_t green = 0x10c040;
constexpr std::uint32_t hostBlue = 0x2040ff;

struct Box {
    int x, y, width, height;
    std::string spec(std::uint32_t color) const {
        char text[64];
        std::snprintf(text, sizeof text, "%d %d %d %d color=%06x", x, y, width, height, unsigned(color));
        return text;
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

// The whole screen as the server holds it, without the pointer's sprite.
RgbaPicture screenPixels() {
    xcb_connection_t* c = xcb_connect(nullptr, nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    const std::uint16_t width = screen->width_in_pixels, height = screen->height_in_pixels;
    xcb_get_image_reply_t* reply = xcb_get_image_reply(
        c, xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, 0, 0, width, height, ~0u), nullptr);
    RgbaPicture picture{width, height, std::vector<std::uint8_t>(std::size_t{width} * height * 4, 255)};
    const std::uint8_t* bgrx = reply ? xcb_get_image_data(reply) : nullptr;
    for (std::size_t i = 0; bgrx && i < std::size_t{width} * height; ++i) {
        for (int channel = 0; channel < 3; ++channel) picture.rgba[i * 4 + channel] = bgrx[i * 4 + 2 - channel];
    }
    std::free(reply);
    xcb_disconnect(c);
    return picture;
}

// Whether the pictures have the same pixels outside the square of half-size 24 around the
// pointer, where the stream draws the cursor.
bool sameOutsideTheCursor(const RgbaPicture& a, const RgbaPicture& b, int pointerX = 1400, int pointerY = 860) {
    if (a.width != b.width || a.height != b.height) return false;
    for (std::uint32_t y = 0; y < a.height; ++y) {
        for (std::uint32_t x = 0; x < a.width; ++x) {
            const bool cursor = std::abs(int(x) - pointerX) <= 24 && std::abs(int(y) - pointerY) <= 24;
            if (!cursor && a.rgb(x, y) != b.rgb(x, y)) return false;
        }
    }
    return true;
}

class Capture : public ::testing::Test {
protected:
    Capture() {
        app.ask("wallpaper 203040", "wallpaper");
        app.ask("warp 1400 860", "warped");
    }

    const XvfbDisplay& display = testDisplay();
    WindowClientProcess app;
};

TEST_F(Capture, EveryRecordOfAChangeShowsTheScreenAsItIsWithTheCursorDrawnIn) {
    app.map("a", Box{100, 100, 400, 300}.spec(red));
    app.map("b", Box{900, 500, 30, 20}.spec(green));
    CaptureStreamProcess stream;
    int pointerX = 1400, pointerY = 860;
    const auto warp = [&](int x, int y) { app.ask("warp " + std::to_string(pointerX = x) + " " + std::to_string(pointerY = y), "warped"); };
    const std::vector<std::pair<std::string, std::function<void()>>> steps = {
        {"the first record", [] {}},
        {"a small window repainted", [&] { app.paint("b", 0x123456); }},
        {"the pointer moved onto a window", [&] { warp(200, 200); }},
        {"the window under the pointer repainted", [&] { app.paint("a", 0x654321); }},
        {"the pointer moved off it", [&] { warp(1000, 100); }},
        {"a window mapped and another unmapped", [&] {
             app.map("c", Box{300, 700, 50, 50}.spec(0xabcdef));
             app.unmap("b");
         }},
    };
    for (const auto& [name, step] : steps) {
        step();
        const RgbaPicture expected = screenPixels();
        EXPECT_TRUE(stream.waitForPicture(
            [&](const RgbaPicture& p) { return sameOutsideTheCursor(p, expected, pointerX, pointerY); }))
            << name;
    }
}

TEST_F(Capture, AHostWindowIsLeftOutWithinTheRefreshOfItsAppearingAndWhatItHidesIsSeenChanging) {
    const Box a{100, 100, 800, 600}, host{300, 200, 300, 200}, hidden{350, 250, 100, 100}, marker{1200, 700, 50, 50};
    app.map("a", a.spec(red));
    app.map("marker", marker.spec(0x000001));
    CaptureStreamProcess stream;
    ASSERT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, a, red); }));

    WindowClientProcess brisko(menubarClientPath());
    const auto mapped = CaptureStreamProcess::Clock::now();
    brisko.map("panel", host.spec(hostBlue));
    app.paint("marker", 0x000002);  // a change after the host's window appeared, seen in the same frame or later
    const auto left = stream.waitForPicture(
        [&](const RgbaPicture& p) { return filled(p, marker, 0x000002) && filled(p, a, red); }, 5s);
    ASSERT_TRUE(left);
    EXPECT_LE(*left - mapped, 2500ms);

    app.map("hidden", hidden.spec(green));  // entirely under the host's window
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, hidden, green); }));
}

TEST_F(Capture, BeneathTheHostIsTheRootWindowsOwnBackgroundAndWindowsOnlyWhereTheirShapesCover) {
    const Box host{300, 200, 300, 200};
    app.ask("background 5a6b7c", "background");
    WindowClientProcess brisko(menubarClientPath());
    brisko.map("panel", host.spec(hostBlue));
    {
        CaptureStreamProcess stream;
        EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, host, 0x5a6b7c); }));
        app.ask("background 102030", "background");  // read afresh for every frame
        EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, host, 0x102030); }));
    }
    brisko.unmap("panel");
    app.map("under", Box{300, 200, 400, 300}.spec(red));
    app.map("shaped", Box{350, 250, 200, 100}.spec(green) + " shape=100,50");
    // The host's panel covers only its top-left 300 x 150: below that, the screen as it is. A new
    // stream makes its first frame with the shaped windows there, not from pixels an earlier frame kept.
    brisko.map("shaped-panel", host.spec(hostBlue) + " shape=300,150");
    CaptureStreamProcess stream;
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) {
        return filled(p, {350, 250, 100, 50}, green) && filled(p, {450, 250, 150, 100}, red) &&
               filled(p, {350, 300, 100, 50}, red) && filled(p, {300, 350, 400, 150}, red);
    }));
}

TEST_F(Capture, BeneathTheHostTranslucentWindowsAreBlendedAsTheCompositingManagerShowsThem) {
    Process compositor("xcompmgr", {}, {}, Streams::detached);
    app.map("under", Box{300, 200, 400, 200}.spec(red));
    app.map("glass", Box{300, 200, 400, 200}.spec(0x0000ff) + " alpha=80");
    WindowClientProcess brisko(menubarClientPath());
    brisko.map("panel", Box{300, 200, 200, 200}.spec(hostBlue));
    // Beneath the host, the compositing manager's blend as the screen shows it where no host window
    // lies: both red and blue, not the background or one window alone, which show while it starts.
    const auto mixed = [](std::uint32_t rgb) { return (rgb >> 16 & 0xff) > 0x18 && (rgb & 0xff) > 0x18; };
    const auto near = [](std::uint32_t a, std::uint32_t b) {
        for (int shift = 0; shift < 24; shift += 8) {
            if (std::abs(int(a >> shift & 0xff) - int(b >> shift & 0xff)) > 2) return false;
        }
        return true;
    };
    CaptureStreamProcess stream;
    EXPECT_TRUE(stream.waitForPicture(
        [&](const RgbaPicture& p) { return mixed(p.rgb(650, 300)) && near(p.rgb(350, 300), p.rgb(650, 300)); }))
        << std::hex << stream.picture().rgb(650, 300) << " " << stream.picture().rgb(350, 300);
}

// A window's owner can change with no change to the window tree: here its pid, claimed after it
// was mapped on a server that names no owners itself (no X-Resource extension), by a host process
// whose other window is left out already.
TEST(CaptureOfAWindowWhoseOwnerIsKnownLate, LeavesItOutOnceItIsKnown) {
    const XvfbDisplay server(1440, 900, {"-extension", "X-Resource"});
    const Box host{300, 200, 300, 200};
    WindowClientProcess brisko(menubarClientPath(), server.name());
    brisko.map("bar", Box{0, 0, 200, 30}.spec(hostBlue));
    brisko.map("panel", host.spec(hostBlue) + " nopid");
    CaptureStreamProcess stream(server.name());
    ASSERT_TRUE(stream.waitForPicture(
        [&](const RgbaPicture& p) { return filled(p, host, hostBlue) && p.rgb(100, 15) != hostBlue; }));
    brisko.paint("panel", 0x2040fe);  // seen in a frame made after everything before it
    ASSERT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return filled(p, host, 0x2040fe); }));
    brisko.ask("claim panel", "claimed");
    EXPECT_TRUE(stream.waitForPicture([&](const RgbaPicture& p) { return p.rgb(450, 300) != 0x2040fe; }));
}

TEST(CaptureOfADisplayThatChangesSize, GoesOnAtTheNewSizeFromAWholeFrame) {
    const DummyXorgDisplay server({"1440x900", "1024x768"});
    CaptureStreamProcess stream(server.name());
    ASSERT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return p.width == 1440 && p.height == 900; }));
    const ProgramResult resized = server.xrandr({"--output", "DUMMY0", "--mode", "1024x768"});
    ASSERT_EQ(resized.status, 0) << resized.err;
    EXPECT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return p.width == 1024 && p.height == 768; }));
    WindowClientProcess app(windowClientPath(), server.name());
    app.map("late", Box{900, 600, 100, 100}.spec(green));
    EXPECT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return filled(p, {900, 600, 100, 100}, green); }));
}

TEST(CaptureStart, EndOfInputOrSigtermWhileTheStartWaitsForTheDisplayEndsItAtOnceWithZero) {
    testDisplay();
    for (const bool terminate : {false, true}) {
        // Another client holds the server, so the start waits for it.
        const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> holder(xcb_connect(nullptr, nullptr),
                                                                                  &xcb_disconnect);
        xcb_grab_server(holder.get());
        std::free(xcb_get_input_focus_reply(holder.get(), xcb_get_input_focus(holder.get()), nullptr));
        Process stream(programPath(), {"capture-stream"});
        ASSERT_TRUE(stream.waitForOutput(std::string("BCS2\x02\x00\x00\x00", 8)));
        if (terminate) stream.signal(SIGTERM);
        else stream.closeInput();
        EXPECT_EQ(stream.wait(2s), 0) << (terminate ? "SIGTERM" : "end of input");
    }
}

TEST_F(Capture, EachEndOfTheStreamEndsItWithZeroAndWholeRecords) {
    app.map("busy", Box{0, 0, 1440, 900}.spec(1));
    // Keeps records coming: the window repainted in a new colour every few milliseconds.
    std::atomic<bool> stop{false};
    std::thread repainter([&] {
        for (std::uint32_t color = 1; !stop; ++color) {
            app.paint("busy", color * 0x010203);
            std::this_thread::sleep_for(5ms);
        }
    });
    for (const bool terminate : {true, false}) {
        CaptureStreamProcess stream;
        ASSERT_TRUE(stream.waitForRecords(3)) << terminate;
        if (terminate) stream.terminate();
        else stream.closeOutput();
        EXPECT_EQ(stream.wait(), 0) << terminate;
        EXPECT_EQ(stream.errors(), "") << terminate;
        if (terminate) {  // nothing reads what comes after a closed output
            EXPECT_EQ(stream.streamFault(), "");
        }
    }
    stop = true;
    repainter.join();
}

}  // namespace
}  // namespace brisko::testing
