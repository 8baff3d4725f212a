// check, check-flags, geometry and session of the built program on a real X server, and without one.
#include <gtest/gtest.h>

#include "e2e/support/recording_window.h"
#include "support/run_program.h"
#include "support/xvfb_display.h"

namespace brisko::e2e {
namespace {

using testing::ProgramResult;

ProgramResult runOn(const std::string& display, const std::vector<std::string>& args) {
    return testing::runProgram(testing::programPath(), args, "", {{"DISPLAY", display}});
}

void expectOutput(const std::string& display, const std::vector<std::string>& args, const std::string& out) {
    const ProgramResult r = runOn(display, args);
    EXPECT_EQ(r.status, 0) << args[0] << ": " << r.err;
    EXPECT_EQ(r.out, out) << args[0];
    EXPECT_EQ(r.err, "") << args[0];
}

TEST(ProgramProbes, ReportTheVirtualDisplay) {
    testing::XvfbDisplay server(1280, 720);
    expectOutput(server.name(), {"check"}, "screen=1 input=1\n");
    expectOutput(server.name(), {"check", "--prompt"}, "screen=1 input=1\n");
    expectOutput(server.name(), {"geometry"}, "1280 720 1280 720\n");
    expectOutput(server.name(), {"check-flags"}, "hid=0x00000000 modifiers=0x00000000 baseline=1\n");
    expectOutput(server.name(), {"session"}, "{\"locked\":false,\"displayAsleep\":false,\"console\":true,\"loggedIn\":true}\n");
}

TEST(ProgramProbes, CheckFlagsSeesModifiersHeldOnTheServer) {
    testing::XvfbDisplay server;
    // A client that stays, as on any desktop: a server whose last client leaves resets its keyboard.
    RecordingWindow window(server.name(), {{0, 0, 10, 10}});
    const std::pair<std::vector<std::string>, std::string> steps[] = {
        {{"keydown", "56", "shift"}, "hid=0x00020000 modifiers=0x00020000 baseline=0\n"},
        {{"keydown", "55", "cmd,shift"}, "hid=0x00120000 modifiers=0x00120000 baseline=0\n"},
        {{"keyup", "55", "shift"}, "hid=0x00020000 modifiers=0x00020000 baseline=0\n"},
        {{"keyup", "56", "none"}, "hid=0x00000000 modifiers=0x00000000 baseline=1\n"},
        {{"keydown", "57", "none"}, "hid=0x00010000 modifiers=0x00010000 baseline=0\n"},  // caps lock on
    };
    for (const auto& [command, flags] : steps) {
        ASSERT_EQ(runOn(server.name(), command).status, 0) << command[0];
        expectOutput(server.name(), {"check-flags"}, flags);
    }
}

TEST(ProgramProbes, TheSessionIsLockedWhileTheScreenSaverRuns) {
    testing::XvfbDisplay server;
    RecordingWindow window(server.name(), {{0, 0, 10, 10}});
    window.ask("saver on", "saver");
    expectOutput(server.name(), {"session"}, "{\"locked\":true,\"displayAsleep\":false,\"console\":true,\"loggedIn\":true}\n");
}

TEST(ProgramProbes, WithoutXtestInputIsNotPermitted) {
    testing::XvfbDisplay server(1440, 900, {"-extension", "XTEST"});
    expectOutput(server.name(), {"check"}, "screen=1 input=0\n");
}

TEST(ProgramProbes, WithoutADisplayNothingIsAvailable) {
    const std::string nowhere = ":32765";
    expectOutput(nowhere, {"check"}, "screen=0 input=0\n");
    expectOutput(nowhere, {"session"}, "{\"locked\":false,\"displayAsleep\":false,\"console\":false,\"loggedIn\":false}\n");
    const ProgramResult geometry = runOn(nowhere, {"geometry"});
    EXPECT_EQ(geometry.status, 2);
    EXPECT_EQ(geometry.out, "");
    EXPECT_EQ(geometry.err, "brisko-mac-input: CGDisplayCopyDisplayMode failed\n");
}

}  // namespace
}  // namespace brisko::e2e
