// The one-shot pointer and keyboard commands of the built program against a real X server.
#include <gtest/gtest.h>

#include <sstream>

#include "e2e/support/recording_window.h"
#include "support/run_program.h"
#include "support/xvfb_display.h"

namespace brisko::e2e {
namespace {

using testing::ProgramResult;

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

bool isModifierKeysym(const std::string& hex) {
    const unsigned long sym = std::stoul(hex, nullptr, 16);
    return sym >= 0xffe1 && sym <= 0xffee;  // Shift_L .. Hyper_R
}

class ProgramInput : public ::testing::Test {
protected:
    ProgramResult run(const std::vector<std::string>& args) {
        return testing::runProgram(testing::programPath(), args, "", {{"DISPLAY", server.name()}});
    }
    // Runs the command, which must succeed silently, and returns what the window received.
    std::vector<std::string> received(const std::vector<std::string>& args) {
        const ProgramResult r = run(args);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.out, "");
        EXPECT_EQ(r.err, "");
        return window.events();
    }
    void expectNothingHeld() {
        const HeldState now = window.held();
        EXPECT_EQ(now.keys, "none");
        EXPECT_EQ(now.state, "none");
    }

    testing::XvfbDisplay server;
    RecordingWindow window{server.name(), {{100, 100, 800, 500}}};
};

TEST_F(ProgramInput, MoveTakesThePointerToThePoint) {
    EXPECT_EQ(received({"move", "400", "300"}), std::vector<std::string>{"motion 0 400 300 none"});
    const HeldState now = window.held();
    EXPECT_EQ(now.x, 400);
    EXPECT_EQ(now.y, 300);
}

TEST_F(ProgramInput, ClickPressesAndReleasesEachButtonAtThePoint) {
    struct Case {
        std::vector<std::string> button;
        std::string xButton, heldName;
    };
    const Case cases[] = {
        {{}, "1", "button1"}, {{"left"}, "1", "button1"}, {{"right"}, "3", "button3"}, {{"middle"}, "2", "button2"},
    };
    int x = 300;
    for (const Case& c : cases) {
        const std::string at = std::to_string(x += 20) + " 200";
        std::vector<std::string> args = {"click", std::to_string(x), "200"};
        args.insert(args.end(), c.button.begin(), c.button.end());
        EXPECT_EQ(received(args), (std::vector<std::string>{"motion 0 " + at + " none",
                                                            "press 0 " + c.xButton + " " + at + " none",
                                                            "release 0 " + c.xButton + " " + at + " " + c.heldName}))
            << c.xButton;
    }
    expectNothingHeld();
}

TEST_F(ProgramInput, DoubleClickIsTwoClicksAtThePoint) {
    EXPECT_EQ(received({"doubleclick", "360", "220"}),
              (std::vector<std::string>{"motion 0 360 220 none", "press 0 1 360 220 none", "release 0 1 360 220 button1",
                                        "press 0 1 360 220 none", "release 0 1 360 220 button1"}));
}

TEST_F(ProgramInput, DragEndsAtTheEndPointWithTheButtonReleased) {
    const auto lines = received({"drag", "200", "400", "500", "450"});
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines.front(), "motion 0 200 400 none");
    EXPECT_EQ(lines[1], "press 0 1 200 400 none");
    EXPECT_EQ(lines.back(), "release 0 1 500 450 button1");
    // Twelve steps with the button held, each further along, the last at the end point.
    const std::vector<std::string> steps(lines.begin() + 2, lines.end() - 1);
    ASSERT_EQ(steps.size(), 12u);
    int lastX = 200;
    for (const std::string& step : steps) {
        const auto w = words(step);
        EXPECT_EQ(w[4], "button1") << step;
        EXPECT_GT(std::stoi(w[2]), lastX) << step;
        lastX = std::stoi(w[2]);
    }
    EXPECT_EQ(steps.back(), "motion 0 500 450 button1");
    const HeldState after = window.held();
    EXPECT_EQ(after.state, "none");
    EXPECT_EQ(after.x, 500);
    EXPECT_EQ(after.y, 450);
}

