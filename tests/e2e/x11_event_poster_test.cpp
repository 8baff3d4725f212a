#include <gtest/gtest.h>

#include <sstream>

#include "e2e/support/backend_under_test.h"
#include "e2e/support/recording_window.h"
#include "support/xvfb_display.h"
#include "input/key_vocabulary.h"
#include "input/unicode_text.h"

namespace brisko::e2e {
namespace {

namespace type = platform::event_type;
using platform::InputEvent;

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

InputEvent pointer(std::uint32_t eventType, double x, double y, std::uint32_t button = 0, EventFlags flags = 0) {
    InputEvent e;
    e.type = eventType;
    e.point = {x, y};
    e.button = button;
    e.flags = flags;
    return e;
}

InputEvent key(std::uint32_t eventType, KeyCode code, EventFlags flags = 0) {
    InputEvent e;
    e.type = eventType;
    e.keyCode = code;
    e.flags = flags;
    return e;
}

InputEvent text(std::uint32_t eventType, const std::string& utf8) {
    InputEvent e;
    e.type = eventType;
    e.text = utf16(utf8);
    return e;
}

InputEvent scroll(std::int32_t lines) {
    InputEvent e;
    e.type = type::scrollWheel;
    e.scrollLines = lines;
    return e;
}

// The keysyms (hex, as the window writes them) of the key presses among lines.
std::vector<std::string> pressedKeysyms(const std::vector<std::string>& lines) {
    std::vector<std::string> out;
    for (const std::string& line : linesOf(lines, "keypress")) out.push_back(words(line)[3]);
    return out;
}

bool isModifierKeysym(const std::string& hex) {
    const unsigned long sym = std::stoul(hex, nullptr, 16);
    return sym >= 0xffe1 && sym <= 0xffee;  // Shift_L .. Hyper_R
}

class X11EventPoster : public ::testing::Test {
protected:
    void post(const std::vector<InputEvent>& events) {
        for (const InputEvent& e : events) ASSERT_TRUE(backend->services().events.post(e));
    }
    void expectNothingHeld() {
        const HeldState now = window.held();
        EXPECT_EQ(now.keys, "none");
        EXPECT_EQ(now.state, "none");
    }

