// input-stream of the built program against a real X server: raw commands whose held flags
// carry from line to line, play blocks that finish, and blocks that are stopped.
#include <gtest/gtest.h>

#include <cstdlib>

#include "e2e/support/recording_window.h"
#include "support/run_program.h"
#include "support/running_program.h"
#include "support/xvfb_display.h"

namespace brisko::e2e {
namespace {

using testing::ProgramResult;
using testing::RunningProgram;

const std::string banner = "brisko-mac-input input-stream v2\n";

class ProgramStream : public ::testing::Test {
protected:
    // The program inherits the display from the test's environment.
    ProgramStream() { ::setenv("DISPLAY", server.name().c_str(), 1); }

    ProgramResult runStream(const std::string& input) {
        return testing::runProgram(testing::programPath(), {"input-stream"}, input);
    }
    void expectNothingHeld() {
        const HeldState now = window.held();
        EXPECT_EQ(now.keys, "none");
        EXPECT_EQ(now.state, "none");
    }

    testing::XvfbDisplay server;
    RecordingWindow window{server.name(), {{100, 100, 800, 500}}};
};

TEST_F(ProgramStream, AHeldModifierCarriesIntoALaterClick) {
    const ProgramResult r = runStream(
        "keydown 56 shift\n"
        "mousedown 300 300 left\n"
        "mouseup 300 300 left\n"
        "keyup 56 none\n"
        "mousedown 320 300 left ctrl,alt\n"
        "mouseup 320 300 left none\n");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, banner);
    EXPECT_EQ(r.err, "");
    const auto lines = window.events();
    EXPECT_EQ(linesOf(lines, "press"), (std::vector<std::string>{"press 0 1 300 300 shift", "press 0 1 320 300 ctrl+alt"}));
    EXPECT_EQ(linesOf(lines, "release"),
              (std::vector<std::string>{"release 0 1 300 300 shift+button1", "release 0 1 320 300 button1"}));
    expectNothingHeld();
}

TEST_F(ProgramStream, TypedCodePointsArriveAsText) {
    const ProgramResult r = runStream("type-unicode 48\ntype-unicode E9\ntype-unicode 4E2D\ntype-unicode 1F600\n");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(typedText(window.events()), "H\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80");
}

TEST_F(ProgramStream, APlayBlockRunsToItsEndAndAnswersOk) {
    RunningProgram stream(testing::programPath(), {"input-stream"});
    ASSERT_TRUE(stream.waitForOut(banner));
    stream.write(
        "play tap 300 5\n"
        "0 mousemove 200 200\n"
        "50 mousedown 200 200 left\n"
        "80 mousemove 240 220 left\n"
        "120 mouseup 240 220 left\n"
        "150 type-unicode 263A\n");
    ASSERT_TRUE(stream.waitForOut(banner + "played tap ok 0\n"));
    stream.closeInput();
    const ProgramResult r = stream.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, banner + "played tap ok 0\n");
    EXPECT_EQ(r.err, "");
    const auto lines = window.events();
    EXPECT_EQ(linesOf(lines, "motion"), (std::vector<std::string>{"motion 0 200 200 none", "motion 0 240 220 button1"}));
    EXPECT_EQ(linesOf(lines, "press"), std::vector<std::string>{"press 0 1 200 200 none"});
    EXPECT_EQ(linesOf(lines, "release"), std::vector<std::string>{"release 0 1 240 220 button1"});
    EXPECT_EQ(typedText(lines), "\xE2\x98\xBA");
    expectNothingHeld();
}

TEST_F(ProgramStream, AStoppedBlockReleasesTheKeyAndButtonItHeld) {
    RunningProgram stream(testing::programPath(), {"input-stream"});
    ASSERT_TRUE(stream.waitForOut(banner));
    stream.write(
        "play hold 60000 2\n"
        "0 keydown 56 shift\n"
        "0 mousedown 250 250 left\n");
    EXPECT_EQ(window.waitFor("press"), "press 0 1 250 250 shift");
    const HeldState holding = window.held();
    EXPECT_NE(holding.keys, "none");
    EXPECT_EQ(holding.state, "shift+button1");
    stream.write("stop hold\n");
    ASSERT_TRUE(stream.waitForOut(banner + "played hold cancelled 0\n"));
    EXPECT_EQ(linesOf(window.events(), "release"), std::vector<std::string>{"release 0 1 250 250 shift+button1"});
    expectNothingHeld();
    stream.closeInput();
    EXPECT_EQ(stream.finish().status, 0);
}

TEST_F(ProgramStream, EndOfInputCancelsAPlayingBlockAndReleasesWhatItHeld) {
    RunningProgram stream(testing::programPath(), {"input-stream"});
    ASSERT_TRUE(stream.waitForOut(banner));
    stream.write("play long 60000 2\n0 keydown 59 ctrl\n0 mousedown 260 260 right\n");
    window.waitFor("press");
    stream.closeInput();
    const ProgramResult r = stream.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, banner + "played long cancelled 0\n");
    EXPECT_EQ(linesOf(window.events(), "release"), std::vector<std::string>{"release 0 3 260 260 ctrl+button3"});
    expectNothingHeld();
}

}  // namespace
}  // namespace brisko::e2e
