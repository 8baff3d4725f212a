// The pointer and keyboard commands of the built program, one-shot and inside input-stream, against
// a real X server: what a window of the window client receives.
#include <gtest/gtest.h>

#include <cstdio>

#include "cli/unicode_text.h"
#include "support/window_client_process.h"
#include "support/x_servers.h"

namespace brisko::testing {
namespace {

using Lines = std::vector<std::string>;

// "KEYSYM STATE" of each key press among the lines.
Lines pressedKeys(const Lines& lines) {
    Lines keys;
    for (const std::string& line : linesOf(lines, "keypress")) keys.push_back(words(line)[3] + " " + words(line)[4]);
    return keys;
}

class ProgramInput : public ::testing::Test {
protected:
    ProgramInput() { app.map("app", "100 100 800 500 override focus"); }

    // Runs the command, which must succeed silently, and returns what the window received.
    Lines received(const std::vector<std::string>& args, const std::string& input = "") {
        const ProgramResult r = runBrisko(args, input);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "");
        return app.events();
    }
    void expectNothingHeld() { EXPECT_EQ(app.held(), "none none"); }

    const XvfbDisplay& display = testDisplay();
    WindowClientProcess app;
};

TEST_F(ProgramInput, PointerCommandsArriveAtTheirPointWithTheirOwnFlagsAndEveryButtonReleased) {
    received({"keydown", "56", "shift"});
    const std::vector<std::pair<std::vector<std::string>, Lines>> cases = {
        // A key held by an earlier process is let go first: no command here is a shift-click.
        {{"move", "400", "300"}, {"keyrelease app 50 0xffe1 shift", "motion app 400 300 none"}},
        {{"click", "300", "200"}, {"motion app 300 200 none", "press app 1 300 200 none", "release app 1 300 200 button1"}},
        {{"click", "321.6", "222.4", "right"},
         {"motion app 322 222 none", "press app 3 322 222 none", "release app 3 322 222 button3"}},
        {{"click", "340", "200", "middle"},
         {"motion app 340 200 none", "press app 2 340 200 none", "release app 2 340 200 button2"}},
        {{"doubleclick", "360", "220"},
         {"motion app 360 220 none", "press app 1 360 220 none", "release app 1 360 220 button1",
          "press app 1 360 220 none", "release app 1 360 220 button1"}},
        {{"scroll", "up", "2"},
         {"press app 4 360 220 none", "release app 4 360 220 button4", "press app 4 360 220 none",
          "release app 4 360 220 button4"}},
        {{"scroll", "down", "1"}, {"press app 5 360 220 none", "release app 5 360 220 button5"}},
    };
    for (const auto& [args, lines] : cases) EXPECT_EQ(received(args), lines) << args[0] << " " << args[1];
    // A drag moves with the left button held, one pixel a step here, and lets go at its end.
    Lines drag = {"motion app 200 150 none", "press app 1 200 150 none"};
    for (int step = 1; step <= 12; ++step) drag.push_back("motion app " + std::to_string(200 + step) + " 150 button1");
    drag.push_back("release app 1 212 150 button1");
    EXPECT_EQ(received({"drag", "200", "150", "212", "150"}), drag);
    expectNothingHeld();
}

TEST_F(ProgramInput, TypedTextArrivesAsThatTextAndTheKeymapIsLeftAsItWas) {
    std::string manyIdeographs;  // more distinct keysyms than the keymap has spare keycodes (19)
    for (char32_t c = 0x4E00; c < 0x4E00 + 25; ++c) manyIdeographs += utf8FromScalar(c);
    const std::pair<std::string, std::string> cases[] = {
        {"Hello, World! 0123 ~`[]{}", "Hello, World! 0123 ~`[]{}"},
        {"caf\xC3\xA9 \xC3\x9F \xCE\xA9 e\xCC\x81", "caf\xC3\xA9 \xC3\x9F \xCE\xA9 e\xCC\x81"},
        {"\xF0\x9F\x98\x80 \xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD", "\xF0\x9F\x98\x80 \xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD"},
        {"a\r\nb\tc\nd", "a\nb\tc\nd"},  // line breaks and tabs are pressed as their keys
        {manyIdeographs, manyIdeographs},
    };
    for (const auto& [typed, arrived] : cases) {
        EXPECT_EQ(typedText(received({"type", typed})), arrived);
        expectNothingHeld();
    }
    EXPECT_EQ(app.ask("find 0x1004e18", "found"), "found none") << "the last ideograph typed is unbound again";
}

TEST_F(ProgramInput, KeyCombosArriveWithTheirModifiersAndLeaveNothingHeld) {
    const std::pair<std::string, Lines> cases[] = {
        {"ctrl+a", {"0xffe3 none", "0x61 ctrl"}},
        {"cmd+shift+4", {"0xffeb none", "0xffe1 super", "0x24 shift+super"}},
        {"alt+f5", {"0xffe9 none", "0xffc2 alt"}},
        {"Return", {"0xff0d none"}},
        {"CMD+Left", {"0xffeb none", "0xff51 super"}},
    };
    for (const auto& [combo, keys] : cases) {
        EXPECT_EQ(pressedKeys(received({"key", combo})), keys) << combo;
        expectNothingHeld();
    }
    // Every character key arrives as the keysym of its character; the named keys as theirs.
    std::vector<std::pair<std::string, unsigned>> keys = {
        {"escape", 0xff1b}, {"backspace", 0xff08}, {"delete", 0xffff}, {"tab", 0xff09}, {"space", 0x20},
        {"home", 0xff50}, {"end", 0xff57}, {"pageup", 0xff55}, {"pagedown", 0xff56}, {"right", 0xff53},
        {"down", 0xff54}, {"up", 0xff52}};
    for (unsigned n = 1; n <= 12; ++n) keys.push_back({"f" + std::to_string(n), 0xffbd + n});  // F1 is 0xffbe
    for (char c : std::string("asdfghjklqwertyuiopzxcvbnm1234567890-=[];'\\,./`")) keys.push_back({{c}, unsigned(c)});
    for (const auto& [name, keysym] : keys) {
        char pressed[32];
        std::snprintf(pressed, sizeof pressed, "0x%x none", keysym);
        EXPECT_EQ(pressedKeys(received({"key", name})), Lines{pressed}) << name;
    }
}

TEST_F(ProgramInput, ModifierKeysPressTheirSideAndFlagsHoldAcrossTheStreamsCommands) {
    const Lines lines = received({"input-stream"},
        "keydown 60 shift\nkeyup 60 none\nkeydown 62 ctrl\nkeyup 62 none\nkeydown 61 alt\nkeyup 61 none\n"
        "keydown 54 cmd\nkeyup 54 none\nkeydown 63 fn\nkeyup 63 none\n"  // fn has no X key: nothing
        "keydown 56 shift\nmousedown 300 300 left\nmouseup 300 300 left\nkeyup 56 none\n"
        "mousedown 320 300 left ctrl,alt\nmouseup 320 300 left none\n"
        "keydown 59 ctrl\ntype-unicode 61\nkeyup 59 none\n"  // typed text ignores held modifiers, for its moment
        "keydown 82 none\nkeyup 82 none\nkeydown 114 none\nkeyup 114 none\n");  // keypad 0 (at the shift level), help
    EXPECT_EQ(pressedKeys(lines), (Lines{"0xffe2 none", "0xffe4 none", "0xffea none", "0xffec none", "0xffe1 none", "0xffe9 none",
                           "0xffe3 alt", "0xffe3 none", "0x61 none", "0xffe3 none", "0xffe1 none", "0xffb0 shift", "0xffe1 none", "0xff63 none"}));
    EXPECT_EQ(linesOf(lines, "press"), (Lines{"press app 1 300 300 shift", "press app 1 320 300 ctrl+alt"}));
    EXPECT_EQ(linesOf(lines, "release"), (Lines{"release app 1 300 300 shift+button1", "release app 1 320 300 button1"}));
    expectNothingHeld();
}

TEST_F(ProgramInput, FlagsHoldModifiersForTheirEventOnlyAndOnlyExplicitPressesStayDown) {
    // What the server holds ("KEYS STATE") after each command of one stream (keycodes: a 38, Shift_L 50).
    const std::vector<std::pair<std::string, std::string>> steps = {
        {"scroll up 1 shift", "none none"},
        {"mousemove 310 300 none cmd", "none none"},
        {"mousedown 300 300 left ctrl,alt", "none button1"},
        {"mouseup 300 300 left cmd", "none none"},
        {"keydown 0 cmd,shift", "38 none"},
        {"keyup 0 alt", "none none"},
        {"keydown 56 shift", "50 shift"},
        {"mousedown 300 300 right ctrl", "50 shift+button3"},
        {"mouseup 300 300 right none", "50 shift"},
        {"type-unicode 62", "50 shift"},
        {"keyup 56 none", "none none"},
    };
    Process stream(programPath(), {"input-stream"});
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto& [command, held] = steps[i];
        ASSERT_TRUE(stream.write(command + "\nplay s" + std::to_string(i) + " 0 0\n"));
        ASSERT_TRUE(stream.waitForOutput("played s" + std::to_string(i) + " ok 0")) << command;
        EXPECT_EQ(app.held(), held) << command;
    }
    stream.closeInput();
    EXPECT_EQ(stream.finish().err, "");
}

TEST_F(ProgramInput, AKeyCodeWithNoKeysymPostsNothingAndEndsTheProcessLikeAnyEventThatCannotBeMade) {
    const ProgramResult r = runBrisko({"input-stream"}, "mousemove 350 350\nkeyup 93 cmd\nmousemove 360 350\n");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "brisko-mac-input: failed to create CGEvent\n");
    EXPECT_EQ(app.events(), Lines{"motion app 350 350 none"});
    expectNothingHeld();
}

}  // namespace
}  // namespace brisko::testing