    testing::XvfbDisplay server;
    RecordingWindow window{server.name(), {{100, 100, 600, 400}}};
    std::unique_ptr<platform::Backend> backend = backendOn(server.name());
};

TEST_F(X11EventPoster, ButtonsArriveAtTheEventsPointAsXButtons) {
    struct Case {
        std::uint32_t down, up, button;
        std::string xButton, heldName;
    };
    const Case cases[] = {
        {type::leftMouseDown, type::leftMouseUp, 0, "1", "button1"},
        {type::rightMouseDown, type::rightMouseUp, 1, "3", "button3"},
        {type::otherMouseDown, type::otherMouseUp, 2, "2", "button2"},
    };
    int x = 200;
    for (const Case& c : cases) {
        x += 50;
        const std::string at = std::to_string(x) + " 150";
        post({pointer(type::mouseMoved, x, 150), pointer(c.down, x, 150, c.button), pointer(c.up, x, 150, c.button)});
        EXPECT_EQ(window.events(), (std::vector<std::string>{"motion 0 " + at + " none",
                                                             "press 0 " + c.xButton + " " + at + " none",
                                                             "release 0 " + c.xButton + " " + at + " " + c.heldName}))
            << "button " << c.button;
    }
}

TEST_F(X11EventPoster, AButtonEventElsewhereMovesThePointerThere) {
    post({pointer(type::leftMouseDown, 321.6, 222.4), pointer(type::leftMouseUp, 321.6, 222.4)});
    EXPECT_EQ(window.events(), (std::vector<std::string>{"motion 0 322 222 none", "press 0 1 322 222 none",
                                                         "release 0 1 322 222 button1"}));
}

TEST_F(X11EventPoster, DraggedEventsMoveWithTheButtonHeld) {
    post({pointer(type::leftMouseDown, 150, 150), pointer(type::leftMouseDragged, 200, 180),
          pointer(type::leftMouseDragged, 250, 210), pointer(type::leftMouseUp, 250, 210)});
    EXPECT_EQ(window.events(), (std::vector<std::string>{"motion 0 150 150 none", "press 0 1 150 150 none",
                                                         "motion 0 200 180 button1", "motion 0 250 210 button1",
                                                         "release 0 1 250 210 button1"}));
    const HeldState after = window.held();
    EXPECT_EQ(after.state, "none");
    EXPECT_EQ(after.x, 250);
    EXPECT_EQ(after.y, 210);
}

TEST_F(X11EventPoster, EachScrollEventIsOneWheelClick) {
    post({pointer(type::mouseMoved, 300, 300)});
    window.events();
    post({scroll(3), scroll(-3), scroll(-3)});
    EXPECT_EQ(window.events(),
              (std::vector<std::string>{"press 0 4 300 300 none", "release 0 4 300 300 button4", "press 0 5 300 300 none",
                                        "release 0 5 300 300 button5", "press 0 5 300 300 none",
                                        "release 0 5 300 300 button5"}));
}

TEST_F(X11EventPoster, PointerEventsHoldTheModifiersOfTheirFlags) {
    post({pointer(type::leftMouseDown, 300, 200, 0, flag::shift | flag::control),
          pointer(type::leftMouseUp, 300, 200, 0, flag::shift | flag::control)});
    const auto clicks = linesOf(window.events(), "press");
    ASSERT_EQ(clicks.size(), 1u);
    EXPECT_EQ(clicks[0], "press 0 1 300 200 shift+ctrl");
    // The next event without flags lets them go.
    post({pointer(type::mouseMoved, 310, 200)});
    EXPECT_EQ(linesOf(window.events(), "motion"), std::vector<std::string>{"motion 0 310 200 none"});
    expectNothingHeld();
}

TEST_F(X11EventPoster, KeyCodesPressTheirKeysOfAUsKeyboard) {
    const std::pair<KeyCode, std::string> cases[] = {
        {0, "0x61"},    {11, "0x62"},   {6, "0x7a"},    {18, "0x31"},   {29, "0x30"},   {24, "0x3d"},
        {27, "0x2d"},   {33, "0x5b"},   {30, "0x5d"},   {41, "0x3b"},   {39, "0x27"},   {42, "0x5c"},
        {43, "0x2c"},   {47, "0x2e"},   {44, "0x2f"},   {50, "0x60"},   {36, "0xff0d"}, {48, "0xff09"},
        {49, "0x20"},   {53, "0xff1b"}, {51, "0xff08"}, {117, "0xffff"}, {115, "0xff50"}, {119, "0xff57"},
        {116, "0xff55"}, {121, "0xff56"}, {123, "0xff51"}, {124, "0xff53"}, {125, "0xff54"}, {126, "0xff52"},
        {122, "0xffbe"}, {120, "0xffbf"}, {111, "0xffc9"}, {105, "0xffca"}, {76, "0xff8d"}, {82, "0xffb0"},
    };
    for (const auto& [code, keysym] : cases) {
        post({key(type::keyDown, code), key(type::keyUp, code)});
        auto pressed = pressedKeysyms(window.events());
        // Keypad digits are at the shift level while num lock is off: shift comes and goes.
        std::erase_if(pressed, isModifierKeysym);
        EXPECT_EQ(pressed, std::vector<std::string>{keysym}) << "key code " << code;
        expectNothingHeld();
    }
}

TEST_F(X11EventPoster, AComboHoldsItsModifiersAroundTheKeyAndLetsThemGo) {
    // cmd+shift+4, as the program posts it.
    post({key(type::flagsChanged, 55, flag::command), key(type::flagsChanged, 56, flag::command | flag::shift),
          key(type::keyDown, 21, flag::command | flag::shift), key(type::keyUp, 21, flag::command | flag::shift),
          key(type::flagsChanged, 56, flag::command), key(type::flagsChanged, 55, 0)});
    const auto lines = window.events();
    const auto presses = linesOf(lines, "keypress");
    ASSERT_EQ(presses.size(), 3u);
    EXPECT_EQ(words(presses[0])[3], "0xffeb");  // Super_L
    EXPECT_EQ(words(presses[1])[3], "0xffe1");  // Shift_L, with super held
    EXPECT_EQ(words(presses[1])[4], "super");
    EXPECT_EQ(words(presses[2])[3], "0x24");  // the 4 key at its shift level: '$'
    EXPECT_EQ(words(presses[2])[4], "shift+super");
    EXPECT_EQ(linesOf(lines, "keyrelease").size(), 3u);
    expectNothingHeld();
}

TEST_F(X11EventPoster, ModifierKeyCodesChooseTheirSideAndFnIsIgnored) {
    const std::tuple<KeyCode, EventFlags, std::string> cases[] = {
        {56, flag::shift, "0xffe1"},   {60, flag::shift, "0xffe2"},   {59, flag::control, "0xffe3"},
        {62, flag::control, "0xffe4"}, {58, flag::alternate, "0xffe9"}, {61, flag::alternate, "0xffea"},
        {55, flag::command, "0xffeb"}, {54, flag::command, "0xffec"},
    };
    for (const auto& [code, bit, keysym] : cases) {
        post({key(type::flagsChanged, code, bit)});
        EXPECT_EQ(pressedKeysyms(window.events()), std::vector<std::string>{keysym}) << "key code " << code;
        post({key(type::flagsChanged, code, 0)});
        EXPECT_EQ(linesOf(window.events(), "keyrelease").size(), 1u) << "key code " << code;
        expectNothingHeld();
    }
    post({key(type::flagsChanged, 63, flag::secondaryFn), key(type::flagsChanged, 63, 0)});
    EXPECT_EQ(window.events(), std::vector<std::string>{});
}

TEST_F(X11EventPoster, KeysHeldByAnotherProcessAreBroughtToTheEventsFlags) {
    // Shift held (as by an earlier process), then a click without flags: not a shift-click.
    post({key(type::flagsChanged, 56, flag::shift)});
    EXPECT_EQ(window.held().state, "shift");
    post({pointer(type::leftMouseDown, 200, 200), pointer(type::leftMouseUp, 200, 200)});
    EXPECT_EQ(linesOf(window.events(), "press"), std::vector<std::string>{"press 0 1 200 200 none"});
    expectNothingHeld();
}

TEST_F(X11EventPoster, TextArrivesAsThatText) {
    const std::string cases[] = {
        "a",  "Z",  "~",  " ", "\xC3\xA9" /* é */, "\xC3\x9F" /* ß */, "\xCE\xA9" /* Ω */,
        "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E" /* 日本語 */, "\xF0\x9F\x98\x80" /* 😀 */,
        "e\xCC\x81" /* e + combining acute */, "\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD" /* thumbs up, skin tone */,
    };
    for (const std::string& t : cases) {
        post({text(type::keyDown, t), text(type::keyUp, t)});
        EXPECT_EQ(typedText(window.events()), t);
        expectNothingHeld();
    }
}

TEST_F(X11EventPoster, TextIgnoresModifiersHeldForOtherEvents) {
    post({key(type::flagsChanged, 59, flag::control), text(type::keyDown, "a"), text(type::keyUp, "a")});
    const auto presses = linesOf(window.events(), "keypress");
    ASSERT_EQ(presses.size(), 2u);
    const auto typed = words(presses[1]);
    EXPECT_EQ(std::vector<std::string>(typed.begin() + 3, typed.end()),
              (std::vector<std::string>{"0x61", "none", "U+0061"}));
    expectNothingHeld();
}

TEST_F(X11EventPoster, MoreDistinctCharactersThanSpareKeycodesStillArrive) {
    // More CJK ideographs, each its own keysym, than Xvfb's keymap has spare keycodes (19): the
    // spares are reused, each only after its last press has had time to be decoded.
    std::string expected;
    for (char32_t c = 0x4E00; c < 0x4E00 + 25; ++c) {
        const std::string t = utf8FromScalar(c);
        post({text(type::keyDown, t), text(type::keyUp, t)});
        expected += t;
    }
    EXPECT_EQ(typedText(window.events()), expected);
}

TEST_F(X11EventPoster, BoundKeycodesAreRestoredWhenTheBackendEnds) {
    post({text(type::keyDown, "\xE6\x97\xA5"), text(type::keyUp, "\xE6\x97\xA5")});
    EXPECT_NE(window.ask("find 0x10065e5", "found"), "found none");
    backend.reset();
    EXPECT_EQ(window.ask("find 0x10065e5", "found"), "found none");
}

TEST(X11EventPosterWithoutServer, NothingIsCreatedWhenTheDisplayCannotBeReached) {
    const auto backend = backendOn(":32765");
    EXPECT_FALSE(backend->services().events.post(pointer(type::mouseMoved, 1, 1)));
}

TEST(X11EventPosterWithoutXtest, NothingIsCreatedWithoutTheTestExtension) {
    testing::XvfbDisplay server(1440, 900, {"-extension", "XTEST"});
    const auto backend = backendOn(server.name());
    EXPECT_FALSE(backend->services().events.post(pointer(type::mouseMoved, 1, 1)));
}

}  // namespace
}  // namespace brisko::e2e
