#include <gtest/gtest.h>

#include <chrono>

#include "support/process.h"

namespace brisko {
namespace {

using testing::programPath;
using testing::runProgram;

const std::string malformedHeader = "malformed header (usage: play <id> <durationMs \u2264 600000> <n \u2264 120000>)";

TEST(Play, InputThatIsNoBlockIsAFailure) {
    struct Case {
        std::string input;
        std::string out;
        std::string err;
    };
    const std::vector<Case> cases = {
        {"", "", "brisko-mac-input: play: no block on stdin\n"},
        {"\n", "", "brisko-mac-input: play: expected a `play` header, got ''\n"},
        {"hello world\n", "", "brisko-mac-input: play: expected a `play` header, got 'hello world'\n"},
        {"played b 1 0\n", "", "brisko-mac-input: play: expected a `play` header, got 'played b 1 0'\n"},
        {"play\n", "", "brisko-mac-input: play: refused a block with no id: " + malformedHeader + "\n"},
        {"play b 10\n", "played b refused " + malformedHeader + "\n",
         "brisko-mac-input: play: refused b: " + malformedHeader + "\n"},
        {"play b 10 2\n0 keyup 1 none\n", "played b refused the block ended after 1 of 2 lines\n",
         "brisko-mac-input: play: refused b: the block ended after 1 of 2 lines\n"},
        {"play b 10 1\n0 click 1 2\n", "played b refused line 1: unknown raw command 'click'\n",
         "brisko-mac-input: play: refused b: line 1: unknown raw command 'click'\n"},
    };
    for (const Case& c : cases) {
        const auto r = runProgram(programPath(), {"play"}, c.input);
        EXPECT_EQ(r.status, 2) << c.input;
        EXPECT_EQ(r.out, c.out) << c.input;
        EXPECT_EQ(r.err, c.err) << c.input;
    }
}

TEST(Play, ABlockWithoutLinesLastsItsDurationAndAnswersOk) {
    const auto started = std::chrono::steady_clock::now();
    const auto r = runProgram(programPath(), {"play"}, "play b 60 0\r\nnot read\n");
    const auto elapsed = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "played b ok 0\n");
    EXPECT_EQ(r.err, "");
    EXPECT_GE(elapsed, std::chrono::milliseconds(60));
}

TEST(Play, FailingLinesAreCountedAndTheBlockGoesOn) {
    const auto r = runProgram(programPath(), {"play"}, "play b 10 2\n0 mousedown 10\n5 keydown x none\n");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "played b ok 2\n");
    EXPECT_EQ(r.err,
              "brisko-mac-input: play b: line 'mousedown 10': usage: mousedown X Y left|middle|right [flags]\n"
              "brisko-mac-input: play b: line 'keydown x none': expected a CGKeyCode integer, got 'x'\n");
}

TEST(Play, ArgumentsAreAUsageError) {
    const auto r = runProgram(programPath(), {"play", "b"}, "play b 0 0\n");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err,
              "brisko-mac-input: usage: play (one play block on stdin; no stop \u2014 only input-stream reads one)\n");
}

}  // namespace
}  // namespace brisko
