#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "fake/fake_platform.h"
#include "support/png_image.h"

namespace brisko {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t editorPid = 300;
constexpr std::int32_t panelPid = 902;

// A picture whose every pixel differs from its neighbours: B = x, G = y, R = x + y, A varies.
platform::CapturedImage gradient(std::int64_t width, std::int64_t height) {
    platform::CapturedImage image{width, height, std::vector<std::uint8_t>(static_cast<std::size_t>(width * height * 4))};
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            std::uint8_t* p = image.bgra.data() + (y * width + x) * 4;
            p[0] = static_cast<std::uint8_t>(x);
            p[1] = static_cast<std::uint8_t>(y);
            p[2] = static_cast<std::uint8_t>(x + y);
            p[3] = static_cast<std::uint8_t>(x * 7);
        }
    }
    return image;
}

class Screenshot : public ::testing::Test {
protected:
    Screenshot() : dir(fs::temp_directory_path() / ("brisko-screenshot-" + std::to_string(std::random_device{}()))) {
        fs::create_directories(dir);
        platform.windows.paths[editorPid] = "/usr/bin/editor";
        platform.capture.mainDisplay = 2;
        platform.capture.pixelSizes[2] = {6, 4};
        platform.capture.content.content = platform::ShareableContent{
            {{1, 800, 600}, {2, 3, 2}}, {{editorPid, ""}, {panelPid, "com.brisko.desktop"}}};
        platform.capture.image.image = gradient(6, 4);
    }
    ~Screenshot() override { fs::remove_all(dir); }

    std::vector<std::string> filesInDir() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(dir)) names.push_back(entry.path().filename().string());
        return names;
    }

    fs::path dir;
    fake::FakePlatform platform;
};

TEST_F(Screenshot, WritesTheMainDisplayAtItsPixelSizeWithoutCursorOrHost) {
    const std::string path = (dir / "shot.png").string();
    EXPECT_EQ(platform.run({"screenshot", path}), 0);
    EXPECT_EQ(platform.streams.out(), "");
    EXPECT_EQ(platform.streams.err(), "");
    ASSERT_EQ(platform.capture.imageRequests.size(), 1u);
    const fake::FakeImageRequest& request = platform.capture.imageRequests[0];
    EXPECT_EQ(request.filter.display.displayID, 2u);
    EXPECT_EQ(request.filter.excludedPids, (std::vector<std::int32_t>{panelPid}));
    EXPECT_EQ(request.size.width, 6);
    EXPECT_EQ(request.size.height, 4);
    EXPECT_FALSE(request.showsCursor);

    const auto png = testing::readPng(path);
    ASSERT_TRUE(png);
    ASSERT_EQ(png->width, 6u);
    ASSERT_EQ(png->height, 4u);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) {
            EXPECT_EQ(png->rgb(x, y), ((x + y) << 16) | (y << 8) | x) << x << "," << y;
            EXPECT_EQ(png->rgba[(y * 6 + x) * 4 + 3], 255) << "opaque";
        }
    }
    EXPECT_EQ(filesInDir(), (std::vector<std::string>{"shot.png"}));
}

TEST_F(Screenshot, ReplacesAnExistingFileAndTakesThePointSizeWithoutAMode) {
    platform.capture.pixelSizes.clear();
    const fs::path path = dir / "shot.png";
    std::ofstream(path) << "old contents";
    EXPECT_EQ(platform.run({"screenshot", path.string()}), 0);
    ASSERT_EQ(platform.capture.imageRequests.size(), 1u);
    EXPECT_EQ(platform.capture.imageRequests[0].size.width, 3);
    EXPECT_EQ(platform.capture.imageRequests[0].size.height, 2);
    EXPECT_TRUE(testing::readPng(path.string()));
    EXPECT_EQ(filesInDir(), (std::vector<std::string>{"shot.png"}));
}

TEST_F(Screenshot, FailuresWriteNoFile) {
    const std::string path = (dir / "shot.png").string();
    const std::string missingDir = (dir / "missing" / "shot.png").string();
    struct Case {
        std::string name;
        std::function<void(fake::FakePlatform&)> arrange;
        std::string path;
        std::string message;
    };
    const std::vector<Case> cases = {
        {"no content", [](auto& p) { p.capture.content = {std::nullopt, "cannot connect to X display :3"}; }, path,
         "screenshot: ScreenCaptureKit could not list displays (cannot connect to X display :3). Is Screen "
         "Recording granted?"},
        {"no display", [](auto& p) { p.capture.content.content->displays.clear(); }, path,
         "screenshot: ScreenCaptureKit could not list displays (no display). Is Screen Recording granted?"},
        {"no image", [](auto& p) { p.capture.image = {std::nullopt, "BadMatch"}; }, path,
         "screenshot: capture failed (BadMatch)"},
        {"no image, no reason", [](auto& p) { p.capture.image = {std::nullopt, std::nullopt}; }, path,
         "screenshot: capture failed (no image)"},
        {"empty image", [](auto& p) { p.capture.image.image = platform::CapturedImage{}; }, path,
         "screenshot: cannot write " + path},
        {"missing directory", [](auto&) {}, missingDir, "screenshot: cannot write " + missingDir},
        {"a directory in the way", [&](auto&) { fs::create_directory(dir / "taken.png"); },
         (dir / "taken.png").string(), "screenshot: cannot write " + (dir / "taken.png").string()},
    };
    for (const Case& c : cases) {
        fake::FakePlatform fresh;
        fresh.capture.mainDisplay = platform.capture.mainDisplay;
        fresh.capture.content = platform.capture.content;
        fresh.capture.image = platform.capture.image;
        c.arrange(fresh);
        const auto before = filesInDir();
        EXPECT_EQ(fresh.run({"screenshot", c.path}), 2) << c.name;
        EXPECT_EQ(fresh.streams.err(), "brisko-mac-input: " + c.message + "\n") << c.name;
        EXPECT_EQ(fresh.streams.out(), "") << c.name;
        EXPECT_EQ(filesInDir(), before) << c.name;
    }
}

}  // namespace
}  // namespace brisko
