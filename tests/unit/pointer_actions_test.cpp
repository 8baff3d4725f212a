#include <gtest/gtest.h>

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "input/event_posting.h"
#include "input/mouse_button.h"
#include "input/pointer_actions.h"
#include "support/input_events.h"

namespace brisko {
namespace {

using namespace testing;

class PointerActions : public ::testing::Test {
protected:
    fake::FakePlatform platform;
    ProcessState& state = processState();
};

TEST_F(PointerActions, EveryEventIsFollowedByThePacingPauseUnlessItIsZero) {
    for (const std::uint32_t pacing : {10000u, 250u, 0u}) {
        fake::FakePlatform fresh;
        processState().postPacingMicroseconds = pacing;
        moveTo({3, 4});
        moveTo({5, 6});
        std::vector<fake::Happening> expected = {moved(3, 4), moved(5, 6)};
        if (pacing != 0) expected = paced({moved(3, 4), moved(5, 6)}, pacing);
        EXPECT_EQ(fresh.journal.all(), expected) << "pacing " << pacing;
    }
}

TEST_F(PointerActions, ButtonsByExactName) {
    EXPECT_EQ(MouseButton::named("left"), (MouseButton{0, 1, 2}));
    EXPECT_EQ(MouseButton::named("right"), (MouseButton{1, 3, 4}));
    EXPECT_EQ(MouseButton::named("middle"), (MouseButton{2, 25, 26}));
    for (const std::string name : {"Left", "center", "", "left "}) {
        try {
            MouseButton::named(name);
            ADD_FAILURE() << "accepted '" << name << "'";
        } catch (const InputCommandError& error) {
            EXPECT_EQ(error.message(), "unknown mouse button '" + name + "' (want left|right|middle)");
        }
    }
}

TEST_F(PointerActions, DragInterpolatesTwelveUnroundedStepsWithTheLeftButton) {
    struct Case {
        platform::Point start;
        platform::Point end;
        std::vector<platform::Point> steps;
    };
    const std::vector<Case> cases = {
        {{0, 0},
         {120, 60},
         {{10, 5}, {20, 10}, {30, 15}, {40, 20}, {50, 25}, {60, 30}, {70, 35}, {80, 40}, {90, 45}, {100, 50}, {110, 55},
          {120, 60}}},
        {{5, 5}, {5, 5}, std::vector<platform::Point>(12, {5, 5})},
        {{100, 0},
         {99, -1},
         {{100 - 1 / 12.0, -1 / 12.0},
          {100 - 2 / 12.0, -2 / 12.0},
          {100 - 3 / 12.0, -3 / 12.0},
          {100 - 4 / 12.0, -4 / 12.0},
          {100 - 5 / 12.0, -5 / 12.0},
          {100 - 6 / 12.0, -6 / 12.0},
          {100 - 7 / 12.0, -7 / 12.0},
          {100 - 8 / 12.0, -8 / 12.0},
          {100 - 9 / 12.0, -9 / 12.0},
          {100 - 10 / 12.0, -10 / 12.0},
          {100 - 11 / 12.0, -11 / 12.0},
          {99, -1}}},
    };
    for (const auto& c : cases) {
        fake::FakePlatform fresh;
        processState().heldFlags = flag::alternate;
        drag(c.start, c.end);
        const auto events = fresh.journal.events();
        ASSERT_EQ(events.size(), 15u);
        EXPECT_EQ(events[0], moved(c.start.x, c.start.y, flag::alternate));
        EXPECT_EQ(events[1], pointerEvent(type::leftMouseDown, c.start.x, c.start.y, 0, std::nullopt, flag::alternate));
        for (std::size_t i = 0; i < 12; ++i) {
            const InputEvent& step = events[2 + i];
            EXPECT_EQ(step.type, type::leftMouseDragged);
            EXPECT_DOUBLE_EQ(step.point.x, c.steps[i].x) << "step " << i + 1;
            EXPECT_DOUBLE_EQ(step.point.y, c.steps[i].y) << "step " << i + 1;
            EXPECT_EQ(step.flags, flag::alternate);
            EXPECT_FALSE(step.clickState);
        }
        EXPECT_EQ(events[14], pointerEvent(type::leftMouseUp, c.end.x, c.end.y, 0, std::nullopt, flag::alternate));
        EXPECT_EQ(fresh.journal.pauses().size(), 15u);
    }
}

TEST_F(PointerActions, UnknownScrollDirectionPostsNothing) {
    for (const std::string direction : {"left", "Up", "", "down "}) {
        try {
            scroll(direction, 3);
            ADD_FAILURE() << "accepted '" << direction << "'";
        } catch (const InputCommandError& error) {
            EXPECT_EQ(error.message(), "unknown scroll direction '" + direction + "' (want up|down)");
        }
    }
    EXPECT_TRUE(platform.journal.all().empty());
}

}  // namespace
}  // namespace brisko
