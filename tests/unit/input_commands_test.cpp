#include <gtest/gtest.h>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "support/input_events.h"

// Whole input command lines, as the process entry runs them, with the own-UI guard deciding over
// the fake window list.

namespace brisko {
namespace {

using namespace testing;
using Arguments = std::vector<std::string>;

constexpr EventFlags cmd = flag::command;
constexpr EventFlags shift = flag::shift;
constexpr std::int32_t hostPid = 77;
constexpr std::int32_t otherPid = 55;

platform::ScreenWindow window(std::uint32_t id, std::int32_t pid, platform::Rect bounds, std::int64_t layer = 0) {
    return {id, pid, bounds, 1.0, layer};
}

class InputCommands : public ::testing::Test {
protected:
    InputCommands() {
        platform.windows.bundles[hostPid] = "com.brisko.desktop";
        platform.windows.bundles[otherPid] = "com.example.editor";
    }

    // An editor fills the screen; the host's panel, when shown, lies in front of it.
    void showHostPanel(std::int64_t layer = 0) {
        platform.windows.windows = {window(4321, hostPid, {0, 0, 500, 500}, layer),
                                    window(9, otherPid, {0, 0, 2000, 2000})};
    }
    void showEditorOnly() { platform.windows.windows = {window(9, otherPid, {0, 0, 2000, 2000})}; }

    std::string pressRefusal(const std::string& at) {
        return "brisko-mac-input: refused a press at " + at + " on window 4321: " + processState().briskoOwnUiRefusal +
               "\n";
    }
    std::string keyRefusal() {
        return "brisko-mac-input: refused a key press while Brisko is frontmost: " + processState().briskoOwnUiRefusal +
               "\n";
    }

