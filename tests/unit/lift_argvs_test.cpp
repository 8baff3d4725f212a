#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "play/lift_argvs.h"

namespace brisko {
namespace {

class LiftArgvs : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

TEST_F(LiftArgvs, ReleasesWhatIsStillHeldInPlanOrder) {
    using Plan = std::vector<Argv>;
    struct Case {
        std::string what;
        Plan ran;
        Plan lifts;
    };
    const std::vector<Case> cases = {
        {"nothing ran", {}, {}},
        {"buttons, then keys, then modifiers last pressed first",
         {{"keydown", "55", "cmd"}, {"keydown", "0", "cmd"}, {"mousedown", "10", "20", "left", "cmd"}},
         {{"mouseup", "10", "20", "left"}, {"keyup", "0", "cmd"}, {"keyup", "55", "none"}}},
        {"everything pressed was released",
         {{"mousedown", "1", "2", "left"}, {"keydown", "56", "shift"}, {"keydown", "4", "shift"},
          {"keyup", "4", "shift"}, {"keyup", "56", "none"}, {"mouseup", "1", "2", "left"}},
         {}},
        {"a key pressed twice is released once",
         {{"keydown", "4", "none"}, {"keydown", "4", "none"}},
         {{"keyup", "4", "none"}}},
        {"modifier flag texts follow the canonical order",
         {{"keydown", "56", "shift"}, {"keydown", "55", "cmd,shift"}, {"keydown", "4", "cmd,shift"}},
         {{"keyup", "4", "cmd,shift"}, {"keyup", "55", "shift"}, {"keyup", "56", "none"}}},
        {"every modifier name",
         {{"keydown", "63", "fn"}, {"keydown", "62", ""}, {"keydown", "58", ""}, {"keydown", "60", ""},
          {"keydown", "54", ""}, {"keydown", "9", ""}},
         {{"keyup", "9", "cmd,shift,alt,ctrl,fn"},
          {"keyup", "54", "shift,alt,ctrl,fn"},
          {"keyup", "60", "alt,ctrl,fn"},
          {"keyup", "58", "ctrl,fn"},
          {"keyup", "62", "fn"},
          {"keyup", "63", "none"}}},
        {"two keys of one modifier name",
         {{"keydown", "55", "cmd"}, {"keydown", "54", "cmd"}},
         {{"keyup", "54", "cmd"}, {"keyup", "55", "none"}}},
        {"key codes are compared as text",
         {{"keydown", "055", "cmd"}, {"keydown", "0x37", "cmd"}},
         {{"keyup", "055", "none"}, {"keyup", "0x37", "none"}}},
        {"a modifier released as a key code of another spelling stays",
         {{"keydown", "55", "cmd"}, {"keyup", "055", "none"}},
         {{"keyup", "55", "none"}}},
        {"buttons are released at the last position, in the order of their latest press",
         {{"mousedown", "1", "2", "right"}, {"mousedown", "3", "4", "left"}, {"mousemove", "5", "6", "left"},
          {"mousedown", "7", "8", "right"}},
         {{"mouseup", "7", "8", "left"}, {"mouseup", "7", "8", "right"}}},
        {"a release of another button leaves the pressed one",
         {{"mousedown", "1", "2", "left"}, {"mouseup", "1", "2", "middle"}},
         {{"mouseup", "1", "2", "left"}}},
        {"button names are kept as written",
         {{"mousedown", "1", "2", "Left"}, {"mouseup", "1", "2", "left"}},
         {{"mouseup", "1", "2", "Left"}}},
        {"short argvs change only what they name",
         {{"mousemove", "9", "9"}, {"mousedown", "1", "2"}, {"mousedown", "3"}, {"keydown"}, {}},
         {}},
        {"other commands change nothing",
         {{"keydown", "4", "none"}, {"type-unicode", "41"}, {"set-clipboard", "aGk="}, {"scroll", "up", "1"}},
         {{"keyup", "4", "none"}}},
    };
    for (const Case& c : cases) EXPECT_EQ(liftArgvs(c.ran), c.lifts) << c.what;
}

}  // namespace
}  // namespace brisko
