#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace brisko {
namespace {

struct Case {
    std::string name;
    void (*setUp)(fake::FakeProbe&);
    std::vector<std::string> args;
    std::string out;
};

void expectPrinted(const std::vector<Case>& cases) {
    for (const auto& c : cases) {
        fake::FakePlatform platform;
        c.setUp(platform.probe);
        EXPECT_EQ(platform.run(c.args), 0) << c.name;
        EXPECT_EQ(platform.streams.out(), c.out + "\n") << c.name;
        EXPECT_EQ(platform.streams.err(), "") << c.name;
    }
}

TEST(Probes, CheckReportsBothPermissions) {
    expectPrinted({
        {"granted", [](fake::FakeProbe&) {}, {"check"}, "screen=1 input=1"},
        {"neither", [](fake::FakeProbe& p) { p.screen = p.input = false; }, {"check"}, "screen=0 input=0"},
        {"screen only", [](fake::FakeProbe& p) { p.input = false; }, {"check", "x"}, "screen=1 input=0"},
        {"input only", [](fake::FakeProbe& p) { p.screen = false; }, {"check", "--prompt"}, "screen=0 input=1"},
    });
}

TEST(Probes, OnlyAFirstArgumentOfPromptAsksForPermissions) {
    const std::vector<std::pair<std::vector<std::string>, int>> cases = {
        {{"check"}, 0},
        {{"check", "--prompt"}, 1},
        {{"check", "--prompt", "extra"}, 1},
        {{"check", "extra", "--prompt"}, 0},
        {{"check", "--Prompt"}, 0},
    };
    for (const auto& [args, requests] : cases) {
        fake::FakePlatform platform;
        EXPECT_EQ(platform.run(args), 0);
        EXPECT_EQ(platform.probe.permissionRequests, requests) << args.size();
    }
}

TEST(Probes, FlagsReportTheHeldModifiersOfTheHidState) {
    expectPrinted({
        {"nothing held", [](fake::FakeProbe&) {}, {"check-flags"}, "hid=0x00000000 modifiers=0x00000000 baseline=1"},
        {"other bits only", [](fake::FakeProbe& p) { p.hid = 0x100; }, {"check-flags", "x"},
         "hid=0x00000100 modifiers=0x00000000 baseline=1"},
        {"shift", [](fake::FakeProbe& p) { p.hid = 0x20102; }, {"check-flags"},
         "hid=0x00020102 modifiers=0x00020000 baseline=0"},
        {"caps lock", [](fake::FakeProbe& p) { p.hid = 0x10000; }, {"check-flags"},
         "hid=0x00010000 modifiers=0x00010000 baseline=0"},
        {"every modifier bit and a high bit", [](fake::FakeProbe& p) { p.hid = 0x1ABFFFFFFull; }, {"check-flags"},
         "hid=0xABFFFFFF modifiers=0x00FF0000 baseline=0"},
    });
}

TEST(Probes, GeometryInPointsAndPixels) {
    expectPrinted({
        {"retina", [](fake::FakeProbe&) {}, {"geometry"}, "1440 900 2880 1800"},
        {"fractional points truncate",
         [](fake::FakeProbe& p) {
             p.bounds = {0, 0, 1279.9, 799.5};
             p.pixels = platform::PixelSize{1280, 800};
         },
         {"geometry", "extra"}, "1279 799 1280 800"},
    });
}

TEST(Probes, GeometryWithoutADisplayModeFails) {
    fake::FakePlatform platform;
    platform.probe.pixels.reset();
    EXPECT_EQ(platform.run({"geometry"}), 2);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: CGDisplayCopyDisplayMode failed\n");
    EXPECT_EQ(platform.streams.out(), "");
}

TEST(Probes, SessionState) {
    using Values = std::map<std::string, double>;
    expectPrinted({
        {"locked on the console",
         [](fake::FakeProbe& p) { p.session = Values{{"CGSSessionScreenIsLocked", 1}, {"kCGSSessionOnConsoleKey", 1}}; },
         {"session"}, R"({"locked":true,"displayAsleep":false,"console":true,"loggedIn":true})"},
        {"outside any session",
         [](fake::FakeProbe& p) {
             p.session.reset();
             p.asleep = true;
         },
         {"session"}, R"({"locked":false,"displayAsleep":true,"console":false,"loggedIn":false})"},
        {"empty session", [](fake::FakeProbe&) {}, {"session", "x"},
         R"({"locked":false,"displayAsleep":false,"console":false,"loggedIn":true})"},
        {"zero values",
         [](fake::FakeProbe& p) { p.session = Values{{"CGSSessionScreenIsLocked", 0}, {"kCGSSessionOnConsoleKey", 2}}; },
         {"session"}, R"({"locked":false,"displayAsleep":false,"console":true,"loggedIn":true})"},
    });
}

}  // namespace
}  // namespace brisko
