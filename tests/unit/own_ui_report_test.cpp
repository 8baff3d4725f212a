#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "support/screen_windows.h"

namespace brisko {
namespace {

using testing::screenWindow;

constexpr std::int32_t panelPid = 902;
constexpr std::int32_t menuBarPid = 611;
constexpr std::int32_t editorPid = 300;

class OwnUiReport : public ::testing::Test {
protected:
    OwnUiReport() {
        platform.windows.bundles[panelPid] = "com.brisko.desktop";
        platform.windows.paths[menuBarPid] = "/Applications/Brisko.app/Contents/MacOS/brisko-mac-menubar";
        platform.windows.paths[editorPid] = "/Applications/Editor.app/Contents/MacOS/Editor";
        platform.capture.mainDisplay = 1;
        platform.capture.content.content = platform::ShareableContent{
            {{1, 1440, 900}},
            {{editorPid, "org.example.editor"}, {panelPid, "com.brisko.desktop"}, {menuBarPid, ""}}};
    }

    // The line printed on success; the test fails unless the command succeeded quietly.
    std::string report(const std::vector<std::string>& args) {
        const int status = platform.run(args);
        EXPECT_EQ(status, 0);
        EXPECT_EQ(platform.streams.err(), "");
        return platform.streams.out();
    }

    fake::FakePlatform platform;
};

TEST_F(OwnUiReport, NoHostRunning) {
    platform.capture.content.content->applications = {{editorPid, "org.example.editor"}};
    platform.windows.windows = {screenWindow(7, editorPid, {0, 0, 800, 600})};
    EXPECT_EQ(report({"own-ui"}), "{\"excludedPids\":[],\"briskoWindows\":[],\"briskoFrontmost\":false,\"keyboard\":\"other\"}\n");
}

TEST_F(OwnUiReport, HostPanelUnderThePoint) {
    platform.windows.windows = {screenWindow(881, panelPid, {910, 38, 360, 520}, 3),
                                screenWindow(7, editorPid, {0, 0, 1440, 900})};
    EXPECT_EQ(report({"own-ui", "1000", "100"}),
              "{\"excludedPids\":[611,902],\"briskoWindows\":[{\"id\":881,\"pid\":902,\"layer\":3,\"x\":910,\"y\":38,"
              "\"w\":360,\"h\":520}],\"briskoFrontmost\":false,\"keyboard\":\"other\",\"refused\":true,\"window\":881}\n");
    EXPECT_EQ(platform.windows.windowListQueries, 1);
}

TEST_F(OwnUiReport, PointCoveredByAnotherApplicationFirst) {
    platform.windows.windows = {screenWindow(7, editorPid, {0, 0, 800, 600}, 19),
                                screenWindow(881, panelPid, {0, 0, 360, 520}, 3)};
    EXPECT_EQ(report({"own-ui", "100", "200"}),
              "{\"excludedPids\":[611,902],\"briskoWindows\":[{\"id\":881,\"pid\":902,\"layer\":3,\"x\":0,\"y\":0,"
              "\"w\":360,\"h\":520}],\"briskoFrontmost\":false,\"keyboard\":\"other\",\"refused\":false,"
              "\"window\":null}\n");
}

TEST_F(OwnUiReport, MenuOverFrontmostPanelAndTransparentWindowsListed) {
    platform.windows.windows = {
        screenWindow(12, menuBarPid, {1200, 0, 200, 300}, 101),
        screenWindow(13, panelPid, {100, 100, 50, 50}, 0, 0.0),
        screenWindow(14, panelPid, {900, 40, 360, 520}),
        screenWindow(7, editorPid, {0, 0, 800, 600}),
    };
    EXPECT_EQ(report({"own-ui", "120", "120"}),
              "{\"excludedPids\":[611,902],\"briskoWindows\":["
              "{\"id\":12,\"pid\":611,\"layer\":101,\"x\":1200,\"y\":0,\"w\":200,\"h\":300},"
              "{\"id\":13,\"pid\":902,\"layer\":0,\"x\":100,\"y\":100,\"w\":50,\"h\":50},"
              "{\"id\":14,\"pid\":902,\"layer\":0,\"x\":900,\"y\":40,\"w\":360,\"h\":520}],"
              "\"briskoFrontmost\":false,\"keyboard\":\"menu\",\"refused\":false,\"window\":null}\n");
}

TEST_F(OwnUiReport, HostFrontmostAndBoundsTruncatedTowardZero) {
    platform.windows.windows = {
        screenWindow(4000000000u, panelPid, {-1440.5, -0.7, 360.9, 520.2}, -5),
        screenWindow(15, panelPid, {200, 300, -50.5, -20}),
        screenWindow(7, editorPid, {0, 0, 800, 600}),
    };
    EXPECT_EQ(report({"own-ui"}),
              "{\"excludedPids\":[611,902],\"briskoWindows\":["
              "{\"id\":4000000000,\"pid\":902,\"layer\":-5,\"x\":-1440,\"y\":0,\"w\":360,\"h\":520},"
              "{\"id\":15,\"pid\":902,\"layer\":0,\"x\":149,\"y\":280,\"w\":50,\"h\":20}],"
              "\"briskoFrontmost\":true,\"keyboard\":\"brisko\"}\n");
}

TEST_F(OwnUiReport, UnavailableWindowListIsNotAnError) {
    EXPECT_EQ(report({"own-ui", "5", "5"}),
              "{\"excludedPids\":[611,902],\"briskoWindows\":[],\"briskoFrontmost\":false,\"keyboard\":\"other\","
              "\"refused\":false,\"window\":null}\n");
}

TEST_F(OwnUiReport, NoDisplayFails) {
    const std::vector<std::pair<platform::ShareableContentResult, std::string>> cases = {
        {{std::nullopt, "The user declined TCCs for application, window, display capture"},
         "brisko-mac-input: own-ui: ScreenCaptureKit could not list displays (The user declined TCCs for "
         "application, window, display capture)\n"},
        {{std::nullopt, std::nullopt}, "brisko-mac-input: own-ui: ScreenCaptureKit could not list displays (no display)\n"},
        {{platform::ShareableContent{{}, {{panelPid, "com.brisko.desktop"}}}, std::nullopt},
         "brisko-mac-input: own-ui: ScreenCaptureKit could not list displays (no display)\n"},
    };
    for (const auto& [listed, message] : cases) {
        fake::FakePlatform fresh;
        fresh.capture.content = listed;
        EXPECT_EQ(fresh.run({"own-ui", "1", "2"}), 2);
        EXPECT_EQ(fresh.streams.err(), message);
        EXPECT_EQ(fresh.streams.out(), "");
        EXPECT_EQ(fresh.windows.windowListQueries, 0);
    }
}

}  // namespace
}  // namespace brisko
