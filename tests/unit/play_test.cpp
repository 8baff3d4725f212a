// Play blocks over the fake: reading and refusing them, the plan of play-check, the player on the
// fake clock, the release plan, and the input-stream reader.
#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "play/lift_argvs.h"
#include "play/play_clock.h"
#include "play/player.h"
#include "stream/input_stream.h"
#include "support/deferred_queue.h"
#include "support/journal_text.h"
#include "support/process.h"

namespace brisko {
namespace {

using nlohmann::json;
using testing::eventText;
using testing::journalText;
using Texts = std::vector<std::string>;

const std::string malformedHeader = "malformed header (usage: play <id> <durationMs \u2264 600000> <n \u2264 120000>)";
const std::string banner = "brisko-mac-input input-stream v2\n";

// play-check's plan of the input: its JSON, or the failure message prefixed with "!".
json planOf(const std::string& input) {
    fake::FakePlatform platform;
    if (platform.run({"play-check"}, input) != 0) return "!" + platform.streams.err();
    EXPECT_EQ(platform.streams.err(), "");
    return json::parse(platform.streams.out());
}

json refused(const std::string& reason) { return {{"id", "b"}, {"refused", reason}}; }

TEST(PlayCheck, ARefusedBlockIsItsRefusalAndAnAcceptedOneItsWaitsAndWhatItWouldLeavePressed) {
    const auto block = [](std::int64_t duration, json lines, json waits = nullptr, json lift = nullptr) {
        json plan = {{"id", "b"}, {"durationMs", duration}, {"lines", std::move(lines)}};
        if (!waits.is_null()) plan["waits"] = std::move(waits);
        if (!lift.is_null()) plan["lift"] = std::move(lift);
        return plan;
    };
    const json none = json::array();
    const json keydown = {{{"t", 10}, {"argv", {"keydown", "55", "cmd"}}},
                          {{"t", 40}, {"argv", {"keydown", "0", "cmd"}}}};
    std::vector<std::pair<std::string, json>> cases = {
        {"play\n", {{"refused", malformedHeader}}},
        {"play b 10 3\n0 keyup 1 none\n1 keyup 2 none\n", refused("the block ended after 2 of 3 lines")},
        {"play b 10 1\n5\tkeyup 1 none\n", refused("line 1: expected a non-negative integer t, got '5\tkeyup 1 none'")},
        {"play b 10 2\n0 keyup 1 none\n  4  \n", refused("line 2: no command after t in '  4  '")},
        {"play b 10 1\n9223372036854775808 keyup 1 none\n",
         refused("line 1: expected a non-negative integer t, got '9223372036854775808 keyup 1 none'")},
        {"play b 10 1\n\n", refused("line 1: expected a non-negative integer t, got ''")},
        {"play b 10 1\n0 KeyDown 1 none\n", refused("line 1: unknown raw command 'KeyDown'")},
        // The first fault found is the one reported, and the duration is checked last.
        {"play b 10 2\n5 keyup 1 none\n4 click\n", refused("line 2: unknown raw command 'click'")},
        {"play b 10 2\n0 keyup 1 none\n11 click\n", refused("line 2: unknown raw command 'click'")},
        {"play b 10 2\n5 keyup 1 none\n4 keyup 1 none\n", refused("line 2: t 4 goes backwards after 5")},
        {"play b 10 1\n20 keyup 55 none\n", refused("durationMs 10 ends before the last line's t 20")},
        // Option lines after a refused block are not read, not even bad ones.
        {"play b 10 1\n0 click\nclock 1\nran 9\n", refused("line 1: unknown raw command 'click'")},
        {"play b 0 0\n", block(0, none)},
        {"play b 100 2\n10 keydown 55 cmd\n40   keydown  0 cmd \nclock 1000 1000 1015 1060\nran 2\n",
         block(100, keydown, {10, 25, 40}, {{"keyup", "0", "cmd"}, {"keyup", "55", "none"}})},
        // Non-numeric readings are skipped; the last option of each kind wins; other lines are ignored.
        {"play b 50 1\n20 mousedown 1 2 left\nclock 0 x 5 7 y\nclock 1 2 3\nran 0\nran 1\nclock\n clock 1\nnoise\n",
         block(50, {{{"t", 20}, {"argv", {"mousedown", "1", "2", "left"}}}}, {19, 48},
               {{"mouseup", "1", "2", "left"}})},
        // Readings in any strtod form; fractions stay fractions; too large still counts.
        {"play b 10 0\nclock 0x10 2.5e1\n", block(10, none, {1})},
        {"play b 10 0\nclock 1\nran 5\nclock 1 2\nran 0\n", block(10, none, {9}, none)},  // a bad option replaced
        {"play b 10 0\nclock 0.5 8\n", block(10, none, {2.5})},
        {"play b 10 0\nclock 1 1e999\n", block(10, none, {0})},
        {"play b 10 0\r\nran +0\r\n", block(10, none, nullptr, none)},
        {"play b 10 0\nclock 1 2 3\n", "!brisko-mac-input: play-check: a clock needs 2 readings, got 3\n"},
        {"play b 10 0\nclock  1\t2\n", "!brisko-mac-input: play-check: a clock needs 2 readings, got 0\n"},
        {"play b 10 1\n0 keyup 1 none\nran 2\n",
         "!brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 1, got 'ran 2'\n"},
        {"play b 10 0\nran -1\n", "!brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran -1'\n"},
        {"play b 10 0\nran  0\n", "!brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran  0'\n"},
        {"play b 10 0\nclock inf 0\n", "!brisko-mac-input: play-check: could not encode the plan\n"},  // no JSON form
        {"", "!brisko-mac-input: play-check: no block\n"},
        {"Play b 1 0\n", "!brisko-mac-input: play-check: expected a `play` header, got 'Play b 1 0'\n"},
    };
    for (const char* input : {"play b 600001 1\n", "play b 10 120001\n", "play b +5 1\n", "play b 10 1.0\n"}) {
        cases.push_back({input, refused(malformedHeader)});
    }
    for (const auto& [input, plan] : cases) EXPECT_EQ(planOf(input), plan) << input;
    // Integral waits are written without a fraction, and "/" escaped, as the platform's writer does.
    fake::FakePlatform platform;
    EXPECT_EQ(platform.run({"play-check"}, "play a/b 10 1\n0 set-clipboard x/y\xFF\n"), 0);
    EXPECT_EQ(platform.streams.out(), "{\"durationMs\":10,\"id\":\"a\\/b\",\"lines\":[{\"argv\":[\"set-clipboard\","
                                      "\"x\\/y\xEF\xBF\xBD\"],\"t\":0}]}\n");
}

TEST(LiftArgvs, ReleasesWhatIsStillHeldInPlanOrder) {
    using Plan = std::vector<Argv>;
    const std::vector<std::tuple<std::string, Plan, Plan>> cases = {
        {"everything pressed was released",
         {{"mousedown", "1", "2", "left"}, {"keydown", "56", "shift"}, {"keydown", "4", "shift"},
          {"keyup", "4", "shift"}, {"keyup", "56", "none"}, {"mouseup", "1", "2", "left"}},
         {}},
        {"a key pressed twice is released once", {{"keydown", "4", "none"}, {"keydown", "4", "none"}},
         {{"keyup", "4", "none"}}},
        {"every modifier name, in the canonical order of flags",
         {{"keydown", "63", "fn"}, {"keydown", "62", ""}, {"keydown", "58", ""}, {"keydown", "60", ""},
          {"keydown", "54", ""}, {"keydown", "9", ""}},
         {{"keyup", "9", "cmd,shift,alt,ctrl,fn"}, {"keyup", "54", "shift,alt,ctrl,fn"}, {"keyup", "60", "alt,ctrl,fn"},
          {"keyup", "58", "ctrl,fn"}, {"keyup", "62", "fn"}, {"keyup", "63", "none"}}},
        {"two keys of one modifier name", {{"keydown", "55", "cmd"}, {"keydown", "54", "cmd"}},
         {{"keyup", "54", "cmd"}, {"keyup", "55", "none"}}},
        {"key codes are compared as text", {{"keydown", "055", "cmd"}, {"keydown", "0x37", "cmd"}, {"keyup", "55", "none"}},
         {{"keyup", "055", "none"}, {"keyup", "0x37", "none"}}},
        {"buttons are released at the last position, in the order of their latest press",
         {{"mousedown", "1", "2", "right"}, {"mousedown", "3", "4", "left"}, {"mousemove", "5", "6", "left"},
          {"mousedown", "7", "8", "right"}},
         {{"mouseup", "7", "8", "left"}, {"mouseup", "7", "8", "right"}}},
        {"a release of another button, or of another spelling, leaves the pressed one",
         {{"mousedown", "1", "2", "Left"}, {"mouseup", "1", "2", "middle"}, {"mouseup", "1", "2", "left"}},
         {{"mouseup", "1", "2", "Left"}}},
        {"short argvs and other commands change nothing",
         {{"mousemove", "9", "9"}, {"mousedown", "1", "2"}, {"keydown"}, {}, {"type-unicode", "41"}, {"scroll", "up", "1"}},
         {}},
    };
    fake::FakePlatform platform;
    for (const auto& [what, ran, lifts] : cases) EXPECT_EQ(liftArgvs(ran), lifts) << what;
}

class Player : public ::testing::Test {
protected:
    Player() { processState().postPacingMicroseconds = 0; }

