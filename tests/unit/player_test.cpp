#include <gtest/gtest.h>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "play/player.h"
#include "support/journal_text.h"

namespace brisko {
namespace {

using testing::eventText;
using testing::journalText;
using Texts = std::vector<std::string>;

const auto never = [] { return false; };

class Player : public ::testing::Test {
protected:
    Player() { processState().postPacingMicroseconds = 0; }

    PlayBlock block(std::int64_t durationMs, const Texts& lines) {
        return parsePlayBlock("b", durationMs, lines);
    }

    // Stops once the fake clock has passed the offset from now.
    IsStopped stopAfter(double ms) {
        const double at = monotonicMs() + ms;
        return [this, at] { return platform.clock.monotonicMs() >= at; };
    }

    fake::FakePlatform platform;
};

TEST_F(Player, LinesRunAtTheirOffsetsAndEqualOffsetsInTextOrder) {
    const double start = monotonicMs();
    const PlayResult result = playBlock(
        block(30, {"0 keydown 4 none", "10 keydown 5 none", "10 keyup 5 none", "10 keyup 4 none", "12 keydown 6 none"}),
        never);
    EXPECT_EQ(result, (PlayResult{0, PlayEnd::finished}));
    EXPECT_EQ(journalText(platform.journal.all()),
              (Texts{"keydown 4", "pause 5000", "pause 5000", "keydown 5", "keyup 5", "keyup 4", "pause 2000",
                     "keydown 6", "pause 5000", "pause 5000", "pause 5000", "pause 3000"}));
    EXPECT_EQ(monotonicMs(), start + 30);
}

TEST_F(Player, OffsetsCountFromTheStartSoSlowCommandsDoNotShiftLaterLines) {
    processState().postPacingMicroseconds = 10000;
    playBlock(block(40, {"0 keydown 4 none", "5 keyup 4 none", "25 keydown 5 none"}), never);
    // Each post is followed by its 10 ms pause; the line at 5 is already late and runs at once.
    EXPECT_EQ(journalText(platform.journal.all()),
              (Texts{"keydown 4", "pause 10000", "keyup 4", "pause 10000", "pause 5000", "keydown 5", "pause 10000",
                     "pause 5000"}));
}

TEST_F(Player, FailingLinesAreReportedCountedAndLeftOutOfTheReleasePlan) {
    const PlayResult result = playBlock(block(100, {"0 keydown 55 cmd", "0 mousedown 10", "5 keydown x none",
                                                    "5 keydown 4 cmd", "6 mousemove 10 20 sideways"}),
                                        stopAfter(50));
    EXPECT_EQ(result, (PlayResult{3, PlayEnd::cancelled}));
    EXPECT_EQ(platform.streams.err(),
              "brisko-mac-input: play b: line 'mousedown 10': usage: mousedown X Y left|middle|right [flags]\n"
              "brisko-mac-input: play b: line 'keydown x none': expected a CGKeyCode integer, got 'x'\n"
              "brisko-mac-input: play b: line 'mousemove 10 20 sideways': unknown held button 'sideways' "
              "(want left|middle|right|none)\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"flags 55 cmd", "keydown 4 cmd", "keyup 4 cmd", "flags 55"}));
}

TEST_F(Player, AStopReleasesWhatTheBlockPressed) {
    const PlayResult result = playBlock(block(100, {"0 keydown 55 cmd", "0 mousedown 10 20 left cmd",
                                                    "10 mousemove 30 40 left", "15 keydown 4 cmd", "50 keyup 4 cmd"}),
                                        stopAfter(20));
    EXPECT_EQ(result, (PlayResult{0, PlayEnd::cancelled}));
    EXPECT_EQ(eventText(platform.journal), (Texts{"flags 55 cmd", "leftdown 10,20 cmd", "leftdrag 30,40 cmd",
                                                  "keydown 4 cmd", "leftup 30,40 cmd", "keyup 4 cmd", "flags 55"}));
    EXPECT_EQ(platform.streams.err(), "");
}

TEST_F(Player, AStopDuringTheFinalWaitCancelsToo) {
    const PlayResult result = playBlock(block(100, {"0 keydown 4 none"}), stopAfter(60));
    EXPECT_EQ(result, (PlayResult{0, PlayEnd::cancelled}));
    EXPECT_EQ(eventText(platform.journal), (Texts{"keydown 4", "keyup 4"}));
}

TEST_F(Player, AStopSeenJustAsAWaitEndsComesBeforeTheCommand) {
    int checks = 0;
    // The wait for the first line checks once and finds its target reached; the second check stops.
    const PlayResult result = playBlock(block(10, {"0 keydown 4 none"}), [&] { return ++checks >= 2; });
    EXPECT_EQ(result, (PlayResult{0, PlayEnd::cancelled}));
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST_F(Player, AStoppedBlockPostsNothing) {
    const PlayResult result = playBlock(block(10, {"0 keydown 4 none", "5 mousedown 1 2 left"}), [] { return true; });
    EXPECT_EQ(result, (PlayResult{0, PlayEnd::cancelled}));
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST_F(Player, AFinishedBlockLeavesItsKeysDown) {
    const PlayResult result = playBlock(block(10, {"0 keydown 55 cmd", "1 mousedown 1 2 left"}), never);
    EXPECT_EQ(result, (PlayResult{0, PlayEnd::finished}));
    EXPECT_EQ(eventText(platform.journal), (Texts{"flags 55 cmd", "leftdown 1,2 cmd"}));
}

TEST_F(Player, AnswerLines) {
    runBlock(block(10, {"0 keydown 4 none", "1 keydown"}), never);
    runBlock(block(10, {"0 keydown 4 none"}), [] { return true; });
    answerRefusal(PlayRefusal("r", "the block ended after 0 of 1 lines"));
    answerRefusal(PlayRefusal(std::nullopt, "malformed"));
    EXPECT_EQ(platform.streams.out(),
              "played b ok 1\nplayed b cancelled 0\nplayed r refused the block ended after 0 of 1 lines\n");
    EXPECT_EQ(platform.streams.err(),
              "brisko-mac-input: play b: line 'keydown': usage: keydown <cgkeycode> <flags|none>\n"
              "brisko-mac-input: play: refused r: the block ended after 0 of 1 lines\n"
              "brisko-mac-input: play: refused a block with no id: malformed\n");
}

TEST_F(Player, ThePlayCommandPlaysOneBlockWithPacing) {
    processState().postPacingMicroseconds = 10000;
    EXPECT_EQ(platform.run({"play"}, "play t 20 2\n0 keydown 55 cmd\n5 keyup 55 none\nkeydown 4 none\n"), 0);
    EXPECT_EQ(platform.streams.out(), "played t ok 0\n");
    EXPECT_EQ(journalText(platform.journal.all()),
              (Texts{"flags 55 cmd", "pause 10000", "flags 55", "pause 10000"}));
}

TEST_F(Player, ThePlayCommandFailsOnARefusedBlock) {
    EXPECT_EQ(platform.run({"play"}, "play t 20 2\n0 keydown 55 cmd\n"), 2);
    EXPECT_EQ(platform.streams.out(), "played t refused the block ended after 1 of 2 lines\n");
    EXPECT_TRUE(platform.journal.all().empty());
}

}  // namespace
}  // namespace brisko
