#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "ownui/guard_rules.h"
#include "support/screen_windows.h"

namespace brisko {
namespace {

using platform::Point;
using platform::Rect;
using platform::ScreenWindow;
using testing::screenWindow;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t hostPid = 5;
constexpr std::int32_t otherPid = 9;
constexpr std::int64_t menuLayer = 101;  // the fake window server's pop-up menu layer
const Rect square{0, 0, 100, 100};

bool isHost(std::int32_t pid) { return pid == hostPid || pid == hostPid + 1; }

class GuardRules : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

struct PointerCase {
    const char* name;
    Point point;
    std::vector<ScreenWindow> windows;
    std::optional<std::uint32_t> refusedOn;
};

TEST_F(GuardRules, PointerRule) {
    const std::vector<PointerCase> cases = {
        {"host window alone", {10, 10}, {screenWindow(1, hostPid, square)}, 1},
        {"no windows", {10, 10}, {}, std::nullopt},
        {"other app in front", {10, 10}, {screenWindow(2, otherPid, square), screenWindow(1, hostPid, square)}, std::nullopt},
        {"overlay at 25 looked through", {10, 10},
         {screenWindow(2, otherPid, square, 25), screenWindow(1, hostPid, square)}, 1},
        {"overlay at 20 looked through", {10, 10},
         {screenWindow(2, otherPid, square, 20), screenWindow(1, hostPid, square)}, 1},
        {"several overlays", {10, 10},
         {screenWindow(3, otherPid, square, 1000), screenWindow(2, otherPid, square, 20), screenWindow(1, hostPid, square, 3)}, 1},
        {"layer 19 is not an overlay", {10, 10},
         {screenWindow(2, otherPid, square, 19), screenWindow(1, hostPid, square)}, std::nullopt},
        {"negative layer takes the press", {10, 10},
         {screenWindow(2, otherPid, square, -1), screenWindow(1, hostPid, square)}, std::nullopt},
        {"overlay then ordinary window", {10, 10},
         {screenWindow(3, otherPid, square, 30), screenWindow(2, otherPid, square), screenWindow(1, hostPid, square)},
         std::nullopt},
        {"host overlay is refused itself", {10, 10},
         {screenWindow(2, hostPid + 1, square, 25), screenWindow(1, hostPid, square)}, 2},
        {"other app elsewhere does not stop the walk", {10, 10},
         {screenWindow(2, otherPid, {200, 0, 50, 50}), screenWindow(1, hostPid, square)}, 1},
        {"transparent other app does not take the press", {10, 10},
         {screenWindow(2, otherPid, square, 0, 0.0), screenWindow(1, hostPid, square)}, 1},
        {"transparent host window is passed", {10, 10},
         {screenWindow(2, hostPid, square, 0, 0.0), screenWindow(1, hostPid, square)}, 1},
        {"negative alpha", {10, 10}, {screenWindow(1, hostPid, square, 0, -0.5)}, std::nullopt},
        {"NaN alpha", {10, 10}, {screenWindow(1, hostPid, square, 0, nan)}, std::nullopt},
        {"zero width", {0, 10}, {screenWindow(1, hostPid, {0, 0, 0, 100})}, std::nullopt},
        {"zero height", {10, 0}, {screenWindow(1, hostPid, {0, 0, 100, 0})}, std::nullopt},
        {"NaN width", {10, 10}, {screenWindow(1, hostPid, {0, 0, nan, 100})}, std::nullopt},
        {"NaN height", {10, 10}, {screenWindow(1, hostPid, {0, 0, 100, nan})}, std::nullopt},
        {"empty other window in front", {10, 10},
         {screenWindow(2, otherPid, {0, 0, 100, 0}), screenWindow(1, hostPid, square)}, 1},
        {"minimum x edge is inside", {0, 50}, {screenWindow(1, hostPid, square)}, 1},
        {"minimum y edge is inside", {50, 0}, {screenWindow(1, hostPid, square)}, 1},
        {"x + w is outside", {100, 50}, {screenWindow(1, hostPid, square)}, std::nullopt},
        {"y + h is outside", {50, 100}, {screenWindow(1, hostPid, square)}, std::nullopt},
        {"just inside the far edge", {99.999, 99.999}, {screenWindow(1, hostPid, square)}, 1},
        {"other app's far edge belongs to the host behind", {100, 50},
         {screenWindow(2, otherPid, square), screenWindow(1, hostPid, {100, 0, 100, 100})}, 1},
        {"negative width extends left", {50, 10}, {screenWindow(1, hostPid, {100, 0, -50, 100})}, 1},
        {"negative width: stored x is the far edge", {100, 10}, {screenWindow(1, hostPid, {100, 0, -50, 100})},
         std::nullopt},
        {"negative width: nothing right of x", {120, 10}, {screenWindow(1, hostPid, {100, 0, -50, 100})}, std::nullopt},
        {"negative height extends up", {10, -20}, {screenWindow(1, hostPid, {0, 0, 100, -50})}, 1},
        {"negative coordinates", {-1440.5, -3}, {screenWindow(1, hostPid, {-1440.5, -10, 20, 20})}, 1},
        {"NaN point", {nan, 10}, {screenWindow(1, hostPid, square)}, std::nullopt},
        {"infinite window", {1e300, -1e300},
         {screenWindow(1, hostPid, {-INFINITY, -INFINITY, INFINITY, INFINITY})}, std::nullopt},
    };
    for (const PointerCase& c : cases) {
        const auto hit = briskoWindowAt(c.point, c.windows, isHost);
        EXPECT_EQ(hit ? std::optional(hit->windowID) : std::nullopt, c.refusedOn) << c.name;
    }
}

TEST_F(GuardRules, PointerRuleAsksOnlyAboutWindowsThatCouldTakeThePress) {
    const std::vector<ScreenWindow> windows = {
        screenWindow(1, 10, {500, 500, 10, 10}), screenWindow(2, 11, square, 30), screenWindow(3, 12, square, 0, 0),
        screenWindow(4, 13, square), screenWindow(5, hostPid, square),
    };
    std::vector<std::int32_t> asked;
    const auto hit = briskoWindowAt({10, 10}, windows, [&](std::int32_t pid) {
        asked.push_back(pid);
        return isHost(pid);
    });
    EXPECT_FALSE(hit.has_value());
    EXPECT_EQ(asked, (std::vector<std::int32_t>{11, 13}));
}

struct KeyboardCase {
    const char* name;
    std::vector<ScreenWindow> windows;
    BriskoKeyboardHold hold;
};

TEST_F(GuardRules, KeyboardRule) {
    constexpr auto menu = BriskoKeyboardHold::menu;
    constexpr auto brisko = BriskoKeyboardHold::brisko;
    constexpr auto other = BriskoKeyboardHold::other;
    const std::vector<KeyboardCase> cases = {
        {"nothing on screen", {}, other},
        {"host frontmost", {screenWindow(1, hostPid, square)}, brisko},
        {"other app frontmost", {screenWindow(1, otherPid, square), screenWindow(2, hostPid, square)}, other},
        {"host menu behind another app", {screenWindow(1, otherPid, square), screenWindow(2, hostPid, square, menuLayer)}, menu},
        {"host menu over host panel", {screenWindow(2, hostPid, square, menuLayer), screenWindow(1, hostPid, square)}, menu},
        {"host panel over host menu", {screenWindow(1, hostPid, square), screenWindow(2, hostPid, square, menuLayer)}, menu},
        {"other menu in front of host panel",
         {screenWindow(2, otherPid, square, menuLayer), screenWindow(1, hostPid, square)}, brisko},
        {"host menu after another app's menu",
         {screenWindow(3, otherPid, square, menuLayer), screenWindow(1, otherPid, square), screenWindow(2, hostPid, square, menuLayer)},
         menu},
        {"host only at other layers",
         {screenWindow(1, hostPid, square, 3), screenWindow(2, hostPid, square, 25), screenWindow(3, otherPid, square, 100)},
         other},
        {"host at a later layer-0 window",
         {screenWindow(1, hostPid, square, 3), screenWindow(2, otherPid, square), screenWindow(3, hostPid, square)}, other},
        {"transparent host in front", {screenWindow(1, hostPid, square, 0, 0), screenWindow(2, otherPid, square)}, other},
        {"transparent host in front of host", {screenWindow(1, hostPid, square, 0, 0), screenWindow(2, hostPid, square)},
         brisko},
        {"empty host window", {screenWindow(1, hostPid, {0, 0, 0, 10}), screenWindow(2, otherPid, square)}, other},
        {"transparent host menu", {screenWindow(1, hostPid, square, menuLayer, 0), screenWindow(2, otherPid, square)}, other},
        {"empty host menu", {screenWindow(1, hostPid, {0, 0, 10, nan}, menuLayer)}, other},
        {"negative size counts by magnitude", {screenWindow(1, hostPid, {100, 100, -10, -10})}, brisko},
    };
    for (const KeyboardCase& c : cases) EXPECT_EQ(briskoKeyboardHold(c.windows, isHost), c.hold) << c.name;
}

TEST_F(GuardRules, KeyboardRuleAsksOnlyAboutMenusAndTheFirstNormalWindow) {
    const std::vector<ScreenWindow> windows = {
        screenWindow(1, 10, square, 3),    screenWindow(2, 11, square, menuLayer), screenWindow(3, 12, square, 0, 0),
        screenWindow(4, 13, square),       screenWindow(5, 14, square),       screenWindow(6, 15, square, menuLayer),
        screenWindow(7, 16, square, 25),
    };
    std::vector<std::int32_t> asked;
    const BriskoKeyboardHold hold = briskoKeyboardHold(windows, [&](std::int32_t pid) {
        asked.push_back(pid);
        return false;
    });
    EXPECT_EQ(hold, BriskoKeyboardHold::other);
    std::sort(asked.begin(), asked.end());
    EXPECT_EQ(asked, (std::vector<std::int32_t>{11, 13, 15}));
}

TEST_F(GuardRules, MenuLayerComesFromTheWindowServerAtStart) {
    fake::FakePlatform elsewhere;  // a process whose window server puts menus at layer 8
    elsewhere.windows.menuLayer = 8;
    startProcess(elsewhere.services);
    const std::vector<ScreenWindow> windows = {screenWindow(1, otherPid, square), screenWindow(2, hostPid, square, 8)};
    EXPECT_EQ(briskoKeyboardHold(windows, isHost), BriskoKeyboardHold::menu);
    const std::vector<ScreenWindow> atMacLevel = {screenWindow(1, otherPid, square), screenWindow(2, hostPid, square, menuLayer)};
    EXPECT_EQ(briskoKeyboardHold(atMacLevel, isHost), BriskoKeyboardHold::other);
}

TEST(KeyboardHoldValues, RawValuesRoundTrip) {
    const std::vector<std::pair<BriskoKeyboardHold, std::string_view>> values = {
        {BriskoKeyboardHold::menu, "menu"}, {BriskoKeyboardHold::brisko, "brisko"}, {BriskoKeyboardHold::other, "other"}};
    for (const auto& [hold, raw] : values) {
        EXPECT_EQ(rawValue(hold), raw);
        EXPECT_EQ(keyboardHoldFromRawValue(raw), hold);
    }
    for (const char* text : {"Menu", "", "other ", "frontmost"}) EXPECT_FALSE(keyboardHoldFromRawValue(text)) << text;
}

}  // namespace
}  // namespace brisko