    PlayResult play(std::int64_t durationMs, const Texts& lines, const IsStopped& stopped) {
        return playBlock(parsePlayBlock("b", durationMs, lines), stopped);
    }
    // Stops once the fake clock has passed the offset from now.
    IsStopped stopAfter(double ms) {
        const double at = monotonicMs() + ms;
        return [this, at] { return platform.clock.monotonicMs() >= at; };
    }

    fake::FakePlatform platform;
    const IsStopped never = [] { return false; };
};

TEST_F(Player, LinesRunAtTheirOffsetsFromTheStartWaitingInSlicesOfFiveMilliseconds) {
    EXPECT_EQ(play(30, {"0 keydown 4 none", "10 keydown 5 none", "10 keyup 5 none", "12 keydown 6 none"}, never),
              (PlayResult{0, PlayEnd::finished}));
    EXPECT_EQ(journalText(platform.journal), (Texts{"keydown 4", "pause 5000", "pause 5000", "keydown 5", "keyup 5",
                                                    "pause 2000", "keydown 6", "pause 5000", "pause 5000", "pause 5000",
                                                    "pause 3000"}));
    // Slow commands do not shift later lines: the line at 5 is late after the 10 ms pause and runs at once.
    fake::FakePlatform paced;
    EXPECT_EQ(paced.run({"play"}, "play t 40 3\n0 keydown 4 none\n5 keyup 4 none\n25 keydown 5 none\nkeydown 9 none\n"), 0);
    EXPECT_EQ(paced.streams.out(), "played t ok 0\n");
    EXPECT_EQ(journalText(paced.journal), (Texts{"keydown 4", "pause 10000", "keyup 4", "pause 10000", "pause 5000",
                                                 "keydown 5", "pause 10000", "pause 5000"}));
}

TEST_F(Player, FailingLinesAreReportedCountedAndLeftOutOfWhatAStopReleases) {
    EXPECT_EQ(play(100, {"0 keydown 55 cmd", "0 mousedown 10 20 left cmd", "1 mousedown 10", "5 keydown x none",
                         "10 mousemove 30 40 left", "15 keydown 4 cmd", "50 keyup 4 cmd"},
                   stopAfter(20)),
              (PlayResult{2, PlayEnd::cancelled}));
    EXPECT_EQ(platform.streams.err(),
              "brisko-mac-input: play b: line 'mousedown 10': usage: mousedown X Y left|middle|right [flags]\n"
              "brisko-mac-input: play b: line 'keydown x none': expected a CGKeyCode integer, got 'x'\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"flags 55 cmd", "leftdown 10,20 #1 cmd", "leftdrag 30,40 cmd",
                                                  "keydown 4 cmd", "leftup 30,40 #1 cmd", "keyup 4 cmd", "flags 55"}));
}

