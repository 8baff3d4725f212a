// The guard over the fake window server: who is the host, which window a press would reach, who
// holds the keyboard, the refusals and the own-ui report.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "ownui/capture_exclusion.h"
#include "ownui/guard_rules.h"
#include "ownui/live_inventory.h"
#include "ownui/owner_identity.h"
#include "ownui/refusal.h"

namespace brisko {
namespace {

using platform::Rect;
using platform::ScreenWindow;
using Text = std::optional<std::string>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t hostPid = 5;
constexpr std::int32_t otherPid = 9;
constexpr std::int64_t menuLayer = 101;  // the fake window server's pop-up menu layer
const Rect square{0, 0, 100, 100};

bool isHost(std::int32_t pid) { return pid == hostPid || pid == hostPid + 1; }

ScreenWindow window(std::uint32_t id, std::int32_t pid, Rect bounds = square, std::int64_t layer = 0, double alpha = 1) {
    return {.windowID = id, .ownerPID = pid, .bounds = bounds, .alpha = alpha, .layer = layer};
}

TEST(GuardRules, APressGoesToTheFirstWindowThatTakesItThroughOverlays) {
    // The case, the point pressed, the windows front to back and the host window that refuses the press.
    using Press = std::tuple<const char*, platform::Point, std::vector<ScreenWindow>, std::optional<std::uint32_t>>;
    const std::vector<Press> cases = {
        {"several overlays", {10, 10},
         {window(3, otherPid, square, 1000), window(2, otherPid, square, 25), window(1, hostPid, square, 3)}, 1},
        {"layer 19 is not an overlay", {10, 10}, {window(2, otherPid, square, 19), window(1, hostPid)}, std::nullopt},
        {"negative layer takes the press", {10, 10}, {window(2, otherPid, square, -1), window(1, hostPid)}, std::nullopt},
        {"host overlay is refused itself", {10, 10}, {window(2, hostPid + 1, square, 25), window(1, hostPid)}, 2},
        {"transparent other app", {10, 10}, {window(2, otherPid, square, 0, 0.0), window(1, hostPid)}, 1},
        {"transparent host window is passed", {10, 10}, {window(2, hostPid, square, 0, 0.0), window(1, hostPid)}, 1},
        {"NaN alpha", {10, 10}, {window(1, hostPid, square, 0, nan)}, std::nullopt},
        {"zero width", {0, 10}, {window(1, hostPid, {0, 0, 0, 100})}, std::nullopt},
        {"zero height", {10, 0}, {window(1, hostPid, {0, 0, 100, 0})}, std::nullopt},
        {"NaN width", {10, 10}, {window(1, hostPid, {0, 0, nan, 100})}, std::nullopt},
        {"NaN height", {10, 10}, {window(1, hostPid, {0, 0, 100, nan})}, std::nullopt},
        {"minimum y edge is inside", {50, 0}, {window(1, hostPid)}, 1},
        {"just inside the far edge", {99.999, 99.999}, {window(1, hostPid)}, 1},
        {"negative width extends left", {50, 10}, {window(1, hostPid, {100, 0, -50, 100})}, 1},
        {"negative height extends up", {10, -20}, {window(1, hostPid, {0, 0, 100, -50})}, 1},
        {"negative coordinates", {-1440.5, -3}, {window(1, hostPid, {-1440.5, -10, 20, 20})}, 1},
        {"NaN point", {nan, 10}, {window(1, hostPid)}, std::nullopt},
        {"infinite window", {1e300, -1e300}, {window(1, hostPid, {-INFINITY, -INFINITY, INFINITY, INFINITY})},
         std::nullopt},
    };
    fake::FakePlatform platform;
    for (const auto& [name, point, windows, refusedOn] : cases) {
        const auto hit = briskoWindowAt(point, windows, isHost);
        EXPECT_EQ(hit ? std::optional(hit->windowID) : std::nullopt, refusedOn) << name;
    }
    // Only the owners of windows that could take the press are asked about.
    std::vector<std::int32_t> asked;
    const std::vector<ScreenWindow> walk = {window(1, 10, {500, 500, 10, 10}), window(2, 11, square, 30),
                                            window(3, 12, square, 0, 0), window(4, 13), window(5, hostPid)};
    EXPECT_FALSE(briskoWindowAt({10, 10}, walk, [&](std::int32_t pid) {
        asked.push_back(pid);
        return isHost(pid);
    }));
    EXPECT_EQ(asked, (std::vector<std::int32_t>{11, 13}));
}

TEST(GuardRules, TheKeyboardIsTheHostsWhenItsMenuIsOpenOrItsWindowIsFrontmost) {
    using enum BriskoKeyboardHold;
    const std::vector<std::tuple<const char*, std::vector<ScreenWindow>, BriskoKeyboardHold>> cases = {
        {"host frontmost", {window(1, hostPid)}, brisko},
        {"other app frontmost", {window(1, otherPid), window(2, hostPid)}, other},
        {"host panel over host menu", {window(1, hostPid), window(2, hostPid, square, menuLayer)}, menu},
        {"other menu in front of host panel", {window(2, otherPid, square, menuLayer), window(1, hostPid)}, brisko},
        {"host only at other layers",
         {window(1, hostPid, square, 3), window(2, hostPid, square, 25), window(3, otherPid, square, 100)}, other},
        {"transparent host in front", {window(1, hostPid, square, 0, 0), window(2, otherPid)}, other},
        {"host menu of no height", {window(1, hostPid, {0, 0, 10, nan}, menuLayer)}, other},
    };
    fake::FakePlatform platform;
    for (const auto& [name, windows, hold] : cases) EXPECT_EQ(briskoKeyboardHold(windows, isHost), hold) << name;
    // Only menus and the first normal window have their owners asked about.
    std::vector<std::int32_t> asked;
    const std::vector<ScreenWindow> walk = {window(1, 10, square, 3), window(2, 11, square, menuLayer),
                                            window(3, 12, square, 0, 0), window(4, 13), window(5, 14),
                                            window(6, 15, square, menuLayer), window(7, 16, square, 25)};
    EXPECT_EQ(briskoKeyboardHold(walk, [&](std::int32_t pid) {
                  asked.push_back(pid);
                  return false;
              }),
              other);
    std::sort(asked.begin(), asked.end());
    EXPECT_EQ(asked, (std::vector<std::int32_t>{11, 13, 15}));
    for (const auto hold : {menu, brisko, other}) EXPECT_EQ(keyboardHoldFromRawValue(rawValue(hold)), hold);
    for (const char* text : {"Menu", "", "other "}) EXPECT_FALSE(keyboardHoldFromRawValue(text)) << text;
    // The menu layer is the window server's, read at start.
    platform.windows.menuLayer = 8;
    startProcess(platform.services);
    EXPECT_EQ(briskoKeyboardHold({window(1, otherPid), window(2, hostPid, square, 8)}, isHost), menu);
    EXPECT_EQ(briskoKeyboardHold({window(1, otherPid), window(2, hostPid, square, menuLayer)}, isHost), other);
}

TEST(OwnerIdentity, TheHostIsKnownOnlyByItsExactIdentifierOrExecutableName) {
    const std::vector<std::tuple<Text, Text, bool>> cases = {
        {"org.example.editor", "brisko-mac-menubar", true},
        {"com.brisko.desktop.helper", "brisko-helper", false}, {"Com.Brisko.Desktop", std::nullopt, false},
        {"com.brisko.desktop ", std::nullopt, false}, {std::nullopt, "Brisko-Mac-Menubar", false},
        {std::nullopt, "brisko-mac-menubar-2", false}, {std::nullopt, "brisko-mac", false}, {"", "", false},
    };
    fake::FakePlatform platform;
    for (const auto& [bundle, exec, host] : cases) {
        EXPECT_EQ(isBriskoOwner(bundle, exec), host) << bundle.value_or("-") << " / " << exec.value_or("-");
    }
    platform.windows.paths = {{1, "/Applications/Brisko.app/Contents/MacOS/brisko-mac-menubar"}, {3, "/opt/tools/"},
                              {4, "/"}, {5, "/usr/bin/with space"}, {7, "/opt/a\xFF\xC3" "b"}};
    const std::vector<std::pair<std::int32_t, Text>> names = {
        {1, "brisko-mac-menubar"}, {3, "tools"}, {4, "/"}, {5, "with space"}, {6, std::nullopt},
        {7, "a\uFFFD\uFFFDb"}};  // bytes that are no UTF-8 read as replacement characters
    for (const auto& [pid, name] : names) EXPECT_EQ(executableName(pid), name) << pid;
}

TEST(OwnerIdentity, AnswersPerPidAreKeptForTheLifeOfTheProcessAndAskedOnlyWhenNeeded) {
    fake::FakePlatform platform;
    platform.windows.bundles[902] = "com.brisko.desktop";
    platform.windows.paths[611] = "/x/brisko-mac-menubar";
    platform.windows.paths[77] = "/usr/bin/editor";
    EXPECT_TRUE(pidIsBrisko(902));
    EXPECT_TRUE(pidIsBrisko(611));
    EXPECT_FALSE(pidIsBrisko(77));
    EXPECT_EQ(platform.windows.identityQueries, 6);  // bundle and path, once per pid
    // The host now runs under 77 and 902 has gone: the first answers stand, nothing is asked.
    platform.windows.bundles.erase(902);
    platform.windows.bundles[77] = "com.brisko.desktop";
    EXPECT_TRUE(pidIsBrisko(902));
    EXPECT_FALSE(pidIsBrisko(77));
    EXPECT_EQ(platform.windows.identityQueries, 6);
}

TEST(OwnerIdentity, TheHostsProcessesAreLeftOutOfCaptureByPid) {
    fake::FakePlatform platform;
    platform.windows.paths[12] = "/x/brisko-mac-menubar";
    platform.windows.bundles[12] = "com.brisko.desktop";  // the registry is not consulted here
    const platform::CaptureDisplay first{5, 1440, 900}, second{9, 1920, 1080};
    platform.capture.mainDisplay = 9;
    EXPECT_EQ(mainSCDisplay({{first, second}, {}})->displayID, 9u);
    platform.capture.mainDisplay = 1;  // not listed: the first one
    EXPECT_EQ(mainSCDisplay({{first, second}, {}})->displayID, 5u);
    // Selection is by pid over every listed application, so a second entry of a host pid goes too,
    // and the registry of the guard is not consulted.
    const platform::ShareableContent content{{first}, {{900, "org.helper"}, {12, ""}, {900, "com.brisko.desktop"}}};
    EXPECT_EQ(briskoExcludingFilter(first, content).excludedPids, (std::vector<std::int32_t>{12, 900, 900}));
    EXPECT_TRUE(processState().briskoOwnerCache.empty());
}

// A key press is judged on a window list of its own, however recently the last one was taken.
TEST(Refusal, EveryKeyCheckTakesAFreshWindowList) {
    fake::FakePlatform platform;
    platform.windows.bundles[hostPid] = "com.brisko.desktop";
    const auto panel = window(1, hostPid, {900, 40, 360, 520});
    const auto editor = window(3, otherPid, {0, 0, 800, 600});
    // The host in front, behind the editor, alone: only the second press is posted.
    std::vector<int> statuses;
    for (const auto& windows : std::vector<std::vector<ScreenWindow>>{{panel, editor}, {editor, panel}, {panel}}) {
        platform.windows.windows = windows;
        statuses.push_back(platform.run({"type-unicode", "41"}));
    }
    EXPECT_EQ(statuses, (std::vector<int>{2, 0, 2}));
    const std::string refused =
        "brisko-mac-input: refused a key press while Brisko is frontmost: " + processState().briskoOwnUiRefusal + "\n";
    EXPECT_EQ(platform.streams.err(), refused + refused);
    EXPECT_EQ(platform.windows.windowListQueries, 3);
}

// The report of own-ui: the host's pids (611 the menu-bar process, 902 the app) and windows, bounds
// truncated toward zero after negative sizes are made positive; a point is judged on the same list.
// Without a display it fails with the reason, before any window is listed.
TEST(OwnUiReport, ListsTheHostsWindowsAndJudgesAPointOnTheSameListOnceADisplayIsListed) {
    fake::FakePlatform platform;
    platform.windows.bundles[902] = "com.brisko.desktop";
    platform.windows.paths[611] = "/Applications/Brisko.app/Contents/MacOS/brisko-mac-menubar";
    platform.windows.windows = {window(4000000000u, 902, {-1440.5, -0.7, 360.9, 520.2}, -5),
                                window(15, 611, {200, 300, -50.5, -20}), window(7, 300, {0, 0, 800, 600})};
    platform.capture.content.content = platform::ShareableContent{{}, {{902, "com.brisko.desktop"}}};
    EXPECT_EQ(platform.run({"own-ui", "1", "2"}), 2);
    platform.capture.content.content = platform::ShareableContent{
        {{1, 1440, 900}}, {{300, "org.example.editor"}, {902, "com.brisko.desktop"}, {611, ""}}};
    EXPECT_EQ(platform.run({"own-ui", "160", "290"}), 0);
    EXPECT_EQ(platform.streams.out(),
              "{\"excludedPids\":[611,902],\"briskoWindows\":["
              "{\"id\":4000000000,\"pid\":902,\"layer\":-5,\"x\":-1440,\"y\":0,\"w\":360,\"h\":520},"
              "{\"id\":15,\"pid\":611,\"layer\":0,\"x\":149,\"y\":280,\"w\":50,\"h\":20}],"
              "\"briskoFrontmost\":true,\"keyboard\":\"brisko\",\"refused\":true,\"window\":15}\n");
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: own-ui: ScreenCaptureKit could not list displays (no display)\n");
    EXPECT_EQ(platform.windows.windowListQueries, 1);
}

}  // namespace
}  // namespace brisko
