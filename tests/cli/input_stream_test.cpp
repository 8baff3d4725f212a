#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <sstream>

#include "support/process.h"

namespace brisko {
namespace {

using testing::programPath;
using testing::Process;
using testing::runProgram;

const std::string banner = "brisko-mac-input input-stream v2\n";
const std::string malformedHeader = "malformed header (usage: play <id> <durationMs \u2264 600000> <n \u2264 120000>)";

// The reader and the player write diagnostics independently, so only their set is fixed.
std::vector<std::string> sortedLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    return lines;
}

struct Case {
    std::string input;
    std::string answers;              // after the banner
    std::vector<std::string> errors;  // without the prefix
};

void expectServed(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        const auto r = runProgram(programPath(), {"input-stream"}, c.input);
        EXPECT_EQ(r.status, 0) << c.input;
        EXPECT_EQ(r.out, banner + c.answers) << c.input;
        std::string err;
        for (const std::string& e : c.errors) err += "brisko-mac-input: " + e + "\n";
        EXPECT_EQ(sortedLines(r.err), sortedLines(err)) << c.input;
    }
}

TEST(InputStream, EndOfInputStopsEverythingAndExitsZero) {
    expectServed({
        {"", "", {}},
        {"\n   \n\r\n", "", {}},
        // Accepted blocks are cancelled at the end; answers keep the order in which work was queued.
        {"play a 600000 0\nplay z 10\nplay b 600000 0\n",
         "played a cancelled 0\nplayed z refused " + malformedHeader + "\nplayed b cancelled 0\n",
         {"play: refused z: " + malformedHeader}},
        {"play a 600000 2\n0 keyup 1 none\n", "played a refused the block ended after 1 of 2 lines\n",
         {"play: refused a: the block ended after 1 of 2 lines"}},
    });
}

TEST(InputStream, BadLinesAreReportedAndTheStreamGoesOn) {
    expectServed({
        {"stop\nstop a b\nstop x\n  stop   x  \n", "",
         {"input-stream: nothing to stop for line 'stop'", "input-stream: nothing to stop for line 'stop a b'",
          "input-stream: nothing to stop for line 'stop x'",
          "input-stream: nothing to stop for line '  stop   x  '"}},
        {"hello world\nStop x\nmousedown 10\n", "",
         {"input-stream: ignoring unknown command in line 'hello world'",
          "input-stream: ignoring unknown command in line 'Stop x'",
          "input-stream: ignoring line 'mousedown 10': usage: mousedown X Y left|middle|right [flags]"}},
        {"play\n", "", {"play: refused a block with no id: " + malformedHeader}},
        // A refused header leaves its body to be read as ordinary lines.
        {"play x 5\n0 keyup 1 none\n", "played x refused " + malformedHeader + "\n",
         {"play: refused x: " + malformedHeader, "input-stream: ignoring unknown command in line '0 keyup 1 none'"}},
        // A body takes its lines whatever they hold, stop lines included; a refused block cannot be stopped.
        {"play b 600000 1\nstop b\nstop b\n",
         "played b refused line 1: expected a non-negative integer t, got 'stop b'\n",
         {"play: refused b: line 1: expected a non-negative integer t, got 'stop b'",
          "input-stream: nothing to stop for line 'stop b'"}},
    });
}

TEST(InputStream, AStopEndsAPlayingOrQueuedBlockAtOnce) {
    Process program(programPath(), {"input-stream"});
    program.write("play a 600000 0\nplay b 600000 0\nstop b\n");
    program.write("stop a\n");
    ASSERT_TRUE(program.waitForOutput("played b cancelled 0\n"));
    // A finished block is no longer active. The empty block is played after a was finished.
    program.write("play s 0 0\n");
    ASSERT_TRUE(program.waitForOutput("played s ok 0\n"));
    program.write("stop a\n");
    program.closeInput();
    const auto r = program.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, banner + "played a cancelled 0\nplayed b cancelled 0\nplayed s ok 0\n");
    EXPECT_EQ(r.err, "brisko-mac-input: input-stream: nothing to stop for line 'stop a'\n");
}

TEST(InputStream, FailingLinesOfABlockAreCountedInItsAnswer) {
    Process program(programPath(), {"input-stream"});
    program.write("play b 20 3\n0 mousedown 10\n5 keyup\n5 scroll up 0\n");
    ASSERT_TRUE(program.waitForOutput("played b ok 3\n"));
    program.closeInput();
    const auto r = program.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err,
              "brisko-mac-input: play b: line 'mousedown 10': usage: mousedown X Y left|middle|right [flags]\n"
              "brisko-mac-input: play b: line 'keyup': usage: keyup <cgkeycode> <flags|none>\n"
              "brisko-mac-input: play b: line 'scroll up 0': usage: scroll up|down N [flags]\n");
}

TEST(InputStream, TerminationEndsAtOnceWithStatusZero) {
    Process program(programPath(), {"input-stream"});
    ASSERT_TRUE(program.waitForOutput(banner));
    program.write("play a 600000 0\n");
    program.signal(SIGTERM);
    const auto r = program.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, banner);  // the playing block is not answered
    EXPECT_EQ(r.err, "");
}

TEST(InputStream, AClosedOutputDoesNotEndTheStream) {
    Process program(programPath(), {"input-stream"});
    program.closeOutput();
    program.write("play a 0 0\nplay b 10\nhello\n");
    program.closeInput();
    const auto r = program.finish();
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.err.find("brisko-mac-input: input-stream: ignoring unknown command in line 'hello'\n"),
              std::string::npos)
        << r.err;
}

TEST(InputStream, ArgumentsAreAUsageError) {
    const auto r = runProgram(programPath(), {"input-stream", "x"}, "play a 0 0\n");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "brisko-mac-input: usage: input-stream (no arguments)\n");
}

}  // namespace
}  // namespace brisko
