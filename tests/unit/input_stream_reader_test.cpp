#include <gtest/gtest.h>

#include <sstream>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "stream/input_stream.h"
#include "support/deferred_queue.h"
#include "support/journal_text.h"

namespace brisko {
namespace {

using testing::eventText;
using Texts = std::vector<std::string>;

const std::string malformedHeader = "malformed header (usage: play <id> <durationMs \u2264 600000> <n \u2264 120000>)";

// The reader over a queue that runs nothing before the end of input: every block is stopped by
// then, so blocks answer cancelled before any of their commands runs.
class InputStreamReader : public ::testing::Test {
protected:
    InputStreamReader() { processState().postPacingMicroseconds = 0; }

    void serve(const std::string& text) {
        std::istringstream in(text);
        serveInputStream(in, player);
    }

    std::string err() const { return platform.streams.err(); }

    fake::FakePlatform platform;
    testing::DeferredQueue player;
};

TEST_F(InputStreamReader, WorkIsQueuedInArrivalOrderAndStopsAreHandledAtOnce) {
    std::istringstream in(
        "keydown 4 none\nplay a 100 1\n0 keydown 5 none\nstop a\nplay x 1\nstop x\nkeyup 4 none\n");
    serveInputStream(in, player);
    EXPECT_EQ(platform.streams.out(), "played a cancelled 0\nplayed x refused " + malformedHeader + "\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"keydown 4", "keyup 4"}));
    // The reader's diagnostic was written before the queue ran.
    EXPECT_EQ(err(),
              "brisko-mac-input: input-stream: nothing to stop for line 'stop x'\n"
              "brisko-mac-input: play: refused x: " + malformedHeader + "\n");
}

TEST_F(InputStreamReader, EndOfInputInsideABodyRefusesTheBlock) {
    serve("play b 100 3\n0 keydown 4 none\r\n5 keyup 4 none");
    EXPECT_EQ(platform.streams.out(), "played b refused the block ended after 2 of 3 lines\n");
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST_F(InputStreamReader, SingleCommandsAreReportedWithTheirWholeLine) {
    serve("  mousedown   10 \nhello there\nkeydown 4 none\nmousemove 1 2 Left\nscroll up 0\n\n   \n");
    EXPECT_EQ(err(),
              "brisko-mac-input: input-stream: ignoring line '  mousedown   10 ': usage: mousedown X Y "
              "left|middle|right [flags]\n"
              "brisko-mac-input: input-stream: ignoring unknown command in line 'hello there'\n"
              "brisko-mac-input: input-stream: ignoring line 'mousemove 1 2 Left': unknown held button 'Left' "
              "(want left|middle|right|none)\n"
              "brisko-mac-input: input-stream: ignoring line 'scroll up 0': usage: scroll up|down N [flags]\n");
    EXPECT_EQ(eventText(platform.journal), Texts{"keydown 4"});
    EXPECT_EQ(platform.streams.out(), "");
}

TEST_F(InputStreamReader, ARefusedHeaderLeavesItsBodyToBeReadAsLines) {
    serve("play b 10 2 extra\n0 keydown 4 none\nkeydown 5 none\n");
    EXPECT_EQ(platform.streams.out(), "played b refused " + malformedHeader + "\n");
    EXPECT_EQ(err(),
              "brisko-mac-input: play: refused b: " + malformedHeader + "\n"
              "brisko-mac-input: input-stream: ignoring unknown command in line '0 keydown 4 none'\n");
    EXPECT_EQ(eventText(platform.journal), Texts{"keydown 5"});
}

TEST_F(InputStreamReader, AQueuedBlockThatIsStoppedAnswersCancelledWithNothingPosted) {
    serve("play a 100 1\n0 keydown 4 none\nplay b 100 1\n0 keydown 5 none\nstop b\n");
    EXPECT_EQ(platform.streams.out(), "played a cancelled 0\nplayed b cancelled 0\n");
    EXPECT_TRUE(platform.journal.all().empty());
    EXPECT_EQ(err(), "");
    // Finished blocks leave the registry.
    EXPECT_FALSE(processState().playControl.requestStop("a"));
    EXPECT_FALSE(processState().playControl.requestStop("b"));
}

}  // namespace
}  // namespace brisko
