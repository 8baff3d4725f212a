#include <gtest/gtest.h>

#include "support/run_program.h"

// Input command lines that fail on their arguments, before anything reaches the display.

namespace brisko {
namespace {

using testing::programPath;
using testing::runProgram;

struct Failure {
    std::vector<std::string> args;
    std::string message;
};

void expectFailures(const std::vector<Failure>& cases) {
    for (const auto& c : cases) {
        const auto r = runProgram(programPath(), c.args);
        std::string shown;
        for (const auto& a : c.args) shown += "[" + a + "]";
        EXPECT_EQ(r.status, 2) << shown;
        EXPECT_EQ(r.err, "brisko-mac-input: " + c.message + "\n") << shown;
        EXPECT_EQ(r.out, "") << shown;
    }
}

TEST(RawCommandLines, WrongCountsWriteTheCommandsUsage) {
    expectFailures({
        {{"mousemove", "1"}, "usage: mousemove X Y [left|middle|right|none [flags]]"},
        {{"mousemove", "1", "2", "left", "cmd", "x"}, "usage: mousemove X Y [left|middle|right|none [flags]]"},
        {{"mousedown", "1", "2"}, "usage: mousedown X Y left|middle|right [flags]"},
        {{"mouseup", "1", "2", "left", "cmd", "x"}, "usage: mouseup X Y left|middle|right [flags]"},
        {{"keydown", "0"}, "usage: keydown <cgkeycode> <flags|none>"},
        {{"keyup", "0", "none", "x"}, "usage: keyup <cgkeycode> <flags|none>"},
        {{"type-unicode"}, "usage: type-unicode <hex code point>"},
        {{"set-clipboard", "a", "b"}, "usage: set-clipboard <base64 utf-8 text>"},
        {{"scroll", "up"}, "usage: scroll up|down N [flags]"},
        {{"scroll", "up", "1", "cmd", "x"}, "usage: scroll up|down N [flags]"},
    });
}

TEST(RawCommandLines, BadArgumentsAreReportedWithTheirText) {
    expectFailures({
        {{"move", "10", "abc"}, "expected numeric coordinates, got '10 abc'"},
        {{"mousemove", "10", "20", "Left"}, "unknown held button 'Left' (want left|middle|right|none)"},
        {{"mouseup", "1", "2", "left", "Cmd"}, "unknown modifier 'Cmd' in flags 'Cmd' (want cmd|shift|alt|ctrl|fn or none)"},
        {{"keyup", "65536", "none"}, "expected a CGKeyCode integer, got '65536'"},
        {{"scroll", "up", "0"}, "usage: scroll up|down N [flags]"},
        {{"scroll", "up", "-2"}, "usage: scroll up|down N [flags]"},
        {{"scroll", "left", "3"}, "unknown scroll direction 'left' (want up|down)"},
        {{"type-unicode", "0x41"}, "expected a hex Unicode code point, got '0x41'"},
        {{"type-unicode", "D800"}, "expected a hex Unicode code point, got 'D800'"},
        {{"set-clipboard", "aGk= "}, "expected base64-encoded UTF-8 text, got 'aGk= '"},
        {{"set-clipboard", "//8="}, "expected base64-encoded UTF-8 text, got '//8='"},
    });
}

}  // namespace
}  // namespace brisko
