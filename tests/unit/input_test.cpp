// The input commands, one-shot and raw, run as the process entry runs them over the fake: the
// events they post, what they leave held, what they refuse and how they fail.
#include <gtest/gtest.h>

#include <cmath>

#include "cli/input_command_error.h"
#include "cli/number_text.h"
#include "cli/parse_point.h"
#include "cli/process_state.h"
#include "entry/command_table.h"
#include "fake/fake_platform.h"
#include "input/key_vocabulary.h"
#include "input/type_plan.h"
#include "support/journal_text.h"

namespace brisko {
namespace {

using testing::eventText;
using Line = std::vector<std::string>;
using Texts = std::vector<std::string>;

constexpr std::int32_t hostPid = 77;

// A command either posts its sequence or fails in one line (message set), keeping what it posted
// or adopted before the fault; either way it leaves held what its flags say.
TEST(InputCommands, EachPostsItsSequenceOrFailsInOneLineKeepingWhatCameBefore) {
    struct Case {
        std::vector<Line> lines;
        std::string message;
        Texts events = {};
        EventFlags heldAfter = 0;
    };
    const std::string scroll = "usage: scroll up|down N [flags]";
    std::vector<Case> cases = {
        {{{"doubleclick", "5", "6"}}, "",
         {"move 5,6", "leftdown 5,6 #1", "leftup 5,6 #1", "leftdown 5,6 #2", "leftup 5,6 #2"}},
        // Typed text carries no held flags, and leaves them held.
        {{{"keydown", "56", "shift"}, {"type", "A"}}, "", {"flags 56 shift", "keydown \"A\"", "keyup \"A\""},
         flag::shift},
        {{{"key", "fn+F5"}}, "", {"flags 63 fn", "keydown 96 fn", "keyup 96 fn", "flags 63"}},
        // The last part is always the key, even when it names a modifier.
        {{{"key", "cmd+shift"}}, "", {"flags 55 cmd", "keydown 56 cmd", "keyup 56 cmd", "flags 55"}},
        // A combo's modifiers leave nothing held; a plain key leaves the flags alone.
        {{{"keydown", "58", "alt"}, {"key", "shift+a"}}, "",
         {"flags 58 alt", "flags 56 shift", "keydown 0 shift", "keyup 0 shift", "flags 56"}},
        {{{"keydown", "58", "alt"}, {"key", "Return"}}, "", {"flags 58 alt", "keydown 36", "keyup 36"},
         flag::alternate},
        // A drag moves in twelve unrounded steps with the left button and the held flags.
        {{{"keydown", "58", "alt"}, {"drag", "3", "0", "0", "-6"}}, "",
         {"flags 58 alt", "move 3,0 alt", "leftdown 3,0 alt", "leftdrag 2.75,-0.5 alt", "leftdrag 2.5,-1 alt",
          "leftdrag 2.25,-1.5 alt", "leftdrag 2,-2 alt", "leftdrag 1.75,-2.5 alt", "leftdrag 1.5,-3 alt",
          "leftdrag 1.25,-3.5 alt", "leftdrag 1,-4 alt", "leftdrag 0.75,-4.5 alt", "leftdrag 0.5,-5 alt",
          "leftdrag 0.25,-5.5 alt", "leftdrag 0,-6 alt", "leftup 0,-6 alt"},
         flag::alternate},
        {{{"mouseup", "5", "5", "right", "cmd"}, {"mouseup", "6", "7", "middle"}, {"mouseup", "8", "9", "left", "none"}},
         "", {"rightup 5,5 #1 cmd", "otherup 6,7 #1 cmd", "leftup 8,9 #1"}},
        {{{"mousemove", "10", "20"}, {"mousemove", "1", "2", "none"}, {"mousemove", "3", "4", "left"},
          {"mousemove", "5", "6", "right"}, {"mousemove", "7", "8", "middle"}, {"mousemove", "0x10", "1e2", "none", "none"}},
         "", {"move 10,20", "move 1,2", "leftdrag 3,4", "rightdrag 5,6", "otherdrag 7,8", "move 16,100"}},
        // A modifier key's flags become the held flags; a plain key's are its own (caps lock is one).
        {{{"keydown", "55", "cmd"}, {"keydown", "56", "cmd,shift"}, {"keyup", "4", "cmd"}, {"keyup", "56", "cmd"},
          {"keyup", "+55", "none"}, {"keydown", "4", "shift"}, {"keyup", "57", "shift"}},
         "", {"flags 55 cmd", "flags 56 cmd,shift", "keyup 4 cmd", "flags 56 cmd", "flags 55", "keydown 4 shift",
          "keyup 57 shift"}},
        {{{"keydown", "60", "shift"}, {"scroll", "down", "1"}, {"mousemove", "10", "20"}, {"scroll", "up", "+2", "ctrl"}},
         "", {"flags 60 shift", "scroll -3 shift", "move 10,20 shift", "scroll 3 ctrl", "scroll 3 ctrl"},
         flag::control},
        {{{"type-unicode", "1F600"}, {"type-unicode", "+e9"}}, "",
         {"keydown \"\xF0\x9F\x98\x80\"", "keyup \"\xF0\x9F\x98\x80\"", "keydown \"\xC3\xA9\"", "keyup \"\xC3\xA9\""}},
        {{{"MouseMove", "1", "2"}}, "unknown command 'MouseMove'"},
        {{{"click", "10", "20", "Left"}}, "unknown mouse button 'Left' (want left|right|middle)", {"move 10,20"}},
        {{{"mousemove", "10", "20", "Left", "cmd"}}, "unknown held button 'Left' (want left|middle|right|none)", {},
         flag::command},
        {{{"mousemove", "x", "20", "left", "cmd"}}, "expected numeric coordinates, got 'x 20'"},
        {{{"mouseup", "1", "2", "center", "shift"}}, "unknown mouse button 'center' (want left|right|middle)", {},
         flag::shift},
        {{{"scroll", "left", "3", "cmd"}}, "unknown scroll direction 'left' (want up|down)", {}, flag::command},
        {{{"scroll", "Up", "1"}}, "unknown scroll direction 'Up' (want up|down)"},
        {{{"scroll", "up", "0", "cmd"}}, scroll},
        {{{"scroll", "up", "-2"}}, scroll},
        {{{"scroll", "up", "2147483648"}}, scroll},
        {{{"keydown", "56", "Shift"}},
         "unknown modifier 'Shift' in flags 'Shift' (want cmd|shift|alt|ctrl|fn or none)"},
        {{{"keyup", "0", "cmd, shift"}},
         "unknown modifier ' shift' in flags 'cmd, shift' (want cmd|shift|alt|ctrl|fn or none)"},
        {{{"set-clipboard", "aGk= "}}, "expected base64-encoded UTF-8 text, got 'aGk= '"},
        {{{"set-clipboard", "//8="}}, "expected base64-encoded UTF-8 text, got '//8='"},  // the bytes FF FF
        {{{"key", "+a"}}, "empty key combo part in '+a'"},
        {{{"key", "cmd++c"}}, "empty key combo part in 'cmd++c'"},
        {{{"key", "HYPER+a"}}, "unknown modifier 'hyper' in combo 'HYPER+a'"},
        {{{"key", "cmd+hyper+!"}}, "unknown modifier 'hyper' in combo 'cmd+hyper+!'"},
        {{{"key", "cmd+!"}}, "unknown key '!'"},
    };
    for (const std::string text : {"D800", "DFFF", "110000", "-41", "0x41"}) {
        cases.push_back({{{"type-unicode", text}}, "expected a hex Unicode code point, got '" + text + "'"});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.lines));
        fake::FakePlatform platform;
        int status = -1;  // the lines run one after another in one process; the status of the last
        for (const Line& line : c.lines) status = platform.run(line);
        EXPECT_EQ(status, c.message.empty() ? 0 : 2);
        EXPECT_EQ(platform.streams.err(), c.message.empty() ? "" : "brisko-mac-input: " + c.message + "\n");
        EXPECT_EQ(eventText(platform.journal), c.events);
        EXPECT_EQ(processState().heldFlags, c.heldAfter);
        EXPECT_EQ(platform.pasteboard.count, 0);
    }
}

