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

TEST_F(PlayBlockParsing, ARefusedHeaderReadsNoBodyLine) {
    Lines input{{"0 keydown 55 cmd"}};
    const PlayRefusal refusal = refusalOf([&] { readPlayBlock({"b", "100"}, input.source()); });
    EXPECT_EQ(refusal.reason, malformedHeader);
    EXPECT_EQ(input.taken, 0);
}

}  // namespace
}  // namespace brisko
