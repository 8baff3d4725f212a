// own-ui on a real X server: the host windows, owners, keyboard state and refusals it reports.
#include <optional>
#include <string>
#include <vector>

#include "support/host_scene.h"

namespace brisko::testing {
namespace {

class OwnUiLive : public HostScene {};

TEST_F(OwnUiLive, ReportsTheHostWindowsAndTheKeyboard) {
    const auto result = brisko({"own-ui"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, excludedJson() + ",\"briskoWindows\":[" + sceneWindowsJson() +
                              "],\"briskoFrontmost\":true,\"keyboard\":\"brisko\"}\n");
}

TEST_F(OwnUiLive, ReportsWhichPressesWouldBeRefused) {
    struct Case {
        int x, y;
        std::optional<xcb_window_t> refusedOn;
    };
    const std::vector<Case> cases = {
        {1000, 200, panel},
        {1220, 350, panel},  // through another application's dock
        {1150, 450, panel},  // through another application's open menu
        {1259, 200, panel},  // the last column of the panel
        {1260, 200, std::nullopt},            // one pixel right of it
        {1000, 540, std::nullopt},            // one pixel below it
        {650, 650, ghost},
        {10, 750, left},
        {-50, 750, left},
        {1300, 10, bar},
        {350, 470, std::nullopt},  // the click-through host window over the editor
        {300, 300, std::nullopt},
        {160, 160, std::nullopt},  // a notification over the editor
    };
    const std::string prefix = excludedJson() + ",\"briskoWindows\":[" + sceneWindowsJson() +
                               "],\"briskoFrontmost\":true,\"keyboard\":\"brisko\"";
    for (const auto& c : cases) {
        const auto result = brisko({"own-ui", std::to_string(c.x), std::to_string(c.y)});
        const std::string hit = c.refusedOn ? "\"refused\":true,\"window\":" + std::to_string(*c.refusedOn)
                                            : "\"refused\":false,\"window\":null";
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, prefix + "," + hit + "}\n") << c.x << "," << c.y;
    }
}

TEST_F(OwnUiLive, AnOpenHostMenuHoldsTheKeyboard) {
    const auto menu = host->map("menu", "400 200 150 200 type=popup_menu override");
    const auto result = brisko({"own-ui"});
    EXPECT_EQ(result.status, 0) << result.err;
    const std::string menuJson = windowJson(menu, host->pid(), 101, 400, 200, 150, 200);
    EXPECT_EQ(result.out, excludedJson() + ",\"briskoWindows\":[" + menuJson + "," + sceneWindowsJson() +
                              "],\"briskoFrontmost\":false,\"keyboard\":\"menu\"}\n");
}

TEST(OwnUiWithoutDisplay, FailsWithTheReason) {
    const auto result = runProgram(programPath(), {"own-ui"}, "", {{"DISPLAY", ":1999"}});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "brisko-mac-input: own-ui: ScreenCaptureKit could not list displays "
              "(cannot connect to X display :1999)\n");
}

}  // namespace
}  // namespace brisko::testing
