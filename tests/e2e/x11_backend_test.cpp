// The X backend's window inventory and capture in the test's own process, so that a fault shows
// which fact is wrong, with a connection of the test's own for doing what a window manager or
// another client would.
#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <unistd.h>

#include <xcb/xcb.h>

#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_screen_capture.h"
#include "backends/x11/x11_window_server.h"
#include "support/window_client_process.h"
#include "support/x_servers.h"

namespace brisko::testing {
namespace {

using platform::Rect;
using platform::ScreenWindow;
using Clock = std::chrono::steady_clock;

class X11Backend : public ::testing::Test {
protected:
    ~X11Backend() override { xcb_disconnect(own); }

    void setCardinals(xcb_window_t w, const std::string& name, const std::vector<std::uint32_t>& values) {
        const auto length = static_cast<std::uint16_t>(name.size());
        auto* atom = xcb_intern_atom_reply(own, xcb_intern_atom(own, 0, length, name.c_str()), nullptr);
        xcb_change_property(own, XCB_PROP_MODE_REPLACE, w, atom->atom, XCB_ATOM_CARDINAL, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
        std::free(atom);
    }
    // Mapped at once; override-redirect: a window manager that runs leaves the test's windows alone.
    xcb_window_t makeWindow(xcb_window_t parent, Rect r, int border, std::uint16_t windowClass = XCB_WINDOW_CLASS_INPUT_OUTPUT) {
        const xcb_window_t w = xcb_generate_id(own);
        const std::uint32_t overrideRedirect = 1;
        xcb_create_window(own, XCB_COPY_FROM_PARENT, w, parent, std::int16_t(r.x), std::int16_t(r.y),
                          std::uint16_t(r.width), std::uint16_t(r.height), std::uint16_t(border), windowClass,
                          screen->root_visual, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
        xcb_map_window(own, w);
        return w;
    }

    // The inventory restricted to the given windows, in its order.
    std::vector<ScreenWindow> listed(const std::set<std::uint32_t>& ids) {
        std::vector<ScreenWindow> mine;
        for (const auto& w : windows.onScreenWindows()) {
            if (ids.contains(w.windowID)) mine.push_back(w);
        }
        return mine;
    }

    const XvfbDisplay& display = testDisplay();
    xcb_connection_t* own = xcb_connect(display.name().c_str(), nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(own)).data;
    WindowClientProcess client;
    platform::x11::X11Connection connection;
    platform::x11::X11WindowServer windows{connection};
    platform::x11::X11ScreenCapture capture{connection, windows};
};

TEST_F(X11Backend, ExecutablePathsAreTheFilesTheProcessesRunEvenWhenReplacedSince) {
    EXPECT_EQ(windows.executablePath(-1), std::nullopt);
    // An executable replaced on disk since its process started (the system marks it deleted).
    const auto copy = std::filesystem::temp_directory_path() / ("brisko-replaced-" + std::to_string(::getpid()));
    std::filesystem::copy_file(menubarClientPath(), copy);
    WindowClientProcess replaced(copy.string());
    replaced.ask("sync", "synced");  // running the copy
    std::filesystem::remove(copy);
    std::filesystem::copy_file(menubarClientPath(), copy);
    EXPECT_EQ(windows.executablePath(replaced.pid()), copy.string());
    std::filesystem::remove(copy);
}

TEST_F(X11Backend, TheLayerFollowsTheWindowsTypeAndStateAndAWindowWithoutOpacityIsOpaque) {
    // The client's options and the window's layer (absent: not listed).
    const std::vector<std::pair<std::string, std::optional<std::int64_t>>> cases = {
        {"above", 3},
        {"type=dock above", 20},
        {"type=dialog", 0},
        {"type=menu", 3},  // a torn-off menu floats
        {"type=popup_menu", 101},
        {"type=dropdown_menu", 101},
        {"type=combo", 101},
        {"type=menu override", 101},
        {"type=notification", 102},
        {"type=dnd", 500},
        {"type=tooltip override", 200},
        {"type=desktop", std::nullopt},
    };
    int mapped = 0;
    for (const auto& [options, layer] : cases) {
        const auto list = listed({client.map("w" + std::to_string(mapped++), "10 10 50 50 " + options)});
        ASSERT_EQ(list.size(), layer ? 1u : 0u) << options;
        if (list.empty()) continue;
        EXPECT_NEAR(list[0].alpha, 1.0, 1e-6) << options;
        EXPECT_EQ(list[0].layer, *layer) << options;
    }
}

TEST_F(X11Backend, TheBundleIdentifierIsTheApplicationIdTheProcessAdvertises) {
    WindowClientProcess classOnly, silent, split;
    client.map("main", "0 0 100 100 class=Other appid=com.brisko.desktop");
    classOnly.map("main", "0 0 100 100 class=Gedit");
    silent.map("main", "0 0 100 100");
    split.map("main", "0 0 100 100 class=Split");
    split.map("leader", "0 0 10 10 appid=org.example.Split");  // still counts when not on screen
    split.unmap("leader");
    EXPECT_EQ(windows.bundleIdentifier(client.pid()), "com.brisko.desktop");
    EXPECT_EQ(windows.bundleIdentifier(classOnly.pid()), "Gedit");
    EXPECT_EQ(windows.bundleIdentifier(silent.pid()), std::nullopt);
    EXPECT_EQ(windows.bundleIdentifier(split.pid()), "org.example.Split");

    const auto content = capture.shareableContent();
    ASSERT_TRUE(content.content);
    std::map<std::int32_t, std::vector<std::string>> byPid;
    for (const auto& app : content.content->applications) byPid[app.processID].push_back(app.bundleIdentifier);
    EXPECT_EQ(byPid[silent.pid()], std::vector<std::string>{""});
    EXPECT_EQ(byPid[split.pid()], std::vector<std::string>{"org.example.Split"}) << "each owner once";
}

// Viewable windows that show something, front to back, with their outer bounds (the border takes
// presses too) and the owner the server names, whatever pid they claim. What a reparenting window
// manager does: a frame of its own (here: of this test, which becomes the manager unless one runs)
// around the client's window, which gets WM_STATE once managed.
TEST_F(X11Backend, TheWindowTreeGivesViewableClientsWithTheFramesBoundsAndTheServersOwner) {
    const auto bordered = client.map("bordered", "-50 300 120 80 border=3 override");
    const auto hidden = client.map("hidden", "0 0 50 50 override");
    client.unmap("hidden");
    const xcb_window_t inputOnly = makeWindow(screen->root, {0, 0, 500, 500}, 0, XCB_WINDOW_CLASS_INPUT_ONLY);
    const std::uint32_t redirect = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;  // refused when a manager runs
    std::free(xcb_request_check(own, xcb_change_window_attributes_checked(own, screen->root, XCB_CW_EVENT_MASK, &redirect)));
    const auto direct = client.map("direct", "10 10 380 260 override");
    // A claim of another pid changes nothing.
    setCardinals(direct, "_NET_WM_PID", {static_cast<std::uint32_t>(::getpid())});
    const auto nested = client.map("nested", "10 10 200 100 override");
    const auto menu = client.map("menu", "0 0 90 90 type=popup_menu opacity=0.25 override");
    const auto late = client.map("late", "0 0 50 50 override");
    const auto manage = [&](xcb_window_t clientWindow, xcb_window_t into, int x, int y, bool marked = true) {
        xcb_reparent_window(own, clientWindow, into, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
        if (marked) setCardinals(clientWindow, "WM_STATE", {1, XCB_NONE});  // normal
    };
    const xcb_window_t frame = makeWindow(screen->root, {200, 150, 400, 300}, 1);
    manage(direct, frame, 10, 30);
    const xcb_window_t outer = makeWindow(screen->root, {-40, 500, 240, 160}, 0);
    const xcb_window_t wrapper = makeWindow(outer, {5, 25, 220, 120}, 0);
    manage(nested, wrapper, 0, 0);
    const xcb_window_t popup = makeWindow(screen->root, {300, 300, 100, 100}, 0);
    manage(menu, popup, 0, 0);
    const xcb_window_t decoratedEarly = makeWindow(screen->root, {700, 300, 70, 80}, 0);  // no WM_STATE yet
    manage(late, makeWindow(decoratedEarly, {5, 25, 60, 50}, 0), 0, 0, false);
    const xcb_window_t panel = makeWindow(screen->root, {0, 0, 1440, 24}, 0);  // the manager's own
    std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));  // all of it done

    const auto list = listed({direct, nested, menu, late, frame, outer, wrapper, popup, decoratedEarly, panel, bordered,
                              hidden, inputOnly});
    // Front to back: each window's id, owner and bounds.
    const std::vector<std::tuple<std::uint32_t, pid_t, Rect>> expected = {
        {panel, ::getpid(), {0, 0, 1440, 24}},        {late, client.pid(), {700, 300, 70, 80}},
        {menu, client.pid(), {300, 300, 100, 100}},   {nested, client.pid(), {-40, 500, 240, 160}},
        {direct, client.pid(), {200, 150, 402, 302}}, {bordered, client.pid(), {-50, 300, 126, 86}}};
    ASSERT_EQ(list.size(), expected.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_EQ(std::tuple(list[i].windowID, list[i].ownerPID, list[i].bounds), expected[i]) << "window " << i;
    }
    EXPECT_EQ(list[2].layer, 101);
    EXPECT_NEAR(list[2].alpha, 0.25, 1e-6);
}

// When each frame of a stream came; each must be complete.
struct FrameTimes final : platform::FrameStreamOutput {
    bool didOutputFrame(const platform::BgraFrameView&, platform::FrameStatus status) override {
        EXPECT_EQ(status, 0);
        const std::lock_guard guard(lock);
        times.push_back(Clock::now());
        arrived.notify_all();
        return true;
    }
    void didStopWithError(const std::string&) override { ADD_FAILURE() << "the stream stopped"; }
    // The times so far, once there are at least count of them or the timeout has passed.
    std::vector<Clock::time_point> await(std::size_t count, std::chrono::milliseconds timeout = 5s) {
        std::unique_lock guard(lock);
        arrived.wait_for(guard, timeout, [&] { return times.size() >= count; });
        return times;
    }

