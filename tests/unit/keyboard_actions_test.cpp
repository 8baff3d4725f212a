#include <gtest/gtest.h>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "input/keyboard_actions.h"
#include "support/input_events.h"

namespace brisko {
namespace {

using namespace testing;

constexpr EventFlags cmd = flag::command;
constexpr EventFlags shift = flag::shift;
constexpr EventFlags alt = flag::alternate;
constexpr EventFlags ctrl = flag::control;

class KeyboardActions : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

TEST_F(KeyboardActions, TypingMakesOneUnicodePressPerCharacterAndRealKeysForLineBreaks) {
    struct Case {
        std::string text;
        std::vector<InputEvent> events;
    };
    const std::vector<Case> cases = {
        {"", {}},
        {"a\r\nb", joined({typed(u"a"), {keyDown(36), keyUp(36)}, typed(u"b")})},
        {"\t\b\n", {keyDown(48), keyUp(48), keyDown(51), keyUp(51), keyDown(36), keyUp(36)}},
        {"e\xCC\x81!", joined({typed(u"e\u0301"), typed(u"!")})},
        {"\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD", typed({0xD83D, 0xDC4D, 0xD83C, 0xDFFD})},  // skin tone: one press
        {"A", typed(u"A")},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        // A held modifier is not stamped on typed text.
        processState().heldFlags = shift;
        typeText(c.text);
        EXPECT_EQ(fresh.journal.all(), paced(c.events)) << c.text;
        EXPECT_EQ(processState().heldFlags, shift);
    }
}

TEST_F(KeyboardActions, CombosPressModifiersInOrderAndReleaseThemInReverse) {
    struct Case {
        std::string combo;
        std::vector<InputEvent> events;
    };
    const std::vector<Case> cases = {
        {"cmd+shift+4",
         {flagsChanged(55, 0x100000), flagsChanged(56, 0x120000), keyDown(21, 0x120000), keyUp(21, 0x120000),
          flagsChanged(56, 0x100000), flagsChanged(55, 0)}},
        {"Return", {keyDown(36), keyUp(36)}},
        {"a", {keyDown(0), keyUp(0)}},
        {"+", {keyDown(24), keyUp(24)}},
        {"CMD+c", {flagsChanged(55, cmd), keyDown(8, cmd), keyUp(8, cmd), flagsChanged(55, 0)}},
        {"cmd+C", {flagsChanged(55, cmd), keyDown(8, cmd), keyUp(8, cmd), flagsChanged(55, 0)}},
        {"cmd++", {flagsChanged(55, cmd), keyDown(24, cmd), keyUp(24, cmd), flagsChanged(55, 0)}},
        {"cmd+", {flagsChanged(55, cmd), keyDown(24, cmd), keyUp(24, cmd), flagsChanged(55, 0)}},
        {"ctrl+alt+delete",
         {flagsChanged(59, ctrl), flagsChanged(58, ctrl | alt), keyDown(117, ctrl | alt), keyUp(117, ctrl | alt),
          flagsChanged(58, ctrl), flagsChanged(59, 0)}},
        // The last part is always the key, even when it names a modifier.
        {"cmd+shift", {flagsChanged(55, cmd), keyDown(56, cmd), keyUp(56, cmd), flagsChanged(55, 0)}},
        {"fn+F5", {flagsChanged(63, 0x800000), keyDown(96, 0x800000), keyUp(96, 0x800000), flagsChanged(63, 0)}},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        pressCombo(c.combo);
        EXPECT_EQ(fresh.journal.all(), paced(c.events)) << c.combo;
    }
}

TEST_F(KeyboardActions, ACombosModifiersLeaveNothingHeldAndAPlainKeyLeavesTheFlagsAlone) {
    struct Case {
        std::string combo;
        EventFlags heldAfter;
    };
    for (const Case& c : {Case{"cmd+a", 0}, Case{"shift+cmd+a", 0}, Case{"a", alt}, Case{"return", alt}}) {
        fake::FakePlatform fresh;
        processState().heldFlags = alt;
        pressCombo(c.combo);
        EXPECT_EQ(processState().heldFlags, c.heldAfter) << c.combo;
    }
}

TEST_F(KeyboardActions, RejectedCombosEndTheProcessBeforeAnyEvent) {
    struct Case {
        std::string combo;
        std::string err;
    };
    const std::vector<Case> cases = {
        {"", "empty key combo part in ''"},
        {"+a", "empty key combo part in '+a'"},
        {"cmd++c", "empty key combo part in 'cmd++c'"},
        {"cmd+++", "empty key combo part in 'cmd+++'"},
        {"hyper+a", "unknown modifier 'hyper' in combo 'hyper+a'"},
        {"HYPER+a", "unknown modifier 'hyper' in combo 'HYPER+a'"},
        {"cmd+hyper+!", "unknown modifier 'hyper' in combo 'cmd+hyper+!'"},
        {"cmd+!", "unknown key '!'"},
        {"!", "unknown key '!'"},
        {"cmd+shift+ab", "unknown key 'ab'"},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        processState().heldFlags = alt;
        EXPECT_EQ(fake::exitStatusOf([&] { pressCombo(c.combo); }), 2) << c.combo;
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: " + c.err + "\n");
        EXPECT_TRUE(fresh.journal.all().empty()) << c.combo;
        EXPECT_EQ(processState().heldFlags, alt) << c.combo;
    }
}

TEST_F(KeyboardActions, AModifierThatCannotBeCreatedIsStillRecordedAsHeld) {
    struct Case {
        std::size_t failFrom;
        EventFlags heldAfter;
    };
    // cmd+shift+4: 0 cmd down, 1 shift down, 2 key down, 3 key up, 4 shift up, 5 cmd up.
    const std::vector<Case> cases = {{0, cmd}, {1, cmd | shift}, {2, cmd | shift}, {4, cmd}, {5, 0}};
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        fresh.events.failFrom = c.failFrom;
        EXPECT_EQ(fake::exitStatusOf([] { pressCombo("cmd+shift+4"); }), 2);
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: failed to create CGEvent\n");
        EXPECT_EQ(fresh.journal.events().size(), c.failFrom);
        EXPECT_EQ(processState().heldFlags, c.heldAfter) << "failing from event " << c.failFrom;
    }
}

}  // namespace
}  // namespace brisko