// The wait for the first line checks once and finds its target reached; a stop seen at the check
// after it, just as the wait ends, still cancels the block before the line runs.
TEST_F(Player, AStopThatComesJustAsAWaitEndsIsSeenBeforeTheLineRuns) {
    int checks = 0;
    EXPECT_EQ(play(100, {"0 keydown 4 none"}, [&] { return ++checks >= 2; }).end, PlayEnd::cancelled);
    EXPECT_EQ(eventText(platform.journal), Texts{});
}

TEST(PlayCommand, AMissingOrRefusedBlockEndsItWithStatusTwo) {
    const std::vector<std::tuple<std::string, std::string, std::string>> failures = {
        {"", "", "play: no block on stdin"},
        {"\n", "", "play: expected a `play` header, got ''"},
        {"played b 1 0\n", "", "play: expected a `play` header, got 'played b 1 0'"},
        {"play\n", "", "play: refused a block with no id: " + malformedHeader},
        {"play b 10\n", "played b refused " + malformedHeader + "\n", "play: refused b: " + malformedHeader},
    };
    for (const auto& [input, out, err] : failures) {
        fake::FakePlatform fresh;
        EXPECT_EQ(fresh.run({"play"}, input), 2) << input;
        EXPECT_EQ(fresh.streams.out(), out) << input;
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: " + err + "\n") << input;
    }
}

