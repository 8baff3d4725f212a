// The guard on a real X server: what own-ui reports about the host's windows, and presses aimed at
// them refused with nothing arriving anywhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "support/window_client_process.h"
#include "support/x_servers.h"

namespace brisko::testing {
namespace {

const std::string ownPanel =
    "That's Brisko's own panel; it's for the person, not for you. Carry on with your task \u2014 the person "
    "answers it.";
const std::string refusedKey = "refused a key press while Brisko is frontmost: " + ownPanel;

std::string refusedPress(int x, int y, std::uint32_t window) {
    return "refused a press at (" + std::to_string(x) + "," + std::to_string(y) + ") on window " +
           std::to_string(window) + ": " + ownPanel;
}

// Windows of the host's menu-bar process and of a client that advertises the host's application
// id, among other applications' windows and overlays, stacked front to back as bar, note, popup,
// overlay, through, left, ghost, panel, editor, desk; the panel holds the keyboard.
class HostScene : public ::testing::Test {
protected:
    HostScene() {
        desk = apps.map("desk", "0 0 1440 900 class=Editor");
        editor = apps.map("editor", "100 100 600 400");
        panel = host.map("panel", "900 40 360 500 appid=com.brisko.desktop");  // its id on one window is enough
        ghost = host.map("ghost", "600 600 200 150 opacity=0");  // transparent, still takes presses
        left = host.map("left", "-100 700 300 100");              // partly left of the screen
        through = host.map("through", "300 450 100 50 noinput"); // click-through
        apps.map("overlay", "1200 300 200 100 type=dock");            // half over the panel
        apps.map("popup", "1100 400 100 100 override");        // an open menu, as toolkits make them
        apps.map("note", "150 150 100 50 type=notification");  // over the editor
        bar = menubar.map("bar", "1200 0 240 24 type=dock");
        host.ask("focus panel", "focused");
    }

    std::string windowJson(std::uint32_t id, pid_t pid, int layer, int x, int y, int w, int h) const {
        return "{\"id\":" + std::to_string(id) + ",\"pid\":" + std::to_string(pid) + ",\"layer\":" +
               std::to_string(layer) + ",\"x\":" + std::to_string(x) + ",\"y\":" + std::to_string(y) +
               ",\"w\":" + std::to_string(w) + ",\"h\":" + std::to_string(h) + "}";
    }
    // The report's start, with the host's windows that are not the scene's listed first.
    std::string report(const std::string& more = "", const std::string& keyboard = "true,\"keyboard\":\"brisko\"") const {
        return "{\"excludedPids\":[" + std::to_string(std::min(host.pid(), menubar.pid())) + "," +
               std::to_string(std::max(host.pid(), menubar.pid())) + "],\"briskoWindows\":[" +
               more + windowJson(bar, menubar.pid(), 20, 1200, 0, 240, 24) + "," +
               windowJson(through, host.pid(), 0, 300, 450, 100, 50) + "," +
               windowJson(left, host.pid(), 0, -100, 700, 300, 100) + "," +
               windowJson(ghost, host.pid(), 0, 600, 600, 200, 150) + "," +
               windowJson(panel, host.pid(), 0, 900, 40, 360, 500) + "],\"briskoFrontmost\":" + keyboard;
    }

    // No client received anything since the last look: whatever ran meanwhile posted nothing.
    void expectNothingArrived() {
        for (WindowClientProcess* client : {&apps, &host, &menubar}) EXPECT_EQ(client->events(), std::vector<std::string>{});
    }

