#include <unistd.h>

#include <cstring>
#include <string>

#include <xcb/xcb.h>

#include "backend/x11_server_fixture.h"
#include "support/test_window.h"

namespace brisko::testing {
namespace {

using platform::Rect;
using platform::ScreenWindow;

class X11WindowServerTest : public X11Server {
protected:
    void raise(xcb_window_t w) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(own, w, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));
    }
};

TEST_F(X11WindowServerTest, ListsViewableWindowsFrontToBackWithOuterBoundsInRootCoordinates) {
    auto& client = startClient();
    const auto a = client.map("a", "10 20 200 100");
    const auto b = client.map("b", "-50 300 120 80 border=3");
    const auto c = client.map("c", "100 50 300 200");
    const auto hidden = client.map("hidden", "0 0 50 50");
    client.unmap("hidden");

    auto list = listed({a, b, c, hidden});
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].windowID, c);
    EXPECT_EQ(list[1].windowID, b);
    EXPECT_EQ(list[2].windowID, a);
    EXPECT_EQ(list[0].bounds, (Rect{100, 50, 300, 200}));
    EXPECT_EQ(list[1].bounds, (Rect{-50, 300, 126, 86}));  // the border takes presses too
    EXPECT_EQ(list[2].bounds, (Rect{10, 20, 200, 100}));

    raise(a);
    list = listed({a, b, c});
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].windowID, a);
    EXPECT_EQ(list[1].windowID, c);
    EXPECT_EQ(list[2].windowID, b);
}

TEST_F(X11WindowServerTest, OwnersAreTheProcessesTheServerKnowsNotWhatWindowsClaim) {
    auto& ordinary = startClient();
    auto& menubar = startClient(menubarClientPath());
    const auto plain = ordinary.map("plain", "0 0 100 100");
    const auto shell = menubar.map("shell", "200 0 100 30");
    // A claim of another pid changes nothing.
    const std::uint32_t claimed = static_cast<std::uint32_t>(::getpid());
    xcb_change_property(own, XCB_PROP_MODE_REPLACE, plain, atomNamed(own, "_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1,
                        &claimed);
    xcb_flush(own);

    const auto list = listed({plain, shell});
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].windowID, shell);
    EXPECT_EQ(list[0].ownerPID, menubar.pid());
    EXPECT_EQ(list[1].ownerPID, ordinary.pid());

    const auto shellPath = windows.executablePath(menubar.pid());
    ASSERT_TRUE(shellPath);
    EXPECT_TRUE(shellPath->ends_with("/brisko-mac-menubar")) << *shellPath;
    const auto plainPath = windows.executablePath(ordinary.pid());
    ASSERT_TRUE(plainPath);
    EXPECT_TRUE(plainPath->ends_with("/window_client")) << *plainPath;
    EXPECT_EQ(windows.executablePath(-1), std::nullopt);
}

TEST_F(X11WindowServerTest, AlphaIsZeroOnlyForWindowsThatTakeNoInput) {
    struct Case {
        std::string options;
        double low, high;
    };
    const std::vector<Case> cases = {
        {"", 1.0, 1.0},
        {"opacity=0.5", 0.4999, 0.5001},
        {"opacity=0", 1e-12, 1e-9},  // transparent but still takes presses
        {"noinput", 0.0, 0.0},
        {"noinput opacity=1", 0.0, 0.0},
    };
    auto& client = startClient();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto id = client.map("w" + std::to_string(i), "10 10 50 50 " + cases[i].options);
        const auto w = listedWindow(id);
        ASSERT_TRUE(w) << cases[i].options;
        EXPECT_GE(w->alpha, cases[i].low) << cases[i].options;
        EXPECT_LE(w->alpha, cases[i].high) << cases[i].options;
    }
}

TEST_F(X11WindowServerTest, LayersFollowWindowTypeAndState) {
    struct Case {
        std::string options;
        std::optional<std::int64_t> layer;  // absent: not listed
    };
    const std::vector<Case> cases = {
        {"", 0},
        {"type=normal", 0},
        {"type=dialog", 0},
        {"above", 3},
        {"type=menu", 3},  // torn off
        {"type=dock", 20},
        {"type=dock above", 20},
        {"type=popup_menu", 101},
        {"type=dropdown_menu", 101},
        {"type=combo", 101},
        {"type=menu override", 101},
        {"type=popup_menu override", 101},
        {"override", 0},
        {"type=notification", 102},
        {"type=tooltip override", 200},
        {"type=dnd override", 500},
        {"type=desktop", std::nullopt},
    };
    auto& client = startClient();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto id = client.map("w" + std::to_string(i), "10 10 50 50 " + cases[i].options);
        const auto w = listedWindow(id);
        EXPECT_EQ(w.has_value(), cases[i].layer.has_value()) << cases[i].options;
        if (w && cases[i].layer) {
            EXPECT_EQ(w->layer, *cases[i].layer) << cases[i].options;
        }
    }
    EXPECT_EQ(windows.popUpMenuLayer(), 101);
}

