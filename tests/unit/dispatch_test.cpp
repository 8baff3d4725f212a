#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace brisko {
namespace {

class Dispatch : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

TEST_F(Dispatch, WrongCountsWriteTheUsageLineAndTouchNothing) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"click", "10", "20", "left", "extra"}, "brisko-mac-input: usage: click X Y [left|right|middle]\n"},
        {{"own-ui", "1"}, "brisko-mac-input: usage: own-ui [X Y]\n"},
        {{"clear-clipboard", "x"}, "brisko-mac-input: usage: clear-clipboard (no arguments)\n"},
        {{"drag", "1", "2", "3"}, "brisko-mac-input: usage: drag X1 Y1 X2 Y2\n"},
    };
    for (const auto& [args, usage] : cases) {
        fake::FakePlatform fresh;
        EXPECT_EQ(fresh.run(args), 2);
        EXPECT_EQ(fresh.streams.err(), usage);
        EXPECT_EQ(fresh.streams.out(), "");
        EXPECT_TRUE(fresh.journal.all().empty());
        EXPECT_EQ(fresh.pasteboard.count, 0);
        EXPECT_EQ(fresh.windows.windowListQueries, 0);
    }
}

TEST_F(Dispatch, FailuresOfAnActionAreOneDiagnosticLine) {
    EXPECT_EQ(platform.run({"own-ui", "1", "x"}), 2);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: expected numeric coordinates, got '1 x'\n");
    EXPECT_EQ(platform.windows.windowListQueries, 0);
}

TEST_F(Dispatch, UnknownWordsAfterTheRawCommands) {
    EXPECT_EQ(platform.run({"Check"}), 2);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: unknown command 'Check'\n");
}

TEST_F(Dispatch, HiddenCommandsAnswerOnStandardOutput) {
    EXPECT_EQ(platform.run({"parse-chord", "cmd++"}), 0);
    EXPECT_EQ(platform.streams.out(), "[\"cmd\",\"+\"]\n");
    EXPECT_EQ(platform.streams.err(), "");
}

TEST_F(Dispatch, NoWordWritesTheUsageText) {
    EXPECT_EQ(platform.run({}), 2);
    const std::string err = platform.streams.err();
    EXPECT_TRUE(err.starts_with("brisko-mac-input: usage: brisko-mac-input <check|"));
    EXPECT_TRUE(err.ends_with("own-ui|own-ui-check> \u2026\n"));
}

}  // namespace
}  // namespace brisko