    const XvfbDisplay& display = testDisplay();
    WindowClientProcess apps, host, menubar{menubarClientPath()};
    std::uint32_t desk = 0, editor = 0, panel = 0, ghost = 0, left = 0, through = 0, bar = 0;
};

TEST_F(HostScene, OwnUiReportsTheHostWindowsAndWhichPressesWouldBeRefusedAndThoseAreRefusedWithNothingArriving) {
    const std::vector<std::tuple<int, int, std::optional<std::uint32_t>>> presses = {
        {1150, 450, panel},        // through another application's open menu
        {1260, 200, std::nullopt}, // one pixel right of the panel
        {1000, 540, std::nullopt}, // one pixel below it
        {-50, 750, left},
        // The click-through host window over the editor, unless a window manager's frame takes it.
        {350, 470, testDisplayManaged() ? std::optional(through) : std::nullopt},
    };
    for (const auto& [x, y, refusedOn] : presses) {
        const ProgramResult r = runBrisko({"own-ui", std::to_string(x), std::to_string(y)});
        const std::string hit = refusedOn ? "\"refused\":true,\"window\":" + std::to_string(*refusedOn)
                                          : "\"refused\":false,\"window\":null";
        EXPECT_EQ(r.out, report() + "," + hit + "}\n") << x << "," << y;
    }
    const std::vector<std::tuple<std::vector<std::string>, std::string, std::string>> refused = {
        {{"doubleclick", "650", "650"}, "", refusedPress(650, 650, ghost)},
        {{"input-stream"}, "mousedown 1220 350 left\nmouseup 1220 350 left\nkeydown 0 none\nkeyup 0 none\n",
         "input-stream: ignoring line 'mousedown 1220 350 left': " + refusedPress(1220, 350, panel) +
             "\nbrisko-mac-input: input-stream: ignoring line 'keydown 0 none': " + refusedKey},
    };
    for (const auto& [args, input, message] : refused) {
        const ProgramResult r = runBrisko(args, input);
        EXPECT_EQ(r.status, input.empty() ? 2 : 0) << args[0];
        EXPECT_EQ(r.err, "brisko-mac-input: " + message + "\n") << args[0];
        expectNothingArrived();
    }
}

TEST_F(HostScene, KeysGoWhereTheInputFocusIsWhateverStandsInFrontUnlessAHostMenuIsOpen) {
    apps.ask("focus editor", "focused");  // behind the host's windows
    expectOutput({"key", "a"});
    EXPECT_EQ(linesOf(apps.events(), "keypress").size(), 1u);
    apps.map("front", "850 20 500 600");  // another application's window over the host's panel
    host.ask("focus panel", "focused");
    EXPECT_EQ(runBrisko({"key", "a"}).err, "brisko-mac-input: " + refusedKey + "\n");
    expectNothingArrived();
    const auto menu = host.map("menu", "400 200 150 200 override");
    EXPECT_EQ(runBrisko({"own-ui"}).out,
              report(windowJson(menu, host.pid(), 101, 400, 200, 150, 200) + ",", "false,\"keyboard\":\"menu\"") + "}\n");
    EXPECT_EQ(runBrisko({"key", "a"}).err,
              "brisko-mac-input: refused a key press: a person has Brisko's menu open; wait and check the screen "
              "again. Your keys would go to the menu, not to the app you are typing in.\n");
    expectNothingArrived();
}

// Without the X-Resource extension the server names no owners: windows are known by the pid they
// claim, and the first time some claim none the program says so.
TEST(GuardWithoutXResource, KnowsTheHostByTheClaimedPidAndSaysOnceThatOthersAreUnknown) {
    const XvfbDisplay server(1440, 900, {"-extension", "X-Resource"});
    WindowClientProcess menubar(menubarClientPath(), server.name()), apps(windowClientPath(), server.name());
    const auto bar = menubar.map("bar", "0 0 200 30");
    apps.map("silent", "300 300 100 100 nopid");
    const std::string refused = "brisko-mac-input: input-stream: ignoring line 'mousedown 10 10 left': " +
                                refusedPress(10, 10, bar) + "\n";
    const ProgramResult r = runBrisko({"input-stream"}, "mousedown 10 10 left\nmousedown 10 10 left\n",
                                      {{"DISPLAY", server.name()}});
    EXPECT_EQ(r.err, "brisko-mac-input: windows whose owner is unknown are not guarded: the X server has no "
                     "X-Resource extension, and they set no _NET_WM_PID\n" + refused + refused);
}

}  // namespace
}  // namespace brisko::testing