    std::mutex lock;
    std::condition_variable arrived;
    std::vector<Clock::time_point> times;
};

TEST_F(X11Backend, FramesAreTakenOnlyAfterChangesAndAtMostFifteenTimesASecond) {
    client.map("busy", "0 0 400 400 color=000000");
    const platform::CaptureDisplay whole = capture.shareableContent().content->displays.front();
    FrameTimes frames;
    const auto stream = capture.makeFrameStream({whole, {}}, {{whole.width, whole.height}, 1.0 / 15.0, true, 3});
    ASSERT_EQ(stream->addOutput(frames), std::nullopt);
    ASSERT_EQ(stream->startCapture(), std::nullopt);
    ASSERT_FALSE(frames.await(1).empty());
    // Still: at most the redraw that redirecting the windows causes, instead of 22 frames.
    const std::size_t still = frames.await(4, 1500ms).size();
    EXPECT_LT(still, 4u);
    for (std::uint32_t color = 1; frames.await(0, 0ms).size() < still + 10; ++color) client.paint("busy", color);
    stream->stop();
    const auto times = frames.await(0, 0ms);
    // Frames are taken an interval (67 ms) apart, but each is delivered once it is made, which on a
    // busy machine can bring two together: the nine intervals after stillness are measured as one.
    EXPECT_GE(times[still + 9] - times[still], 450ms);
}

}  // namespace
}  // namespace brisko::testing