TEST(InputCommands, EveryRowChecksItsArgumentCountBeforeAnythingElse) {
    // Each is its row's usage line, which the manual page's test holds to the page.
    const std::vector<Line> wrongCounts = {
        {"get-clipboard"}, {"clear-clipboard", "a"}, {"clipboard-access", "a"}, {"own-ui-check", "a"},
        {"play-check", "a"}, {"play", "a"}, {"own-ui", "1"}, {"own-ui", "1", "2", "3"}, {"screenshot"},
        {"screenshot", "a", "b"}, {"input-stream", "a"}, {"capture-stream", "a"}, {"move", "1"}, {"click", "1"},
        {"click", "10", "20", "left", "extra"}, {"doubleclick", "1", "2", "3"}, {"drag", "1", "2", "3"}, {"type"},
        {"type", "a", "b"}, {"key"}, {"parse-chord"}, {"plan-type", "a", "b"}, {"mousemove", "1"},
        {"mousemove", "1", "2", "left", "cmd", "x"}, {"mousedown", "1", "2"}, {"mousedown", "1", "2", "left", "cmd", "x"},
        {"mouseup", "1", "2"}, {"mouseup", "1", "2", "left", "cmd", "x"}, {"keydown", "0"},
        {"keydown", "56", "shift", "x"}, {"keyup", "0", "none", "x"}, {"type-unicode", "41", "42"}, {"set-clipboard"},
        {"set-clipboard", "aGk=", "aGk="}, {"scroll", "up"}, {"scroll", "up", "1", "cmd", "x"}};
    for (const Line& line : wrongCounts) {
        fake::FakePlatform platform;
        platform.windows.windows = {{1, hostPid, {0, 0, 100, 100}, 1.0, 0}};
        EXPECT_EQ(platform.run(line), 2) << ::testing::PrintToString(line);
        EXPECT_EQ(platform.streams.err(), "brisko-mac-input: " + std::string(findCommand(commandTable(), line[0])->usage) + "\n");
        EXPECT_TRUE(platform.journal.all().empty()) << ::testing::PrintToString(line);
        EXPECT_EQ(platform.windows.windowListQueries, 0) << ::testing::PrintToString(line);
    }
    fake::FakePlatform platform;
    EXPECT_EQ(platform.run({}), 2);
    EXPECT_EQ(platform.streams.err(),
              "brisko-mac-input: usage: brisko-mac-input <check|check-flags|geometry|session|move|click|doubleclick|drag|"
              "type|key|scroll|mousemove|mousedown|mouseup|keydown|keyup|type-unicode|set-clipboard|get-clipboard|"
              "clear-clipboard|clipboard-access|input-stream|play|play-check|capture-stream|screenshot|own-ui|"
              "own-ui-check> \u2026\n");
}

