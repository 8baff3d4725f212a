#include <gtest/gtest.h>

#include "support/process.h"

namespace brisko {
namespace {

using testing::programPath;
using testing::runProgram;

const std::string usageText =
    "brisko-mac-input: usage: brisko-mac-input <check|check-flags|geometry|session|move|click|"
    "doubleclick|drag|type|key|scroll|mousemove|mousedown|mouseup|keydown|keyup|type-unicode|"
    "set-clipboard|get-clipboard|clear-clipboard|clipboard-access|input-stream|play|play-check|"
    "capture-stream|screenshot|own-ui|own-ui-check> \xE2\x80\xA6\n";

struct Failure {
    std::vector<std::string> args;
    std::string err;
};

void expectFailures(const std::vector<Failure>& cases) {
    for (const auto& c : cases) {
        const auto r = runProgram(programPath(), c.args);
        std::string shown;
        for (const auto& a : c.args) shown += "[" + a + "]";
        EXPECT_EQ(r.status, 2) << shown;
        EXPECT_EQ(r.err, c.err) << shown;
        EXPECT_EQ(r.out, "") << shown;
    }
}

TEST(Entry, NoArgumentsWritesTheUsageText) { expectFailures({{{}, usageText}}); }

TEST(Entry, WrongCountsWriteTheRowsUsageLine) {
    expectFailures({
        {{"get-clipboard"}, "brisko-mac-input: usage: get-clipboard <uti> [uti\xE2\x80\xA6]\n"},
        {{"clear-clipboard", "a"}, "brisko-mac-input: usage: clear-clipboard (no arguments)\n"},
        {{"clipboard-access", "a"}, "brisko-mac-input: usage: clipboard-access (no arguments)\n"},
        {{"own-ui-check", "a"}, "brisko-mac-input: usage: own-ui-check (cases as JSON lines on stdin)\n"},
        {{"play-check", "a"}, "brisko-mac-input: usage: play-check (one play block on stdin)\n"},
        {{"play", "a"},
         "brisko-mac-input: usage: play (one play block on stdin; no stop \xE2\x80\x94 only input-stream reads one)\n"},
        {{"own-ui", "1"}, "brisko-mac-input: usage: own-ui [X Y]\n"},
        {{"own-ui", "1", "2", "3"}, "brisko-mac-input: usage: own-ui [X Y]\n"},
        {{"screenshot"}, "brisko-mac-input: usage: screenshot <out.png>\n"},
        {{"screenshot", "a", "b"}, "brisko-mac-input: usage: screenshot <out.png>\n"},
        {{"input-stream", "a"}, "brisko-mac-input: usage: input-stream (no arguments)\n"},
        {{"capture-stream", "a"}, "brisko-mac-input: usage: capture-stream (no arguments)\n"},
        {{"move", "1"}, "brisko-mac-input: usage: move X Y\n"},
        {{"click", "1"}, "brisko-mac-input: usage: click X Y [left|right|middle]\n"},
        {{"click", "10", "20", "left", "extra"}, "brisko-mac-input: usage: click X Y [left|right|middle]\n"},
        {{"doubleclick", "1", "2", "3"}, "brisko-mac-input: usage: doubleclick X Y\n"},
        {{"drag", "1", "2", "3"}, "brisko-mac-input: usage: drag X1 Y1 X2 Y2\n"},
        {{"type"}, "brisko-mac-input: usage: type <text> (one argument)\n"},
        {{"type", "a", "b"}, "brisko-mac-input: usage: type <text> (one argument)\n"},
        {{"key"}, "brisko-mac-input: usage: key <combo>\n"},
        {{"parse-chord"}, "brisko-mac-input: usage: parse-chord <combo>\n"},
        {{"plan-type", "a", "b"}, "brisko-mac-input: usage: plan-type <text>\n"},
    });
}

TEST(Entry, UnknownWordsIncludingCaseVariants) {
    expectFailures({
        {{"Check"}, "brisko-mac-input: unknown command 'Check'\n"},
        {{"MOVE", "1", "2"}, "brisko-mac-input: unknown command 'MOVE'\n"},
        {{"MouseMove", "1", "2"}, "brisko-mac-input: unknown command 'MouseMove'\n"},
        {{"hello"}, "brisko-mac-input: unknown command 'hello'\n"},
        {{""}, "brisko-mac-input: unknown command ''\n"},
    });
}

TEST(Entry, BadCoordinates) {
    expectFailures({
        {{"own-ui", "10", "abc"}, "brisko-mac-input: expected numeric coordinates, got '10 abc'\n"},
        {{"own-ui", " 10", "20"}, "brisko-mac-input: expected numeric coordinates, got ' 10 20'\n"},
        {{"own-ui", "1e999", "2"}, "brisko-mac-input: expected numeric coordinates, got '1e999 2'\n"},
    });
}

struct Printed {
    std::string command;
    std::string argument;
    std::string out;
};

TEST(Entry, HiddenCommandsPrintCompactJson) {
    const std::vector<Printed> cases = {
        {"parse-chord", "cmd+shift+4", "[\"cmd\",\"shift\",\"4\"]\n"},
        {"parse-chord", "cmd++", "[\"cmd\",\"+\"]\n"},
        {"parse-chord", "", "[\"\"]\n"},
        {"parse-chord", "++", "[\"+\"]\n"},
        {"parse-chord", "cmd+++", "[\"cmd\",\"\",\"+\"]\n"},
        {"parse-chord", "+a", "[\"\",\"a\"]\n"},
        {"parse-chord", "cmd+/", "[\"cmd\",\"\\/\"]\n"},
        {"parse-chord", "ctrl+\"+\\", "[\"ctrl\",\"\\\"\",\"\\\\\"]\n"},
        {"parse-chord", "alt+\xC3\xA9", "[\"alt\",\"\xC3\xA9\"]\n"},
        {"plan-type", "a\nb", "[\"a\",{\"key\":\"return\"},\"b\"]\n"},
        {"plan-type", "hi\n", "[\"h\",\"i\",{\"key\":\"return\"}]\n"},
        {"plan-type", "a\r\nb", "[\"a\",{\"key\":\"return\"},\"b\"]\n"},
        {"plan-type", "\t\b/", "[{\"key\":\"tab\"},{\"key\":\"backspace\"},\"\\/\"]\n"},
        {"plan-type", "e\xCC\x81", "[\"e\xCC\x81\"]\n"},
        {"plan-type", "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD!", "[\"\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD\",\"!\"]\n"},
        {"plan-type", "", "[]\n"},
        {"plan-type", "\x01", "[\"\\u0001\"]\n"},
    };
    for (const auto& c : cases) {
        const auto r = runProgram(programPath(), {c.command, c.argument});
        EXPECT_EQ(r.status, 0) << c.command << " " << c.argument;
        EXPECT_EQ(r.out, c.out) << c.command << " " << c.argument;
        EXPECT_EQ(r.err, "");
    }
}

}  // namespace
}  // namespace brisko
