#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/process.h"

namespace brisko {
namespace {

using nlohmann::json;
using testing::programPath;
using testing::runProgram;

const std::string malformedHeader = "malformed header (usage: play <id> <durationMs \u2264 600000> <n \u2264 120000>)";

struct Planned {
    std::string input;
    json plan;
};

void expectPlans(const std::vector<Planned>& cases) {
    for (const Planned& c : cases) {
        const auto r = runProgram(programPath(), {"play-check"}, c.input);
        EXPECT_EQ(r.status, 0) << c.input;
        EXPECT_EQ(r.err, "") << c.input;
        ASSERT_TRUE(r.out.ends_with("\n")) << c.input;
        EXPECT_EQ(r.out.find('\n'), r.out.size() - 1) << "not one line: " << r.out;
        EXPECT_EQ(json::parse(r.out), c.plan) << c.input;
    }
}

struct Failed {
    std::string input;
    std::string err;
};

void expectFailures(const std::vector<Failed>& cases) {
    for (const Failed& c : cases) {
        const auto r = runProgram(programPath(), {"play-check"}, c.input);
        EXPECT_EQ(r.status, 2) << c.input;
        EXPECT_EQ(r.err, c.err) << c.input;
        EXPECT_EQ(r.out, "") << c.input;
    }
}

TEST(PlayCheck, TheExamplePlanWithWaitsAndLift) {
    const auto r = runProgram(programPath(), {"play-check"},
                              "play b 100 2\n10 keydown 55 cmd\n40 keydown 0 cmd\nclock 1000 1000 1015 1060\nran 2\n");
    EXPECT_EQ(r.status, 0);
    // Integral waits are written without a fraction, as the platform writer does.
    EXPECT_NE(r.out.find("\"waits\":[10,25,40]"), std::string::npos) << r.out;
    EXPECT_EQ(json::parse(r.out), json::parse(R"({"id":"b","durationMs":100,
        "lines":[{"t":10,"argv":["keydown","55","cmd"]},{"t":40,"argv":["keydown","0","cmd"]}],
        "waits":[10,25,40],"lift":[["keyup","0","cmd"],["keyup","55","none"]]})"));
}

TEST(PlayCheck, AcceptedBlocksAndTheirOptions) {
    expectPlans({
        {"play b 0 0\n", {{"id", "b"}, {"durationMs", 0}, {"lines", json::array()}}},
        {"play b 100 0\nclock 5 7\n", {{"id", "b"}, {"durationMs", 100}, {"lines", json::array()}, {"waits", {98}}}},
        {"play b 10 1\n  0   keyup  55 none \nran 0\nclock 0 50 60\n",
         {{"id", "b"},
          {"durationMs", 10},
          {"lines", {{{"t", 0}, {"argv", {"keyup", "55", "none"}}}}},
          {"waits", {0, 0}},
          {"lift", json::array()}}},
        // Non-numeric readings are skipped; the last option of each kind wins; other lines are ignored.
        {"play b 50 1\n20 mousedown 1 2 left\nclock 0 x 5 7 y\nclock 1 2 3\nran 0\nran 1\nclock\n clock 1\nnoise\n",
         {{"id", "b"},
          {"durationMs", 50},
          {"lines", {{{"t", 20}, {"argv", {"mousedown", "1", "2", "left"}}}}},
          {"waits", {19, 48}},
          {"lift", {{"mouseup", "1", "2", "left"}}}}},
        // Readings in any strtod form; fractions stay fractions.
        {"play b 10 0\nclock 0x10 2.5e1\n", {{"id", "b"}, {"durationMs", 10}, {"lines", json::array()}, {"waits", {1}}}},
        {"play b 10 0\nclock 0.5 8\n", {{"id", "b"}, {"durationMs", 10}, {"lines", json::array()}, {"waits", {2.5}}}},
        // A reading too large for a double still counts, and gives an infinitely late clock.
        {"play b 10 0\nclock 1 1e999\n", {{"id", "b"}, {"durationMs", 10}, {"lines", json::array()}, {"waits", {0}}}},
        {"play b 10 0\r\nran +0\r\n", {{"id", "b"}, {"durationMs", 10}, {"lines", json::array()}, {"lift", json::array()}}},
    });
}

TEST(PlayCheck, EveryRefusalIsThePlan) {
    expectPlans({
        {"play b 600001 1\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b 10 120001\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b 10\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b 10 2 x\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b -5 1\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b +5 1\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b 1e3 1\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b 10 1.0\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play b 99999999999999999999 0\n", {{"id", "b"}, {"refused", malformedHeader}}},
        {"play\n", {{"refused", malformedHeader}}},
        {"play   \n", {{"refused", malformedHeader}}},
        {"play b 10 3\n0 keyup 1 none\n1 keyup 2 none\n", {{"id", "b"}, {"refused", "the block ended after 2 of 3 lines"}}},
        {"play b 10 1\n5\tkeyup 1 none\n",
         {{"id", "b"}, {"refused", "line 1: expected a non-negative integer t, got '5\tkeyup 1 none'"}}},
        {"play b 10 2\n0 keyup 1 none\n  4  \n", {{"id", "b"}, {"refused", "line 2: no command after t in '  4  '"}}},
        {"play b 10 1\n-1 keyup 1 none\n",
         {{"id", "b"}, {"refused", "line 1: expected a non-negative integer t, got '-1 keyup 1 none'"}}},
        {"play b 10 1\n\n", {{"id", "b"}, {"refused", "line 1: expected a non-negative integer t, got ''"}}},
        {"play b 10 1\n0 click 1 2\n", {{"id", "b"}, {"refused", "line 1: unknown raw command 'click'"}}},
        {"play b 10 1\n0 KeyDown 1 none\n", {{"id", "b"}, {"refused", "line 1: unknown raw command 'KeyDown'"}}},
        // The first fault found is the one reported, and the duration is checked last.
        {"play b 10 2\n5 keyup 1 none\n4 click\n", {{"id", "b"}, {"refused", "line 2: unknown raw command 'click'"}}},
        {"play b 10 2\n0 keyup 1 none\n11 click\n", {{"id", "b"}, {"refused", "line 2: unknown raw command 'click'"}}},
        {"play b 10 2\n5 keyup 1 none\n4 keyup 1 none\n", {{"id", "b"}, {"refused", "line 2: t 4 goes backwards after 5"}}},
        {"play b 10 1\n20 keyup 55 none\n", {{"id", "b"}, {"refused", "durationMs 10 ends before the last line's t 20"}}},
        // Option lines after a refused block are not read, not even bad ones.
        {"play b 10 1\n0 click\nclock 1\nran 9\n", {{"id", "b"}, {"refused", "line 1: unknown raw command 'click'"}}},
    });
}

TEST(PlayCheck, SlashesAreEscapedAndBadBytesReplaced) {
    const auto r = runProgram(programPath(), {"play-check"}, "play a/b 10 1\n0 set-clipboard x/y\xFF\n");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out,
              "{\"durationMs\":10,\"id\":\"a\\/b\",\"lines\":[{\"argv\":[\"set-clipboard\",\"x\\/y\xEF\xBF\xBD\"],"
              "\"t\":0}]}\n");
}

TEST(PlayCheck, FaultsOfTheInputAndOptions) {
    expectFailures({
        {"", "brisko-mac-input: play-check: no block\n"},
        {"\n", "brisko-mac-input: play-check: expected a `play` header, got ''\n"},
        {"   \n", "brisko-mac-input: play-check: expected a `play` header, got '   '\n"},
        {"Play b 1 0\n", "brisko-mac-input: play-check: expected a `play` header, got 'Play b 1 0'\n"},
        {"stop b\n", "brisko-mac-input: play-check: expected a `play` header, got 'stop b'\n"},
        {"play b 10 2\n0 keyup 1 none\n1 keyup 1 none\nclock 1 2\n",
         "brisko-mac-input: play-check: a clock needs 4 readings, got 2\n"},
        {"play b 10 0\nclock 1 2 3\n", "brisko-mac-input: play-check: a clock needs 2 readings, got 3\n"},
        {"play b 10 0\nclock 1 two\n", "brisko-mac-input: play-check: a clock needs 2 readings, got 1\n"},
        {"play b 10 0\nclock  1\t2\n", "brisko-mac-input: play-check: a clock needs 2 readings, got 0\n"},
        // A valid option does not excuse a later bad one.
        {"play b 10 0\nclock 1 2\nclock 1\n", "brisko-mac-input: play-check: a clock needs 2 readings, got 1\n"},
        {"play b 10 2\n0 keyup 1 none\n1 keyup 1 none\nran 3\n",
         "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 2, got 'ran 3'\n"},
        {"play b 10 0\nran x\n", "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran x'\n"},
        {"play b 10 0\nran -1\n", "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran -1'\n"},
        {"play b 10 0\nran  0\n", "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran  0'\n"},
        {"play b 10 0\nran 0 \n", "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran 0 '\n"},
        {"play b 10 0\nran \n", "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran '\n"},
        {"play b 10 0\nran 99999999999999999999\n",
         "brisko-mac-input: play-check: `ran <k>` needs 0 \u2264 k \u2264 0, got 'ran 99999999999999999999'\n"},
        // An infinite wait has no JSON form.
        {"play b 10 0\nclock inf 0\n", "brisko-mac-input: play-check: could not encode the plan\n"},
    });
}

TEST(PlayCheck, ArgumentsAreAUsageError) {
    const auto r = runProgram(programPath(), {"play-check", "x"}, "play b 0 0\n");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "brisko-mac-input: usage: play-check (one play block on stdin)\n");
    EXPECT_EQ(r.out, "");
}

}  // namespace
}  // namespace brisko