// The host's panel (window 4321) in front of an editor that fills the screen.
void showHost(fake::FakePlatform& platform) {
    platform.windows.bundles[hostPid] = "com.brisko.desktop";
    platform.windows.windows = {{4321, hostPid, {0, 0, 500, 500}, 1.0, 0}, {9, 55, {0, 0, 2000, 2000}, 1.0, 0}};
}

std::string pressRefusal(const std::string& at) {
    return "brisko-mac-input: refused a press at " + at + " on window 4321: " + processState().briskoOwnUiRefusal +
           "\n";
}

TEST(HostOnScreen, PressesAndKeysAimedAtTheHostPostNothingAndTheRestPasses) {
    const fake::FakePlatform texts;  // the refusals' wording is the process state's
    const std::string key = "brisko-mac-input: refused a key press while Brisko is frontmost: " +
                            processState().briskoOwnUiRefusal + "\n";
    // The command and its error output (none: it passes).
    const std::vector<std::pair<Line, std::string>> cases = {
        {{"click", "10.9", "20.2", "Left"}, pressRefusal("(10,20)")},  // before the button name is read
        {{"drag", "10", "20", "x", "4"}, pressRefusal("(10,20)")},  // its start is checked before its end is read
        {{"type", ""}, key},
        {{"key", "hyper+a"}, key},  // before the combo is read
        {{"keydown", "0", "Cmd"}, key},  // before the flags are read
        // Arguments read before the check still fail on their own.
        {{"keydown", "x", "none"}, "brisko-mac-input: expected a CGKeyCode integer, got 'x'\n"},
        {{"type-unicode", "D800"}, "brisko-mac-input: expected a hex Unicode code point, got 'D800'\n"},
        {{"move", "10", "20"}, ""},
        {{"drag", "900", "900", "10", "10"}, ""},  // ends on the panel
        {{"scroll", "up", "1"}, ""},
        {{"keydown", "56", "shift"}, ""},
    };
    for (const auto& [line, err] : cases) {
        fake::FakePlatform platform;
        showHost(platform);
        EXPECT_EQ(platform.run(line), err.empty() ? 0 : 2) << ::testing::PrintToString(line);
        EXPECT_EQ(platform.streams.err(), err) << ::testing::PrintToString(line);
        EXPECT_EQ(platform.journal.all().empty(), !err.empty()) << ::testing::PrintToString(line);
    }
}

