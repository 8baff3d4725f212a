#include <gtest/gtest.h>

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "input/input_commands.h"
#include "support/input_events.h"

namespace brisko {
namespace {

using namespace testing;
using Arguments = std::vector<std::string>;

constexpr EventFlags cmd = flag::command;
constexpr EventFlags shift = flag::shift;

class RawCommands : public ::testing::Test {
protected:
    // Runs a raw command line as the input stream does: same process, state carried over.
    void raw(const Arguments& line) {
        ASSERT_TRUE(runRawInputCommand(line.front(), Arguments(line.begin() + 1, line.end()))) << line.front();
    }

    // The message a raw command line fails with; empty when it succeeds.
    std::string failure(const Arguments& line) {
        try {
            runRawInputCommand(line.front(), Arguments(line.begin() + 1, line.end()));
        } catch (const InputCommandError& error) {
            return error.message();
        }
        return "";
    }

    fake::FakePlatform platform;
    ProcessState& state = processState();
};

TEST_F(RawCommands, OnlyTheEightWordsAreRawCommands) {
    for (const CommandRow& row : rawCommandRows()) {
        const std::string word(row.word);
        EXPECT_TRUE(failure({word}).starts_with("usage: " + word + " ")) << word;
    }
    for (const std::string word : {"click", "MouseMove", "move", "type", "key", "", "scroll "}) {
        EXPECT_FALSE(runRawInputCommand(word, {"1", "2", "left"})) << word;
    }
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST_F(RawCommands, WrongCountsFailWithTheUsageAndChangeNothing) {
    const std::vector<std::pair<Arguments, std::string>> cases = {
        {{"mousemove", "1"}, "usage: mousemove X Y [left|middle|right|none [flags]]"},
        {{"mousemove", "1", "2", "left", "cmd", "x"}, "usage: mousemove X Y [left|middle|right|none [flags]]"},
        {{"mousedown", "1", "2"}, "usage: mousedown X Y left|middle|right [flags]"},
        {{"mousedown", "1", "2", "left", "cmd", "x"}, "usage: mousedown X Y left|middle|right [flags]"},
        {{"mouseup", "1", "2"}, "usage: mouseup X Y left|middle|right [flags]"},
        {{"mouseup", "1", "2", "left", "cmd", "x"}, "usage: mouseup X Y left|middle|right [flags]"},
        {{"keydown", "0"}, "usage: keydown <cgkeycode> <flags|none>"},
        {{"keydown", "56", "shift", "x"}, "usage: keydown <cgkeycode> <flags|none>"},
        {{"keyup", "0"}, "usage: keyup <cgkeycode> <flags|none>"},
        {{"type-unicode"}, "usage: type-unicode <hex code point>"},
        {{"type-unicode", "41", "42"}, "usage: type-unicode <hex code point>"},
        {{"set-clipboard"}, "usage: set-clipboard <base64 utf-8 text>"},
        {{"set-clipboard", "aGk=", "aGk="}, "usage: set-clipboard <base64 utf-8 text>"},
        {{"scroll", "up"}, "usage: scroll up|down N [flags]"},
        {{"scroll", "up", "1", "cmd", "x"}, "usage: scroll up|down N [flags]"},
    };
    for (const auto& [line, usage] : cases) {
        EXPECT_EQ(failure(line), usage);
    }
    EXPECT_TRUE(platform.journal.all().empty());
    EXPECT_EQ(state.heldFlags, 0u);
    EXPECT_EQ(platform.pasteboard.count, 0);
}

TEST_F(RawCommands, MouseMoveHoldsTheNamedButton) {
    struct Case {
        Arguments line;
        InputEvent event;
    };
    const std::vector<Case> cases = {
        {{"mousemove", "10", "20"}, moved(10, 20)},
        {{"mousemove", "10", "20", "none"}, moved(10, 20)},
        {{"mousemove", "10", "20", "left"}, pointerEvent(type::leftMouseDragged, 10, 20, 0)},
        {{"mousemove", "10", "20", "right"}, pointerEvent(type::rightMouseDragged, 10, 20, 1)},
        {{"mousemove", "10", "20", "middle"}, pointerEvent(type::otherMouseDragged, 10, 20, 2)},
        {{"mousemove", "1.5", "-2", "left", "cmd,shift"}, pointerEvent(type::leftMouseDragged, 1.5, -2, 0, {}, 0x120000)},
        {{"mousemove", "0x10", "1e2", "none", "none"}, moved(16, 100)},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        raw(c.line);
        EXPECT_EQ(fresh.journal.all(), paced({c.event})) << c.line[3 % c.line.size()];
    }
}

TEST_F(RawCommands, FlagsAreAdoptedBeforeLaterArgumentsAreChecked) {
    struct Case {
        Arguments line;
        std::string message;
        EventFlags heldAfter;
    };
    const std::vector<Case> cases = {
        {{"mousemove", "10", "20", "Left"}, "unknown held button 'Left' (want left|middle|right|none)", 0},
        {{"mousemove", "10", "20", "Left", "cmd"}, "unknown held button 'Left' (want left|middle|right|none)", cmd},
        {{"mousemove", "x", "20", "left", "cmd"}, "expected numeric coordinates, got 'x 20'", 0},
        {{"mousemove", "1", "2", "left", "Cmd"},
         "unknown modifier 'Cmd' in flags 'Cmd' (want cmd|shift|alt|ctrl|fn or none)", 0},
        {{"mouseup", "1", "2", "center", "shift"}, "unknown mouse button 'center' (want left|right|middle)", shift},
        {{"scroll", "left", "3", "cmd"}, "unknown scroll direction 'left' (want up|down)", cmd},
        {{"scroll", "up", "0", "cmd"}, "usage: scroll up|down N [flags]", 0},
        {{"keyup", "0", "cmd"}, "", 0},  // a plain key's flags are its own, not held
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        EXPECT_EQ(failure(c.line), c.message);
        EXPECT_EQ(processState().heldFlags, c.heldAfter) << c.message;
        if (!c.message.empty()) {
            EXPECT_TRUE(fresh.journal.all().empty()) << c.message;
        }
    }
}

TEST_F(RawCommands, ReleasesPostClickStateOneWithTheHeldFlags) {
    raw({"mouseup", "5", "5", "right", "cmd"});
    raw({"mouseup", "6", "7", "middle"});
    raw({"mouseup", "8", "9", "left", "none"});
    EXPECT_EQ(platform.journal.all(), paced({
                                          pointerEvent(type::rightMouseUp, 5, 5, 1, 1, cmd),
                                          pointerEvent(type::otherMouseUp, 6, 7, 2, 1, cmd),
                                          pointerEvent(type::leftMouseUp, 8, 9, 0, 1, 0),
                                      }));
}

TEST_F(RawCommands, ASwallowedReleaseStillAdoptsItsFlags) {
    state.refusedButtons.insert("Left");  // recorded as written, whatever the name
    raw({"mouseup", "1", "1", "Left", "shift"});
    EXPECT_TRUE(platform.journal.all().empty());
    EXPECT_EQ(state.heldFlags, shift);
    EXPECT_EQ(failure({"mouseup", "1", "1", "Left"}), "unknown mouse button 'Left' (want left|right|middle)");
}

TEST_F(RawCommands, ModifierKeysChangeTheHeldFlagsAndPlainKeysDoNot) {
    raw({"keydown", "55", "cmd"});
    EXPECT_EQ(state.heldFlags, cmd);
    raw({"keydown", "56", "cmd,shift"});
    EXPECT_EQ(state.heldFlags, cmd | shift);
    raw({"keyup", "4", "cmd"});
    EXPECT_EQ(state.heldFlags, cmd | shift);
    raw({"keyup", "56", "cmd"});
    raw({"keyup", "+55", "none"});
    EXPECT_EQ(state.heldFlags, 0u);
    raw({"keyup", "57", "shift"});  // caps lock is not a modifier key here
    EXPECT_EQ(state.heldFlags, 0u);
    EXPECT_EQ(platform.journal.all(), paced({
                                          flagsChanged(55, cmd),
                                          flagsChanged(56, cmd | shift),
                                          keyUp(4, cmd),
                                          flagsChanged(56, cmd),
                                          flagsChanged(55, 0),
                                          keyUp(57, shift),
                                      }));
}

TEST_F(RawCommands, HeldFlagsCarryAcrossCommandsOfOneProcessOnly) {
    raw({"keydown", "56", "shift"});
    raw({"scroll", "down", "1"});
    raw({"mousemove", "10", "20"});
    EXPECT_EQ(platform.journal.events(), (std::vector<InputEvent>{
                                             flagsChanged(56, shift),
                                             scrolled(-3, shift),
                                             moved(10, 20, shift),
                                         }));
    fake::FakePlatform next;
    EXPECT_EQ(next.run({"mousemove", "10", "20"}), 0);
    EXPECT_EQ(next.journal.events(), (std::vector<InputEvent>{moved(10, 20)}));
}

TEST_F(RawCommands, AnEventThatCannotBeCreatedEndsTheProcessWithTheFlagsAlreadyAdopted) {
    const std::vector<std::pair<Arguments, EventFlags>> cases = {
        {{"keydown", "56", "shift"}, shift},
        {{"keyup", "55", "none"}, 0},
        {{"keyup", "4", "cmd"}, flag::alternate},
        {{"mousemove", "1", "2", "left", "cmd"}, cmd},
        {{"mouseup", "1", "2", "left"}, flag::alternate},
        {{"scroll", "up", "3", "shift"}, shift},
    };
    for (const auto& [line, heldAfter] : cases) {
        fake::FakePlatform fresh;
        fresh.events.failFrom = 0;
        processState().heldFlags = flag::alternate;
        EXPECT_EQ(fresh.run(line), 2) << line[0];
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: failed to create CGEvent\n");
        EXPECT_TRUE(fresh.journal.all().empty());
        EXPECT_EQ(processState().heldFlags, heldAfter) << line[0];
    }
}

TEST_F(RawCommands, KeyArgumentsAreCheckedInOrder) {
    const std::vector<std::pair<Arguments, std::string>> cases = {
        {{"keyup", "65536", "none"}, "expected a CGKeyCode integer, got '65536'"},
        {{"keyup", "-1", "Cmd"}, "expected a CGKeyCode integer, got '-1'"},
        {{"keyup", "0x10", "none"}, "expected a CGKeyCode integer, got '0x10'"},
        {{"keydown", "56", "Shift"}, "unknown modifier 'Shift' in flags 'Shift' (want cmd|shift|alt|ctrl|fn or none)"},
        {{"keyup", "0", "cmd, shift"},
         "unknown modifier ' shift' in flags 'cmd, shift' (want cmd|shift|alt|ctrl|fn or none)"},
    };
    for (const auto& [line, message] : cases) {
        EXPECT_EQ(failure(line), message);
    }
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST_F(RawCommands, ScrollCountsArePositiveDecimal32BitIntegers) {
    for (const std::string count : {"0", "-2", "x", "", "+0", "1.0", " 1", "0x2", "2147483648", "99999999999999999999"}) {
        EXPECT_EQ(failure({"scroll", "up", count}), "usage: scroll up|down N [flags]") << count;
    }
    EXPECT_TRUE(platform.journal.all().empty());
    raw({"scroll", "up", "+2", "ctrl"});
    raw({"scroll", "down", "1"});
    EXPECT_EQ(platform.journal.all(), paced({scrolled(3, flag::control), scrolled(3, flag::control),
                                             scrolled(-3, flag::control)}));
}

TEST_F(RawCommands, TypeUnicodeWantsAHexScalarValue) {
    for (const std::string text : {"D800", "DFFF", "dbff", "110000", "0x41", "", "-41", "+", "41 ", "U+41",
                                   "FFFFFFFFFFFFFFFFFF", "-"}) {
        EXPECT_EQ(failure({"type-unicode", text}), "expected a hex Unicode code point, got '" + text + "'");
    }
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST_F(RawCommands, SetClipboardTakesBase64OfUtf8Text) {
    struct Case {
        std::string argument;
        std::string text;
    };
    for (const Case& c : {Case{"aGk=", "hi"}, Case{"", ""}, Case{"w6k=", "\xC3\xA9"}, Case{"YWJj", "abc"}}) {
        fake::FakePlatform fresh;
        fresh.pasteboard.items = {{{"public.html"}, {{"public.html", {'x'}}}}};
        raw({"set-clipboard", c.argument});
        ASSERT_EQ(fresh.pasteboard.items.size(), 1u);
        EXPECT_EQ(fresh.pasteboard.items[0].types, (std::vector<std::string>{"public.utf8-plain-text"}));
        EXPECT_EQ(fresh.pasteboard.items[0].data["public.utf8-plain-text"], platform::Bytes(c.text.begin(), c.text.end()));
        EXPECT_TRUE(fresh.journal.all().empty());
    }
}

TEST_F(RawCommands, SetClipboardRejectsWhatIsNotBase64OrNotUtf8) {
    // "//8=" is the bytes FF FF; "7aCA" a UTF-8 encoded surrogate; "wA==" an overlong lead byte.
    for (const std::string argument : {"//8=", "aGk= ", " aGk=", "aGk", "aG=k", "aGk=\n", "a-_=", "7aCA", "wA=="}) {
        EXPECT_EQ(failure({"set-clipboard", argument}), "expected base64-encoded UTF-8 text, got '" + argument + "'");
    }
    EXPECT_EQ(platform.pasteboard.count, 0);
    EXPECT_TRUE(platform.pasteboard.items.empty());
}

}  // namespace
}  // namespace brisko
