#include <gtest/gtest.h>

#include "fake/fake_platform.h"

namespace brisko {
namespace {

// Only a first argument of --prompt asks for permissions.
TEST(Probes, PrintWhatTheProbeReports) {
    using Values = std::map<std::string, double>;
    struct Case {
        std::string name;
        void (*setUp)(fake::FakeProbe&);
        std::vector<std::string> args;
        std::string out;
        int permissionRequests = 0;
    };
    const std::vector<Case> cases = {
        {"bits that are no modifier", [](fake::FakeProbe& p) { p.hid = 0x100; }, {"check-flags", "x"},
         "hid=0x00000100 modifiers=0x00000000 baseline=1"},
        {"every modifier bit and a high bit", [](fake::FakeProbe& p) { p.hid = 0x1ABFFFFFFull; }, {"check-flags"},
         "hid=0xABFFFFFF modifiers=0x00FF0000 baseline=0"},
        {"fractional points truncate",
         [](fake::FakeProbe& p) {
             p.bounds = {0, 0, 1279.9, 799.5};
             p.pixels = platform::PixelSize{1280, 800};
         },
         {"geometry", "extra"}, "1279 799 1280 800"},
        {"outside any session",
         [](fake::FakeProbe& p) {
             p.session.reset();
             p.asleep = true;
         },
         {"session"}, R"({"locked":false,"displayAsleep":true,"console":false,"loggedIn":false})"},
        {"a session without values", [](fake::FakeProbe&) {}, {"session", "x"},
         R"({"locked":false,"displayAsleep":false,"console":false,"loggedIn":true})"},
        {"zero values",
         [](fake::FakeProbe& p) { p.session = Values{{"CGSSessionScreenIsLocked", 0}, {"kCGSSessionOnConsoleKey", 2}}; },
         {"session"}, R"({"locked":false,"displayAsleep":false,"console":true,"loggedIn":true})"},
        {"no prompt", [](fake::FakeProbe&) {}, {"check"}, "screen=1 input=1"},
        {"prompt", [](fake::FakeProbe&) {}, {"check", "--prompt"}, "screen=1 input=1", 1},
        {"prompt and more", [](fake::FakeProbe& p) { p.input = false; }, {"check", "--prompt", "extra"},
         "screen=1 input=0", 1},
        {"prompt second", [](fake::FakeProbe&) {}, {"check", "extra", "--prompt"}, "screen=1 input=1"},
        {"another spelling", [](fake::FakeProbe& p) { p.screen = false; }, {"check", "--Prompt"}, "screen=0 input=1"},
    };
    for (const auto& c : cases) {
        fake::FakePlatform platform;
        c.setUp(platform.probe);
        EXPECT_EQ(platform.run(c.args), 0) << c.name;
        EXPECT_EQ(platform.streams.out(), c.out + "\n") << c.name;
        EXPECT_EQ(platform.streams.err(), "") << c.name;
        EXPECT_EQ(platform.probe.permissionRequests, c.permissionRequests) << c.name;
    }
}

}  // namespace
}  // namespace brisko