TEST(PlayClock, SleepsRoundUpToWholeMicroseconds) {
    fake::FakePlatform platform;
    sleepMs(0);
    sleepMs(-3);
    sleepMs(0.0004);
    sleepMs(1.5);
    EXPECT_TRUE(waitUntil(monotonicMs() + 0.0001, [] { return false; }));  // a fraction of a microsecond away
    EXPECT_EQ(journalText(platform.journal), (Texts{"pause 1", "pause 1500", "pause 1"}));
}

// The input-stream reader over a queue that runs nothing before the end of input: every block is
// stopped by then, so blocks answer cancelled before any of their commands runs, and only what
// the reader does at once (stops) comes before what the queue does.
TEST(InputStreamReader, WorkIsQueuedInArrivalOrderAndStopsAndBadLinesAreHandledAtOnce) {
    const std::string ignoring = "input-stream: ignoring ";
    // The input, the answers, the warnings and the events.
    const std::vector<std::tuple<std::string, std::string, Texts, Texts>> cases = {
        {"keydown 4 none\nplay a 100 1\n0 keydown 5 none\nstop a\nplay x 1\nstop x\nkeyup 4 none\n",
         "played a cancelled 0\nplayed x refused " + malformedHeader + "\n",
         {"input-stream: nothing to stop for line 'stop x'", "play: refused x: " + malformedHeader},
         {"keydown 4", "keyup 4"}},
        {"  mousedown   10 \nhello there\nStop x\nkeydown 4 none\nmousemove 1 2 Left\n\n   \nstop\n  stop   x  \n", "",
         {"input-stream: nothing to stop for line 'stop'", "input-stream: nothing to stop for line '  stop   x  '",
          ignoring + "line '  mousedown   10 ': usage: mousedown X Y left|middle|right [flags]",
          ignoring + "unknown command in line 'hello there'", ignoring + "unknown command in line 'Stop x'",
          ignoring + "line 'mousemove 1 2 Left': unknown held button 'Left' (want left|middle|right|none)"},
         {"keydown 4"}},
        // A refused header leaves its body to be read as ordinary lines.
        {"play b 10 2 extra\n0 keydown 4 none\n", "played b refused " + malformedHeader + "\n",
         {"play: refused b: " + malformedHeader, ignoring + "unknown command in line '0 keydown 4 none'"}, {}},
    };
    for (const auto& [input, out, warnings, events] : cases) {
        fake::FakePlatform platform;
        processState().postPacingMicroseconds = 0;
        std::istringstream in(input);
        testing::DeferredQueue player;
        serveInputStream(in, player);
        EXPECT_EQ(platform.streams.out(), out) << input;
        std::string err;
        for (const std::string& line : warnings) err += "brisko-mac-input: " + line + "\n";
        EXPECT_EQ(platform.streams.err(), err) << input;
        EXPECT_EQ(eventText(platform.journal), events) << input;
    }
}

TEST(InputStreamProgram, TerminationEndsAtOnceWithStatusZeroAndAClosedOutputEndsNothing) {
    testing::Process terminated(testing::programPath(), {"input-stream"});
    ASSERT_TRUE(terminated.waitForOutput(banner));
    terminated.write("play a 600000 0\n");
    terminated.signal(SIGTERM);
    EXPECT_EQ(terminated.finish().status, 0);
    EXPECT_EQ(terminated.finish().out, banner);  // the playing block is not answered

    testing::Process unread(testing::programPath(), {"input-stream"});
    unread.closeOutput();
    unread.write("play a 0 0\nplay b 10\nhello\n");
    unread.closeInput();
    const testing::ProgramResult r = unread.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.err.find("brisko-mac-input: input-stream: ignoring unknown command in line 'hello'\n"), std::string::npos)
        << r.err;
}

}  // namespace
}  // namespace brisko
