#include <gtest/gtest.h>

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "ownui/refusal.h"
#include "support/screen_windows.h"

namespace brisko {
namespace {

using testing::screenWindow;

const std::string ownPanel =
    "That's Brisko's own panel; it's for the person, not for you. Carry on with your task \xE2\x80\x94 the person "
    "answers it.";
const std::string menuOpen =
    "a person has Brisko's menu open; wait and check the screen again. Your keys would go to the menu, not to "
    "the app you are typing in.";

constexpr std::int32_t panelPid = 902;
constexpr std::int32_t menuBarPid = 611;
constexpr std::int32_t editorPid = 300;

class Refusal : public ::testing::Test {
protected:
    Refusal() {
        platform.windows.bundles[panelPid] = "com.brisko.desktop";
        platform.windows.paths[menuBarPid] = "/Applications/Brisko.app/Contents/MacOS/brisko-mac-menubar";
        platform.windows.bundles[editorPid] = "org.example.editor";
        platform.windows.paths[editorPid] = "/Applications/Editor.app/Contents/MacOS/Editor";
    }

    // The refusal message, or "" when the call returned normally.
    template <typename Check>
    static std::string refusal(Check check) {
        try {
            check();
        } catch (const InputCommandError& e) {
            return e.message();
        }
        return "";
    }

    fake::FakePlatform platform;
};

TEST_F(Refusal, PressMessageNamesThePointTruncatedAndTheWindow) {
    platform.windows.windows = {screenWindow(4321, panelPid, {-1000, -1000, 2000, 2000})};
    const std::vector<std::pair<platform::Point, std::string>> cases = {
        {{512.9, -3.7}, "refused a press at (512,-3) on window 4321: " + ownPanel},
        {{-0.5, 0.99}, "refused a press at (0,0) on window 4321: " + ownPanel},
        {{-999.9, 999.99}, "refused a press at (-999,999) on window 4321: " + ownPanel},
        {{-1000, 10}, "refused a press at (-1000,10) on window 4321: " + ownPanel},
    };
    for (const auto& [at, message] : cases) {
        const platform::Point point = at;
        EXPECT_EQ(refusal([&] { refuseIfOnBrisko(point); }), message) << point.x << "," << point.y;
    }
}

TEST_F(Refusal, PressElsewhereIsLetThrough) {
    platform.windows.windows = {screenWindow(7, editorPid, {0, 0, 300, 300}),
                                screenWindow(8, menuBarPid, {0, 0, 1440, 24}, 25)};
    EXPECT_EQ(refusal([] { refuseIfOnBrisko({100, 100}); }), "");
    EXPECT_EQ(refusal([] { refuseIfOnBrisko({1000, 10}); }), "refused a press at (1000,10) on window 8: " + ownPanel);
    platform.windows.windows.clear();  // an unavailable window list refuses nothing
    EXPECT_EQ(refusal([] { refuseIfOnBrisko({1000, 10}); }), "");
}

TEST_F(Refusal, EveryCheckTakesAFreshWindowList) {
    platform.windows.windows = {screenWindow(1, editorPid, {0, 0, 100, 100})};
    refuseIfOnBrisko({10, 10});
    refuseIfBriskoFrontmost();
    platform.windows.windows = {screenWindow(2, panelPid, {0, 0, 100, 100})};
    EXPECT_NE(refusal([] { refuseIfOnBrisko({10, 10}); }), "");
    EXPECT_NE(refusal([] { refuseIfBriskoFrontmost(); }), "");
    EXPECT_EQ(platform.windows.windowListQueries, 4);
}

TEST_F(Refusal, KeyMessagesWithTheMenuNamedFirst) {
    const auto panel = screenWindow(1, panelPid, {900, 40, 360, 520});
    const auto menu = screenWindow(2, menuBarPid, {1200, 24, 200, 300}, 101);
    const auto editor = screenWindow(3, editorPid, {0, 0, 800, 600});
    const std::string whileFrontmost = "refused a key press while Brisko is frontmost: " + ownPanel;
    const std::string whileMenuOpen = "refused a key press: " + menuOpen;
    const std::vector<std::pair<std::vector<platform::ScreenWindow>, std::string>> cases = {
        {{panel, editor}, whileFrontmost},
        {{menu, panel, editor}, whileMenuOpen},
        {{editor, menu}, whileMenuOpen},
        {{editor, panel}, ""},
        {{}, ""},
    };
    for (const auto& [windows, message] : cases) {
        platform.windows.windows = windows;
        EXPECT_EQ(refusal([] { refuseIfBriskoFrontmost(); }), message) << windows.size();
    }
}

TEST_F(Refusal, ChecksOnlyLearnAboutTheOwnersTheyNeed) {
    platform.windows.windows = {screenWindow(1, 41, {0, 0, 10, 10}), screenWindow(2, 42, {0, 0, 100, 100}, 30),
                                screenWindow(3, editorPid, {0, 0, 100, 100}), screenWindow(4, panelPid, {0, 0, 100, 100})};
    refuseIfOnBrisko({50, 50});
    const std::map<std::int32_t, bool> afterPress = {{42, false}, {editorPid, false}};
    EXPECT_EQ(processState().briskoOwnerCache, afterPress);

    refuseIfBriskoFrontmost();  // the first layer-0 window is pid 41's
    const std::map<std::int32_t, bool> afterKey = {{41, false}, {42, false}, {editorPid, false}};
    EXPECT_EQ(processState().briskoOwnerCache, afterKey);
    EXPECT_EQ(platform.windows.identityQueries, 6);
}

}  // namespace
}  // namespace brisko
