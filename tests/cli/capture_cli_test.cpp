#include <gtest/gtest.h>

#include <filesystem>

#include "support/process.h"

namespace brisko {
namespace {

using testing::programPath;
using testing::runProgram;

// No X server answers there.
const std::map<std::string, std::string> noDisplay = {{"DISPLAY", ":65533"}};

TEST(CaptureCommands, WithoutADisplayTheStreamStillStartsWithItsPreamble) {
    const auto r = runProgram(programPath(), {"capture-stream"}, "", noDisplay);
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, std::string("BCS2\x02\x00\x00\x00", 8));
    EXPECT_EQ(r.err,
              "brisko-mac-input: ScreenCaptureKit could not list displays (cannot connect to X display :65533). Is "
              "Screen Recording granted in System Settings \u2192 Privacy & Security \u2192 Screen Recording?\n");
}

TEST(CaptureCommands, WithoutADisplayTheScreenshotWritesNoFile) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "brisko-no-display.png";
    std::filesystem::remove(path);
    const auto r = runProgram(programPath(), {"screenshot", path.string()}, "", noDisplay);
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err,
              "brisko-mac-input: screenshot: ScreenCaptureKit could not list displays (cannot connect to X display "
              ":65533). Is Screen Recording granted?\n");
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace brisko