TEST(HostOnScreen, ARefusedPressSwallowsOneReleaseOfItsButtonAsWritten) {
    fake::FakePlatform platform;
    showHost(platform);
    EXPECT_EQ(platform.run({"mousedown", "400", "220", "left", "shift"}), 2);
    EXPECT_EQ(platform.streams.err(), pressRefusal("(400,220)"));
    EXPECT_EQ(platform.run({"mousedown", "1", "1", "Left"}), 2);  // recorded as written
    EXPECT_EQ(platform.run({"mousedown", "2", "2", "right"}), 2);
    EXPECT_EQ(platform.run({"mousedown", "900", "900", "right"}), 0);  // an allowed press forgets it
    for (const Line& line : std::vector<Line>{{"mousemove", "300", "300", "left"},  // nothing is dragged
                                              {"mouseup", "300", "300", "left"},      // swallowed
                                              {"mouseup", "300", "300", "left"},
                                              {"mouseup", "1", "1", "Left", "ctrl"},  // swallowed, flags adopted
                                              {"mouseup", "900", "900", "right"}}) {
        EXPECT_EQ(platform.run(line), 0) << ::testing::PrintToString(line);
    }
    EXPECT_EQ(eventText(platform.journal), (Texts{"rightdown 900,900 #1 shift", "move 300,300 shift",
                                                  "leftup 300,300 #1 shift", "rightup 900,900 #1 ctrl"}));
}

TEST(InputCommands, AnEventThatCannotBeCreatedEndsTheCommandWithWhatCameBeforePostedAndHeld) {
    // The command, the first event that cannot be created, and the flags held after (alt before).
    const std::vector<std::tuple<Line, std::size_t, EventFlags>> cases = {
        {{"click", "1", "2"}, 2, flag::alternate},
        {{"keydown", "56", "shift"}, 0, flag::shift},
        // cmd+shift+4: 0 cmd down, 1 shift down, 2 key down, 3 key up, 4 shift up, 5 cmd up.
        {{"key", "cmd+shift+4"}, 0, flag::command},
        {{"key", "cmd+shift+4"}, 1, flag::command | flag::shift},
        {{"key", "cmd+shift+4"}, 4, flag::command},
        {{"key", "cmd+shift+4"}, 5, 0},
    };
    for (const auto& [line, failFrom, heldAfter] : cases) {
        fake::FakePlatform platform;
        processState().heldFlags = flag::alternate;
        platform.events.failFrom = failFrom;
        EXPECT_EQ(platform.run(line), 2) << ::testing::PrintToString(line);
        EXPECT_EQ(platform.streams.err(), "brisko-mac-input: failed to create CGEvent\n");
        // Nothing is released: a press posted before the failure stays down.
        EXPECT_EQ(platform.journal.events().size(), failFrom) << ::testing::PrintToString(line);
        EXPECT_EQ(processState().heldFlags, heldAfter) << ::testing::PrintToString(line) << failFrom;
    }
}

TEST(KeyVocabulary, NamesCombosFlagsAndCodesReadAsTheyShould) {
    fake::FakePlatform platform;
    const std::vector<std::pair<std::string, std::optional<KeyCode>>> keys = {
        {"RETURN", 36}, {"F5", 96}, {"Cmd", 55}, {"capslock", 57}, {"A", 0}, {"+", 24},
        {" ", std::nullopt}, {"!", std::nullopt}, {"ab", std::nullopt}, {"", std::nullopt},
        {"\xC3\xA9", std::nullopt},      // é is not on the table
        {"a\xCC\x81", std::nullopt},     // a + combining acute is one character, not "a"
        {"\xC4\xB0", std::nullopt},      // İ lower-cases to i + dot above, not to i
        {"\xEF\xBC\xA1", std::nullopt},  // fullwidth A lower-cases to fullwidth a
    };
    for (const auto& [name, code] : keys) EXPECT_EQ(keyCodeFor(name), code) << "'" << name << "'";
    const std::vector<std::pair<std::string, Texts>> chords = {
        {"", {""}}, {"+", {"+"}}, {"++", {"+"}}, {"cmd+", {"cmd", "+"}}, {"cmd+shift++", {"cmd", "shift", "+"}},
        {"cmd+++", {"cmd", "", "+"}}, {"+a", {"", "a"}}, {"cmd++c", {"cmd", "", "c"}}, {"Cmd + C", {"Cmd ", " C"}},
    };
    for (const auto& [combo, parts] : chords) EXPECT_EQ(splitChord(combo), parts) << "'" << combo << "'";
    const std::vector<std::pair<std::string, EventFlags>> flags = {
        {"none", 0}, {"", 0}, {",,", 0}, {"cmd,,shift", 0x120000}, {"shift,shift", 0x20000}, {"fn,ctrl,alt", 0x8C0000}};
    for (const auto& [text, value] : flags) EXPECT_EQ(parseFlags(text), value) << text;
    for (const char* text : {"None", "Cmd", "capslock"}) EXPECT_THROW(parseFlags(text), InputCommandError) << text;
    const std::vector<std::pair<std::string, KeyCode>> codes = {{"0", 0}, {"65535", 65535}, {"-0", 0}, {"007", 7}};
    for (const auto& [text, code] : codes) EXPECT_EQ(parseKeyCode(text), code) << text;
    for (const std::string text : {"", "+", " 5", "5 ", "1e2", "65536", "0x10", "99999999999999999999"}) {
        EXPECT_THROW(parseKeyCode(text), InputCommandError) << "'" << text << "'";
    }
}