    fake::FakePlatform platform;
};

TEST_F(InputCommands, CommandLinesPostTheirSequences) {
    struct Case {
        Arguments line;
        std::vector<InputEvent> events;
        EventFlags heldAfter = 0;
    };
    std::vector<InputEvent> drag = {moved(0, 0), pointerEvent(type::leftMouseDown, 0, 0)};
    for (int i = 1; i <= 12; ++i) drag.push_back(pointerEvent(type::leftMouseDragged, 10.0 * i, 5.0 * i));
    drag.push_back(pointerEvent(type::leftMouseUp, 120, 60));
    const std::vector<Case> cases = {
        {{"move", "10", "20"}, {moved(10, 20)}},
        {{"move", "1e2", "0x10"}, {moved(100, 16)}},
        {{"click", "10", "20"}, {moved(10, 20), pointerEvent(1, 10, 20, 0, 1), pointerEvent(2, 10, 20, 0, 1)}},
        {{"click", "10", "20", "middle"}, {moved(10, 20), pointerEvent(25, 10, 20, 2, 1), pointerEvent(26, 10, 20, 2, 1)}},
        {{"click", "10", "20", "right"}, {moved(10, 20), pointerEvent(3, 10, 20, 1, 1), pointerEvent(4, 10, 20, 1, 1)}},
        {{"doubleclick", "5", "6"},
         {moved(5, 6), pointerEvent(1, 5, 6, 0, 1), pointerEvent(2, 5, 6, 0, 1), pointerEvent(1, 5, 6, 0, 2),
          pointerEvent(2, 5, 6, 0, 2)}},
        {{"drag", "0", "0", "120", "60"}, drag},
        {{"type", "a\r\nb"}, joined({typed(u"a"), {keyDown(36), keyUp(36)}, typed(u"b")})},
        {{"type", ""}, {}},
        {{"key", "cmd+shift+4"},
         {flagsChanged(55, 0x100000), flagsChanged(56, 0x120000), keyDown(21, 0x120000), keyUp(21, 0x120000),
          flagsChanged(56, 0x100000), flagsChanged(55, 0)}},
        {{"mousedown", "400", "220", "left"}, {pointerEvent(type::leftMouseDown, 400, 220, 0, 1)}},
        {{"mousedown", "400", "220", "right", "cmd"}, {pointerEvent(type::rightMouseDown, 400, 220, 1, 1, cmd)}, cmd},
        {{"keydown", "4", "cmd"}, {keyDown(4, cmd)}},
        {{"type-unicode", "1F600"}, typed(u"\U0001F600")},
        {{"type-unicode", "41"}, typed(u"A")},
        {{"type-unicode", "+e9"}, typed(u"\u00E9")},
        {{"type-unicode", "-0"}, typed(std::u16string(1, u'\0'))},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        fresh.windows.windows = {window(9, otherPid, {0, 0, 2000, 2000})};
        EXPECT_EQ(fresh.run(c.line), 0) << c.line[0] << " " << c.line[1];
        EXPECT_EQ(fresh.streams.err(), "");
        EXPECT_EQ(fresh.journal.all(), paced(c.events)) << c.line[0] << " " << c.line[1];
        // Only a flags argument of a pointer command changes what is held; a plain key's does not.
        EXPECT_EQ(processState().heldFlags, c.heldAfter) << c.line[0];
    }
}

TEST_F(InputCommands, AClickWithAnUnknownButtonHasAlreadyMoved) {
    showEditorOnly();
    EXPECT_EQ(platform.run({"click", "10", "20", "Left"}), 2);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: unknown mouse button 'Left' (want left|right|middle)\n");
    EXPECT_EQ(platform.journal.all(), paced({moved(10, 20)}));
}

TEST_F(InputCommands, ADragChecksItsStartBeforeReadingItsEnd) {
    showHostPanel();
    EXPECT_EQ(platform.run({"drag", "10", "20", "x", "4"}), 2);
    EXPECT_EQ(platform.streams.err(), pressRefusal("(10,20)"));
    fake::FakePlatform elsewhere;
    EXPECT_EQ(elsewhere.run({"drag", "900", "20", "x", "4"}), 2);
    EXPECT_EQ(elsewhere.streams.err(), "brisko-mac-input: expected numeric coordinates, got 'x 4'\n");
    EXPECT_EQ(elsewhere.windows.windowListQueries, 1);
    EXPECT_TRUE(elsewhere.journal.all().empty());
}

TEST_F(InputCommands, PressesOnTheHostsWindowsPostNothing) {
    struct Case {
        Arguments line;
        std::string at;
    };
    const std::vector<Case> cases = {
        {{"click", "10", "20"}, "(10,20)"},
        {{"click", "10.9", "20.2", "Left"}, "(10,20)"},  // refused before the button name is read
        {{"doubleclick", "499.5", "0"}, "(499,0)"},
        {{"drag", "1", "1", "900", "900"}, "(1,1)"},
        {{"mousedown", "30", "40", "left", "shift"}, "(30,40)"},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        fresh.windows.bundles[hostPid] = "com.brisko.desktop";
        fresh.windows.windows = {window(4321, hostPid, {0, 0, 500, 500})};
        EXPECT_EQ(fresh.run(c.line), 2) << c.line[0];
        EXPECT_EQ(fresh.streams.err(), pressRefusal(c.at)) << c.line[0];
        EXPECT_TRUE(fresh.journal.all().empty()) << c.line[0];
    }
}

TEST_F(InputCommands, OnlyPressesAreChecked) {
    showHostPanel();
    EXPECT_EQ(platform.run({"move", "10", "20"}), 0);
    EXPECT_EQ(platform.run({"drag", "900", "900", "10", "10"}), 0);  // ends on the panel
    EXPECT_EQ(platform.run({"mouseup", "10", "20", "left"}), 0);
    EXPECT_EQ(platform.run({"scroll", "up", "1"}), 0);
    EXPECT_EQ(platform.streams.err(), "");
    EXPECT_EQ(platform.journal.events().size(), 1u + 15u + 1u + 1u);
}

TEST_F(InputCommands, ARefusedButtonSwallowsExactlyOneRelease) {
    showHostPanel();
    EXPECT_EQ(platform.run({"mousedown", "400", "220", "left", "shift"}), 2);
    EXPECT_EQ(platform.streams.err(), pressRefusal("(400,220)"));
    // The flags were adopted before the refusal.
    EXPECT_EQ(processState().heldFlags, shift);
    EXPECT_EQ(processState().refusedButtons, (std::set<std::string>{"left"}));
    EXPECT_EQ(platform.run({"mousemove", "300", "300", "left"}), 0);
    EXPECT_EQ(platform.run({"mouseup", "300", "300", "left"}), 0);
    EXPECT_EQ(platform.run({"mouseup", "300", "300", "left"}), 0);
    EXPECT_EQ(platform.journal.all(), paced({moved(300, 300, shift), pointerEvent(2, 300, 300, 0, 1, shift)}));
}

TEST_F(InputCommands, ARefusedPressRecordsItsNameAsWrittenAndAnAllowedPressForgetsIt) {
    showHostPanel();
    EXPECT_EQ(platform.run({"mousedown", "1", "1", "Left"}), 2);
    EXPECT_EQ(platform.run({"mousedown", "2", "2", "right"}), 2);
    EXPECT_EQ(processState().refusedButtons, (std::set<std::string>{"Left", "right"}));
    EXPECT_EQ(platform.run({"mousedown", "900", "900", "right"}), 0);
    EXPECT_EQ(processState().refusedButtons, (std::set<std::string>{"Left"}));
    EXPECT_EQ(platform.run({"mouseup", "900", "900", "right"}), 0);
    EXPECT_EQ(platform.journal.events(),
              (std::vector<InputEvent>{pointerEvent(3, 900, 900, 1, 1), pointerEvent(4, 900, 900, 1, 1)}));
}

TEST_F(InputCommands, KeyPressesWhileTheHostHoldsTheKeyboardPostNothing) {
    const std::string menu = "brisko-mac-input: refused a key press: " + processState().briskoMenuOpenRefusal + "\n";
    struct Case {
        Arguments line;
        bool menuOpen;
        std::string err;
    };
    const std::vector<Case> cases = {
        {{"type", "hi"}, false, keyRefusal()},
        {{"type", ""}, false, keyRefusal()},
        {{"key", "cmd+c"}, false, keyRefusal()},
        {{"key", "hyper+a"}, false, keyRefusal()},  // refused before the combo is read
        {{"keydown", "0", "none"}, false, keyRefusal()},
        {{"keydown", "0", "Cmd"}, false, keyRefusal()},  // refused before the flags are read
        {{"type-unicode", "41"}, false, keyRefusal()},
        {{"key", "a"}, true, menu},
        {{"keydown", "36", "none"}, true, menu},
        // Arguments read before the check still fail on their own.
        {{"keydown", "x", "none"}, false, "brisko-mac-input: expected a CGKeyCode integer, got 'x'\n"},
        {{"type-unicode", "D800"}, false, "brisko-mac-input: expected a hex Unicode code point, got 'D800'\n"},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        fresh.windows.bundles[hostPid] = "com.brisko.desktop";
        fresh.windows.windows = {window(4321, hostPid, {0, 0, 500, 500}, c.menuOpen ? 101 : 0)};
        EXPECT_EQ(fresh.run(c.line), 2) << c.line[0] << " " << c.line[1];
        EXPECT_EQ(fresh.streams.err(), c.err) << c.line[0] << " " << c.line[1];
        EXPECT_TRUE(fresh.journal.all().empty());
    }
}

TEST_F(InputCommands, ModifiersAndReleasesAreNeverRefused) {
    showHostPanel();
    EXPECT_EQ(platform.run({"keydown", "56", "shift"}), 0);
    EXPECT_EQ(platform.run({"keyup", "0", "none"}), 0);
    EXPECT_EQ(platform.run({"keyup", "56", "none"}), 0);
    EXPECT_EQ(platform.streams.err(), "");
    EXPECT_EQ(platform.journal.all(), paced({flagsChanged(56, shift), keyUp(0), flagsChanged(56, 0)}));
}

TEST_F(InputCommands, AFailedEventPartWayEndsTheCommandWithItsEarlierEventsPosted) {
    struct Case {
        Arguments line;
        std::size_t failFrom;
    };
    const std::vector<Case> cases = {
        {{"click", "1", "2"}, 1},        {{"click", "1", "2"}, 2},     {{"doubleclick", "1", "2"}, 3},
        {{"drag", "0", "0", "9", "9"}, 2}, {{"type", "abc"}, 3},        {{"type-unicode", "41"}, 1},
        {{"mousedown", "1", "2", "left"}, 0},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        fresh.windows.windows = {window(9, otherPid, {0, 0, 2000, 2000})};
        fresh.events.failFrom = c.failFrom;
        EXPECT_EQ(fresh.run(c.line), 2) << c.line[0];
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: failed to create CGEvent\n") << c.line[0];
        // Nothing is released: a press posted before the failure stays down.
        EXPECT_EQ(fresh.journal.events().size(), c.failFrom) << c.line[0];
    }
}

}  // namespace
}  // namespace brisko
