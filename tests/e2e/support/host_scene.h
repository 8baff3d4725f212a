#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "support/x11_display_test.h"

namespace brisko::testing {

inline const std::string ownPanel =
    "That's Brisko's own panel; it's for the person, not for you. Carry on with your task \u2014 the person "
    "answers it.";
inline const std::string menuOpen =
    "a person has Brisko's menu open; wait and check the screen again. Your keys would go to the menu, not to the "
    "app you are typing in.";

inline std::string refusedPress(int x, int y, xcb_window_t window) {
    return "refused a press at (" + std::to_string(x) + "," + std::to_string(y) + ") on window " +
           std::to_string(window) + ": " + ownPanel;
}

inline const std::string refusedKey = "refused a key press while Brisko is frontmost: " + ownPanel;

// The scene: windows of the host's menu-bar process and of a client that advertises the host's
// application id, among other applications' windows and overlays, stacked front to back as
// bar, note, popup, overlay, through, left, ghost, panel, editor, desk.
class HostScene : public X11DisplayTest {
protected:
    void SetUp() override {
        apps = &startClient();
        desk = apps->map("desk", "0 0 1440 900 class=Editor");
        editor = apps->map("editor", "100 100 600 400");
        host = &startClient();  // the host application: its id on one of its windows is enough
        panel = host->map("panel", "900 40 360 500 appid=com.brisko.desktop");
        ghost = host->map("ghost", "600 600 200 150 opacity=0");  // transparent, still takes presses
        left = host->map("left", "-100 700 300 100");              // partly left of the screen
        through = host->map("through", "300 450 100 50 noinput"); // click-through
        overlay = apps->map("overlay", "1200 300 200 100 type=dock");            // half over the panel
        popup = apps->map("popup", "1100 400 100 100 type=popup_menu override"); // an open menu
        note = apps->map("note", "150 150 100 50 type=notification");           // over the editor
        menubar = &startClient(menubarClientPath());
        bar = menubar->map("bar", "1200 0 240 24 type=dock");
    }

    std::string windowJson(xcb_window_t id, pid_t pid, int layer, int x, int y, int w, int h) const {
        return "{\"id\":" + std::to_string(id) + ",\"pid\":" + std::to_string(pid) + ",\"layer\":" +
               std::to_string(layer) + ",\"x\":" + std::to_string(x) + ",\"y\":" + std::to_string(y) +
               ",\"w\":" + std::to_string(w) + ",\"h\":" + std::to_string(h) + "}";
    }

    std::string excludedJson() const {
        const auto low = std::min(host->pid(), menubar->pid());
        const auto high = std::max(host->pid(), menubar->pid());
        return "{\"excludedPids\":[" + std::to_string(low) + "," + std::to_string(high) + "]";
    }

    std::string sceneWindowsJson() const {
        return windowJson(bar, menubar->pid(), 20, 1200, 0, 240, 24) + "," +
               windowJson(through, host->pid(), 0, 300, 450, 100, 50) + "," +
               windowJson(left, host->pid(), 0, -100, 700, 300, 100) + "," +
               windowJson(ghost, host->pid(), 0, 600, 600, 200, 150) + "," +
               windowJson(panel, host->pid(), 0, 900, 40, 360, 500);
    }

    // Clicks the editor and checks that this click is the first thing any client received
    // since the last check: whatever ran before it posted nothing.
    void expectNothingArrivedBefore() {
        const auto result = brisko({"click", "300", "300"});
        ASSERT_EQ(result.status, 0) << result.err;
        const auto seen = apps->eventsUntil([](const std::string& line) { return line.rfind("release", 0) == 0; });
        EXPECT_EQ(seen, (std::vector<std::string>{"press editor 1 300 300", "release editor 1 300 300"}));
        EXPECT_EQ(apps->sync(), std::vector<std::string>{});
        EXPECT_EQ(host->sync(), std::vector<std::string>{});
        EXPECT_EQ(menubar->sync(), std::vector<std::string>{});
    }

    WindowClientProcess* apps = nullptr;
    WindowClientProcess* host = nullptr;
    WindowClientProcess* menubar = nullptr;
    xcb_window_t desk = 0, editor = 0, panel = 0, ghost = 0, left = 0, through = 0, overlay = 0, popup = 0,
                 note = 0, bar = 0;
};

}  // namespace brisko::testing
