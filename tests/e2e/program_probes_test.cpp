// The probes of the built program on a real X server, on one without XTEST and without any, and
// what every command that needs the display does without one; the main display of several.
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "support/capture_stream_process.h"
#include "support/png_image.h"
#include "support/window_client_process.h"
#include "support/x_servers.h"

namespace brisko::testing {
namespace {

TEST(ProgramProbes, ReportTheDisplayAndTheModifiersAndScreenSaverOnIt) {
    testDisplay();
    expectOutput({"check"}, "screen=1 input=1\n");
    const std::pair<std::vector<std::string>, std::string> steps[] = {
        {{"keydown", "58", "cmd,shift,alt,ctrl"}, "hid=0x001E0000 modifiers=0x001E0000 baseline=0\n"},
        {{"keyup", "55", "none"}, "hid=0x00000000 modifiers=0x00000000 baseline=1\n"},
        {{"keydown", "57", "none"}, "hid=0x00010000 modifiers=0x00010000 baseline=0\n"},  // caps lock on
        {{"keyup", "57", "none"}, "hid=0x00010000 modifiers=0x00010000 baseline=0\n"},
        {{"keydown", "57", "none"}, "hid=0x00010000 modifiers=0x00010000 baseline=0\n"},
        {{"keyup", "57", "none"}, "hid=0x00000000 modifiers=0x00000000 baseline=1\n"},  // and off again
    };
    for (const auto& [command, flags] : steps) {
        expectOutput(command);
        expectOutput({"check-flags"}, flags);
    }
    WindowClientProcess client;
    client.ask("saver on", "saver");
    expectOutput({"session"}, "{\"locked\":true,\"displayAsleep\":false,\"console\":true,\"loggedIn\":true}\n");
    client.ask("saver off", "saver");
    expectOutput({"session"}, "{\"locked\":false,\"displayAsleep\":false,\"console\":true,\"loggedIn\":true}\n");
}

TEST(ProgramProbes, HeldModifiersAreReadThroughTheServersModifierMap) {
    const XvfbDisplay server(640, 480);
    const Environment on = {{"DISPLAY", server.name()}};
    // Alt and Super swap their usual modifier bits.
    ASSERT_EQ(runProgram("xmodmap", {"-e", "clear mod1", "-e", "clear mod4", "-e", "add mod3 = Super_L Super_R", "-e",
                                     "add mod4 = Alt_L Alt_R"}, "", on).status, 0);
    const std::tuple<std::string, std::string, std::string> held[] = {{"55", "cmd", "0x00100000"},
                                                                       {"58", "alt", "0x00080000"}};
    for (const auto& [key, name, flags] : held) {
        expectOutput({"keydown", key, name}, "", on);
        expectOutput({"check-flags"}, "hid=" + flags + " modifiers=" + flags + " baseline=0\n", on);
        expectOutput({"keyup", key, "none"}, "", on);
    }
}

TEST(ProgramProbes, WithoutXtestInputIsNotPermittedAndNothingIsPosted) {
    const XvfbDisplay server(1440, 900, {"-extension", "XTEST"});
    expectOutput({"check"}, "screen=1 input=0\n", {{"DISPLAY", server.name()}});
    const ProgramResult r = runBrisko({"move", "1", "1"}, "", {{"DISPLAY", server.name()}});
    EXPECT_EQ(std::tuple(r.status, r.err), std::tuple(2, "brisko-mac-input: failed to create CGEvent\n"));
}

TEST(ProgramWithoutDisplay, EveryCommandSaysWhatItCanAndFailsWhereItNeedsTheDisplay) {
    const Environment nowhere = {{"DISPLAY", ":32765"}};
    const std::string shot = (std::filesystem::temp_directory_path() / "brisko-no-display.png").string();
    const std::string listFailure = "ScreenCaptureKit could not list displays (cannot connect to X display :32765)";
    // The command line, its exit status, output and error output.
    const std::vector<std::tuple<std::vector<std::string>, int, std::string, std::string>> cases = {
        {{"check"}, 0, "screen=0 input=0\n", ""},
        {{"check-flags"}, 0, "hid=0x00000000 modifiers=0x00000000 baseline=1\n", ""},
        {{"session"}, 0, "{\"locked\":false,\"displayAsleep\":false,\"console\":false,\"loggedIn\":false}\n", ""},
        {{"geometry"}, 2, "", "brisko-mac-input: CGDisplayCopyDisplayMode failed\n"},
        {{"move", "10", "10"}, 2, "", "brisko-mac-input: failed to create CGEvent\n"},
        {{"get-clipboard", "public.utf8-plain-text"}, 0, "{\"changeCount\":0,\"types\":[],\"items\":[]}\n", ""},
        {{"set-clipboard", "aGk="}, 0, "", ""},
        {{"clipboard-access"}, 0, "{\"access\":\"allow\"}\n", ""},
        // The clipboard owner's own mode takes its contents from a socket only.
        {{"serve-clipboard-handed-over"}, 2, "", "brisko-mac-input: unknown command 'serve-clipboard-handed-over'\n"},
        {{"own-ui"}, 2, "", "brisko-mac-input: own-ui: " + listFailure + "\n"},
        {{"screenshot", shot}, 2, "", "brisko-mac-input: screenshot: " + listFailure + ". Is Screen Recording granted?\n"},
    };
    std::filesystem::remove(shot);
    for (const auto& [args, status, out, err] : cases) {
        const ProgramResult r = runBrisko(args, "", nowhere);
        EXPECT_EQ(std::tuple(r.status, r.out, r.err), std::tuple(status, out, err)) << args[0];
    }
    EXPECT_FALSE(std::filesystem::exists(shot));
}

// Two monitors side by side, the primary one on the right: its top-left corner is where points and
// window bounds count from, and its size is the display's for every command.
TEST(MainDisplay, IsThePrimaryMonitorForGeometryPicturesPointsAndTheGuard) {
    const DummyXorgDisplay server({"1280x1024"}, {{2560, 1024}});
    ASSERT_EQ(server.xrandr({"--addmode", "DUMMY1", "1024x768"}).status, 0);
    const ProgramResult monitors = server.xrandr({"--output", "DUMMY0", "--mode", "1280x1024", "--pos", "0x0", "--output",
                                                  "DUMMY1", "--mode", "1024x768", "--pos", "1280x0", "--primary"});
    ASSERT_EQ(monitors.status, 0) << monitors.err;
    const Environment env = {{"DISPLAY", server.name()}};
    expectOutput({"geometry"}, "1024 768 1024 768\n", env);
    WindowClientProcess app(windowClientPath(), server.name()), menubar(menubarClientPath(), server.name());
    app.map("left", "0 0 1280 1024 color=d02010");
    app.map("main", "1280 0 1024 768 color=10c040");
    const std::string bar = std::to_string(menubar.map("bar", "1380 100 50 40"));
    expectOutput({"click", "10", "20"}, "", env);
    EXPECT_EQ(linesOf(app.events(), "press"), std::vector<std::string>{"press main 1 1290 20 none"});
    expectOutput({"own-ui", "110", "110"},
                 "{\"excludedPids\":[" + std::to_string(menubar.pid()) + "],\"briskoWindows\":[{\"id\":" + bar +
                     ",\"pid\":" + std::to_string(menubar.pid()) + ",\"layer\":0,\"x\":100,\"y\":100,\"w\":50,\"h\":40}],"
                     "\"briskoFrontmost\":false,\"keyboard\":\"other\",\"refused\":true,\"window\":" + bar + "}\n",
                 env);
    const std::string path = (std::filesystem::temp_directory_path() / ("brisko-main-" + server.name().substr(1) + ".png")).string();
    expectOutput({"screenshot", path}, "", env);
    const std::optional<RgbaPicture> shot = readPng(path);
    std::filesystem::remove(path);
    ASSERT_TRUE(shot);
    // The main window everywhere: the host's bar is left out, and no cursor is drawn where it clicked.
    EXPECT_EQ(std::tuple(shot->width, shot->height), std::tuple(1024u, 768u));
    std::size_t others = 0;
    for (std::uint32_t i = 0; i < shot->width * shot->height; ++i) {
        others += shot->rgb(i % shot->width, i / shot->width) != 0x10c040u;
    }
    EXPECT_EQ(others, 0u);
    CaptureStreamProcess stream(server.name());
    EXPECT_TRUE(stream.waitForPicture([](const RgbaPicture& p) { return p.width == 1024 && p.height == 768; }));
}

}  // namespace
}  // namespace brisko::testing