TEST_F(ProgramInput, ScrollClicksTheWheelOncePerStep) {
    received({"move", "400", "300"});
    const std::tuple<std::string, int, std::string> cases[] = {{"up", 2, "4"}, {"down", 3, "5"}, {"up", 1, "4"}};
    for (const auto& [direction, count, xButton] : cases) {
        std::vector<std::string> expected;
        for (int i = 0; i < count; ++i) {
            expected.push_back("press 0 " + xButton + " 400 300 none");
            expected.push_back("release 0 " + xButton + " 400 300 button" + xButton);
        }
        EXPECT_EQ(received({"scroll", direction, std::to_string(count)}), expected) << direction << " " << count;
    }
}

TEST_F(ProgramInput, TypedTextArrivesAsThatText) {
    const std::pair<std::string, std::string> cases[] = {
        {"Hello, World! 0123 ~`[]{}", "Hello, World! 0123 ~`[]{}"},
        {"caf\xC3\xA9 na\xC3\xAFve \xC3\xB1 \xC3\x85ngstr\xC3\xB6m", "caf\xC3\xA9 na\xC3\xAFve \xC3\xB1 \xC3\x85ngstr\xC3\xB6m"},
        {"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xA7\xE3\x81\x99", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xA7\xE3\x81\x99"},
        {"\xF0\x9F\x98\x80 \xF0\x9F\x8E\x89", "\xF0\x9F\x98\x80 \xF0\x9F\x8E\x89"},
        // Line breaks and tabs are pressed as their keys.
        {"a\r\nb\tc\nd", "a\nb\tc\nd"},
    };
    for (const auto& [typed, arrived] : cases) {
        EXPECT_EQ(typedText(received({"type", typed})), arrived);
        expectNothingHeld();
    }
}

TEST_F(ProgramInput, TypingLeavesTheKeymapAsItWas) {
    EXPECT_EQ(typedText(received({"type", "\xE6\x97\xA5"})), "\xE6\x97\xA5");
    EXPECT_EQ(window.ask("find 0x10065e5", "found"), "found none");
}

TEST_F(ProgramInput, KeyCombosArriveWithTheirModifiersAndLeaveNothingHeld) {
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"ctrl+a", "0x61", "ctrl"},          {"cmd+c", "0x63", "super"},
        {"cmd+shift+4", "0x24", "shift+super"}, {"alt+f4", "0xffc1", "alt"},
        {"ctrl+alt+delete", "0xffff", "ctrl+alt"}, {"Return", "0xff0d", "none"},
        {"CMD+Left", "0xff51", "super"},      {"shift+tab", "0xfe20", "shift"},
    };
    for (const auto& [combo, keysym, state] : cases) {
        std::vector<std::string> keys;
        for (const std::string& line : linesOf(received({"key", combo}), "keypress")) {
            const auto w = words(line);
            if (!isModifierKeysym(w[3])) keys.push_back(w[3] + " " + w[4]);
        }
        EXPECT_EQ(keys, std::vector<std::string>{keysym + " " + state}) << combo;
        expectNothingHeld();
    }
}

TEST_F(ProgramInput, AKeyHeldByAnEarlierProcessDoesNotTurnAClickIntoAShiftClick) {
    received({"keydown", "56", "shift"});
    EXPECT_EQ(window.held().state, "shift");
    EXPECT_EQ(linesOf(received({"click", "300", "300"}), "press"), std::vector<std::string>{"press 0 1 300 300 none"});
    expectNothingHeld();
}

TEST(ProgramInputWithoutServer, EventsThatCannotBeCreatedEndTheProcess) {
    const auto r = testing::runProgram(testing::programPath(), {"move", "10", "10"}, "", {{"DISPLAY", ":32765"}});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "brisko-mac-input: failed to create CGEvent\n");
}

}  // namespace
}  // namespace brisko::e2e