TEST(KeyVocabulary, TextIsPlannedAsOneStepPerCharacterWithLineBreaksAsKeysAndChordsAreSplit) {
    const std::vector<std::pair<Line, std::string>> cases = {
        {{"plan-type", ""}, "[]"},
        {{"plan-type", "hi\n\b\t"}, R"(["h","i",{"key":"return"},{"key":"backspace"},{"key":"tab"}])"},
        {{"plan-type", "a\n\rb"}, R"(["a",{"key":"return"},{"key":"return"},"b"])"},
        {{"plan-type", "\r\r\n/"}, R"([{"key":"return"},{"key":"return"},"\/"])"},
        {{"plan-type", "\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7x\x01"}, "[\"\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7\",\"x\",\"\\u0001\"]"},
        {{"plan-type", "\xE6\x97\xA5\xE6\x9C\xAC  "}, "[\"\xE6\x97\xA5\",\"\xE6\x9C\xAC\",\" \",\" \"]"},
        {{"parse-chord", "ctrl+\"+\\/"}, "[\"ctrl\",\"\\\"\",\"\\\\\\/\"]"},
    };
    for (const auto& [line, out] : cases) {
        fake::FakePlatform fresh;
        EXPECT_EQ(fresh.run(line), 0);
        EXPECT_EQ(fresh.streams.out(), out + "\n") << line[1];
    }
}

TEST(CommandArguments, NumbersAreReadWholeAndInRange) {
    const std::vector<std::tuple<std::string, std::string, platform::Point>> points = {
        {"10", "20", {10, 20}}, {"-3.5", "+0.25", {-3.5, 0.25}}, {"0x1p3", ".5", {8, 0.5}}, {"1E-3", "7.", {0.001, 7}}};
    for (const auto& [x, y, point] : points) EXPECT_EQ(parsePoint(x, y), point) << x << " " << y;
    EXPECT_TRUE(std::isnan(parsePoint("nan", "inf").x));
    for (const auto& [x, y] : std::vector<std::pair<std::string, std::string>>{
             {" 10", "20"}, {"\t1", "2"}, {"10 ", "20"}, {"", "1"}, {"1e999", "0"}, {"0", "-1e999"}, {"1,5", "2"},
             {"0x", "1"}, {"1e-400", "1"}}) {
        EXPECT_THROW(parsePoint(x, y), InputCommandError) << "'" << x << "' '" << y << "'";
    }
    const std::vector<std::tuple<std::string, int, std::optional<long long>>> integers = {
        {"+12", 10, 12}, {"-12", 10, -12}, {"9223372036854775807", 10, 9223372036854775807LL},
        {"-9223372036854775808", 10, std::numeric_limits<long long>::min()}, {"9223372036854775808", 10, std::nullopt},
        {"-9223372036854775809", 10, std::nullopt},
        {"-", 10, std::nullopt}, {"a", 10, std::nullopt}, {"1F600", 16, 0x1F600}, {"ff", 16, 255},
        {"g", 16, std::nullopt}, {"", 16, std::nullopt}};
    for (const auto& [text, radix, value] : integers) EXPECT_EQ(parseInteger(text, radix), value) << text;
}

}  // namespace
}  // namespace brisko
