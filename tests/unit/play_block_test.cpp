#include <gtest/gtest.h>

#include <deque>

#include "fake/fake_platform.h"
#include "play/play_block.h"

namespace brisko {
namespace {

const std::string malformedHeader = "malformed header (usage: play <id> <durationMs \u2264 600000> <n \u2264 120000>)";

class PlayBlockParsing : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

// A line source over fixed lines that counts how many were taken.
struct Lines {
    std::deque<std::string> left;
    int taken = 0;

    LineSource source() {
        return [this]() -> std::optional<std::string> {
            if (left.empty()) return std::nullopt;
            ++taken;
            std::string line = left.front();
            left.pop_front();
            return line;
        };
    }
};

PlayRefusal refusalOf(const std::function<void()>& parse) {
    try {
        parse();
    } catch (const PlayRefusal& refusal) {
        return refusal;
    }
    ADD_FAILURE() << "no refusal";
    return PlayRefusal(std::nullopt, "");
}

TEST_F(PlayBlockParsing, MillisecondsAreUnsignedDecimalDigitsWithin64Bits) {
    const std::vector<std::pair<std::string, std::optional<std::int64_t>>> cases = {
        {"0", 0},
        {"007", 7},
        {"600000", 600000},
        {"9223372036854775807", 9223372036854775807},
        {"9223372036854775808", std::nullopt},
        {"99999999999999999999", std::nullopt},
        {"", std::nullopt},
        {"+5", std::nullopt},
        {"-5", std::nullopt},
        {"-0", std::nullopt},
        {" 5", std::nullopt},
        {"5 ", std::nullopt},
        {"1e3", std::nullopt},
        {"0x10", std::nullopt},
        {"1.0", std::nullopt},
        {"\xD9\xA3", std::nullopt},  // ARABIC-INDIC DIGIT THREE
        {"\xEF\xBC\x95", std::nullopt},  // FULLWIDTH DIGIT FIVE
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(parseMs(text), value) << "[" << text << "]";
}

TEST_F(PlayBlockParsing, TokensAreSeparatedByRunsOfSpacesOnly) {
    using Tokens = std::vector<std::string>;
    const std::vector<std::pair<std::string, Tokens>> cases = {
        {"", {}},
        {"    ", {}},
        {"play b 1 0", {"play", "b", "1", "0"}},
        {"  5   keydown  55 cmd ", {"5", "keydown", "55", "cmd"}},
        {"5\tkeydown 55", {"5\tkeydown", "55"}},
        {"a\r b\xC2\xA0" "c", {"a\r", "b\xC2\xA0" "c"}},  // no-break space is part of a token
    };
    for (const auto& [line, tokens] : cases) EXPECT_EQ(splitAtSpaces(line), tokens) << "[" << line << "]";
}

TEST_F(PlayBlockParsing, HeadersWithinTheLimitsAreAccepted) {
    const PlayHeader limits = parsePlayHeader({"b", "600000", "120000"});
    EXPECT_EQ(limits.id, "b");
    EXPECT_EQ(limits.durationMs, 600000);
    EXPECT_EQ(limits.count, 120000);
    const PlayHeader empty = parsePlayHeader({"x/y\tz", "0", "0"});
    EXPECT_EQ(empty.id, "x/y\tz");
    EXPECT_EQ(empty.durationMs, 0);
    EXPECT_EQ(empty.count, 0);
}

TEST_F(PlayBlockParsing, EveryHeaderFaultHasTheOneMessage) {
    using Tokens = std::vector<std::string>;
    const std::vector<std::pair<Tokens, std::optional<std::string>>> cases = {
        {{"b", "600001", "1"}, "b"},
        {{"b", "10", "120001"}, "b"},
        {{"b", "10"}, "b"},
        {{"b", "10", "2", "x"}, "b"},
        {{"b", "-5", "1"}, "b"},
        {{"b", "+5", "1"}, "b"},
        {{"b", "1e3", "1"}, "b"},
        {{"b", "10", "1.0"}, "b"},
        {{"b", "99999999999999999999", "0"}, "b"},
        {{"b"}, "b"},
        {{}, std::nullopt},
    };
    for (const auto& c : cases) {
        const PlayRefusal refusal = refusalOf([&] { parsePlayHeader(c.first); });
        EXPECT_EQ(refusal.reason, malformedHeader) << ::testing::PrintToString(c.first);
        EXPECT_EQ(refusal.id, c.second) << ::testing::PrintToString(c.first);
    }
}

TEST_F(PlayBlockParsing, BodyLinesBecomeTimedArgvs) {
    const PlayBlock block = parsePlayBlock("b1", 400,
                                           {"0 mousemove 120 300", "  50   mousedown 120 300 left ",
                                            "50 mouseup 120 300 left", "120 keydown", "400 scroll up 1"});
    EXPECT_EQ(block.id, "b1");
    EXPECT_EQ(block.durationMs, 400);
    const std::vector<PlayLine> expected = {
        {0, {"mousemove", "120", "300"}},
        {50, {"mousedown", "120", "300", "left"}},
        {50, {"mouseup", "120", "300", "left"}},
        {120, {"keydown"}},  // arguments are the runner's business
        {400, {"scroll", "up", "1"}},
    };
    EXPECT_EQ(block.lines, expected);
    EXPECT_TRUE(parsePlayBlock("e", 0, {}).lines.empty());
}

TEST_F(PlayBlockParsing, TheFirstBodyFaultRefusesTheBlock) {
    using Body = std::vector<std::string>;
    struct Case {
        std::int64_t durationMs;
        Body lines;
        std::string reason;
    };
    const std::vector<Case> cases = {
        {100, {"0 keyup 55 none", ""}, "line 2: expected a non-negative integer t, got ''"},
        {100, {"   "}, "line 1: expected a non-negative integer t, got '   '"},
        {100, {"5\tkeydown 55 cmd"}, "line 1: expected a non-negative integer t, got '5\tkeydown 55 cmd'"},
        {100, {"-1 keyup 55 none"}, "line 1: expected a non-negative integer t, got '-1 keyup 55 none'"},
        {100, {"x keyup 55 none"}, "line 1: expected a non-negative integer t, got 'x keyup 55 none'"},
        {100, {"0 mousemove 1 2", " 7  "}, "line 2: no command after t in ' 7  '"},
        {100, {"0 click 1 2"}, "line 1: unknown raw command 'click'"},
        {100, {"0 KeyDown 55 cmd"}, "line 1: unknown raw command 'KeyDown'"},
        {100, {"5 keyup 0 none", "4 keyup 0 none"}, "line 2: t 4 goes backwards after 5"},
        // The earlier check of a line wins over the later ones.
        {100, {"5 keyup 0 none", "4 click"}, "line 2: unknown raw command 'click'"},
        {10, {"20 keyup 55 none"}, "durationMs 10 ends before the last line's t 20"},
        {10, {"0 keyup 55 none", "11 click"}, "line 2: unknown raw command 'click'"},
    };
    for (const Case& c : cases) {
        const PlayRefusal refusal = refusalOf([&] { parsePlayBlock("b", c.durationMs, c.lines); });
        EXPECT_EQ(refusal.reason, c.reason);
        EXPECT_EQ(refusal.id, "b");
    }
}

TEST_F(PlayBlockParsing, ReadingTakesExactlyTheAnnouncedLinesWhateverTheyHold) {
    Lines input{{"0 keydown 55 cmd", "stop b", "play c 1 0", "after"}};
    const PlayRefusal refusal = refusalOf([&] { readPlayBlock({"b", "100", "3"}, input.source()); });
    EXPECT_EQ(refusal.reason, "line 2: expected a non-negative integer t, got 'stop b'");
    EXPECT_EQ(input.taken, 3);

    Lines good{{"0 keydown 55 cmd", "10 keyup 55 none", "next"}};
    const PlayBlock block = readPlayBlock({"g", "10", "2"}, good.source());
    EXPECT_EQ(block.lines.size(), 2u);
    EXPECT_EQ(good.left, std::deque<std::string>{"next"});
}

TEST_F(PlayBlockParsing, InputEndingInsideTheBodyRefusesTheBlock) {
    Lines input{{"0 keydown 55 cmd", "5 keyup 55 none"}};
    const PlayRefusal refusal = refusalOf([&] { readPlayBlock({"b", "100", "3"}, input.source()); });
    EXPECT_EQ(refusal.reason, "the block ended after 2 of 3 lines");
    EXPECT_EQ(refusal.id, "b");
}

TEST_F(PlayBlockParsing, ARefusedHeaderReadsNoBodyLine) {
    Lines input{{"0 keydown 55 cmd"}};
    const PlayRefusal refusal = refusalOf([&] { readPlayBlock({"b", "100"}, input.source()); });
    EXPECT_EQ(refusal.reason, malformedHeader);
    EXPECT_EQ(input.taken, 0);
}

}  // namespace
}  // namespace brisko
