#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace brisko {
namespace {

// Only a first argument of --prompt asks for permissions.
TEST(Probes, PrintWhatTheProbeReports) {
    using Values = std::map<std::string, double>;
    // The case, what is set on the probe, the command line, what it prints and the permission requests.
    using Setting = void (*)(fake::FakeProbe&);
    const std::vector<std::tuple<std::string, Setting, std::vector<std::string>, std::string, int>> cases = {
        {"bits that are no modifier", [](fake::FakeProbe& p) { p.hid = 0x100; }, {"check-flags", "x"},
         "hid=0x00000100 modifiers=0x00000000 baseline=1", 0},
        {"every modifier bit and a high bit", [](fake::FakeProbe& p) { p.hid = 0x1ABFFFFFFull; }, {"check-flags"},
         "hid=0xABFFFFFF modifiers=0x00FF0000 baseline=0", 0},
        {"fractional points truncate", [](fake::FakeProbe& p) { p.bounds = {0, 0, 1279.9, 799.5}; },
         {"geometry", "extra"}, "1279 799 2880 1800", 0},
        {"no session values, the display asleep", [](fake::FakeProbe& p) { p.asleep = true; }, {"session", "x"},
         R"({"locked":false,"displayAsleep":true,"console":false,"loggedIn":true})", 0},
        {"zero values",
         [](fake::FakeProbe& p) { p.session = Values{{"CGSSessionScreenIsLocked", 0}, {"kCGSSessionOnConsoleKey", 2}}; },
         {"session"}, R"({"locked":false,"displayAsleep":false,"console":true,"loggedIn":true})", 0},
        {"prompt and more", [](fake::FakeProbe& p) { p.input = false; }, {"check", "--prompt", "extra"},
         "screen=1 input=0", 1},
        {"prompt second", [](fake::FakeProbe&) {}, {"check", "extra", "--prompt"}, "screen=1 input=1", 0},
        {"another spelling", [](fake::FakeProbe& p) { p.screen = false; }, {"check", "--Prompt"}, "screen=0 input=1",
         0},
    };
    for (const auto& [name, setUp, args, out, permissionRequests] : cases) {
        fake::FakePlatform platform;
        setUp(platform.probe);
        EXPECT_EQ(platform.run(args), 0) << name;
        EXPECT_EQ(platform.streams.out(), out + "\n") << name;
        EXPECT_EQ(platform.streams.err(), "") << name;
        EXPECT_EQ(platform.probe.permissionRequests, permissionRequests) << name;
    }
}

}  // namespace
}  // namespace brisko