TEST_F(X11WindowServerTest, BundleIdentifierIsTheApplicationIdTheProcessAdvertises) {
    auto& gtk = startClient();
    gtk.map("main", "0 0 100 100 class=Other appid=com.brisko.desktop");
    auto& classOnly = startClient();
    classOnly.map("main", "0 0 100 100 class=Gedit");
    auto& silent = startClient();
    silent.map("main", "0 0 100 100");
    auto& split = startClient();  // the id on a window that is not on screen still counts
    split.map("main", "0 0 100 100 class=Split");
    split.map("leader", "0 0 10 10 appid=org.example.Split");
    split.unmap("leader");

    EXPECT_EQ(windows.bundleIdentifier(gtk.pid()), "com.brisko.desktop");
    EXPECT_EQ(windows.bundleIdentifier(classOnly.pid()), "Gedit");
    EXPECT_EQ(windows.bundleIdentifier(silent.pid()), std::nullopt);
    EXPECT_EQ(windows.bundleIdentifier(split.pid()), "org.example.Split");
    EXPECT_EQ(windows.bundleIdentifier(::getpid()), std::nullopt);  // this process has no window
}

// What a reparenting window manager does: a frame of its own (here: of this test) around the
// client's window, which gets WM_STATE.
TEST_F(X11WindowServerTest, ReparentedWindowsAreTheClientsWithTheFramesBounds) {
    auto& client = startClient();
    const auto direct = client.map("direct", "10 10 380 260");
    const auto nested = client.map("nested", "10 10 200 100");

    const auto makeFrame = [&](xcb_window_t parent, int x, int y, int w, int h, int border) {
        const xcb_window_t frame = xcb_generate_id(own);
        xcb_create_window(own, XCB_COPY_FROM_PARENT, frame, parent, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), static_cast<std::uint16_t>(w), static_cast<std::uint16_t>(h),
                          static_cast<std::uint16_t>(border), XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0,
                          nullptr);
        return frame;
    };
    const xcb_atom_t wmState = atomNamed(own, "WM_STATE");
    const std::uint32_t normalState[] = {1, XCB_NONE};
    const auto manage = [&](xcb_window_t clientWindow, xcb_window_t into, int x, int y) {
        xcb_reparent_window(own, clientWindow, into, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
        xcb_change_property(own, XCB_PROP_MODE_REPLACE, clientWindow, wmState, wmState, 32, 2, normalState);
    };
    const xcb_window_t frame = makeFrame(screen->root, 200, 150, 400, 300, 1);
    manage(direct, frame, 10, 30);
    const xcb_window_t outer = makeFrame(screen->root, -40, 500, 240, 160, 0);
    const xcb_window_t wrapper = makeFrame(outer, 5, 25, 220, 120, 0);
    manage(nested, wrapper, 0, 0);
    const xcb_window_t panel = makeFrame(screen->root, 0, 0, 1440, 24, 0);  // the manager's own
    // Stacked as created: panel in front, then outer, then frame.
    for (const xcb_window_t w : {wrapper, outer, frame, panel}) xcb_map_window(own, w);
    std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));

    const auto list = listed({direct, nested, frame, outer, wrapper, panel});
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].windowID, panel);
    EXPECT_EQ(list[0].ownerPID, ::getpid());
    EXPECT_EQ(list[1].windowID, nested);
    EXPECT_EQ(list[1].ownerPID, client.pid());
    EXPECT_EQ(list[1].bounds, (Rect{-40, 500, 240, 160}));
    EXPECT_EQ(list[2].windowID, direct);
    EXPECT_EQ(list[2].ownerPID, client.pid());
    EXPECT_EQ(list[2].bounds, (Rect{200, 150, 402, 302}));

    // The client's properties are read through the frame.
    const xcb_window_t popup = makeFrame(screen->root, 300, 300, 100, 100, 0);
    const auto menu = client.map("menu", "0 0 90 90 type=popup_menu opacity=0.25");
    manage(menu, popup, 0, 0);
    xcb_map_window(own, popup);
    std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));
    const auto framed = listedWindow(menu);
    ASSERT_TRUE(framed);
    EXPECT_EQ(framed->layer, 101);
    EXPECT_NEAR(framed->alpha, 0.25, 1e-6);
    EXPECT_EQ(framed->bounds, (Rect{300, 300, 100, 100}));
}

TEST_F(X11WindowServerTest, AnInputOnlyWindowIsNotListed) {
    const xcb_window_t w = xcb_generate_id(own);
    xcb_create_window(own, 0, w, screen->root, 0, 0, 500, 500, 0, XCB_WINDOW_CLASS_INPUT_ONLY, screen->root_visual, 0,
                      nullptr);
    xcb_map_window(own, w);
    std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));
    EXPECT_TRUE(listed({w}).empty());
}

}  // namespace
}  // namespace brisko::testing
