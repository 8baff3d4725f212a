#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "capture/exclusion_plan.h"

namespace brisko {
namespace {

constexpr PixelRect display{0, 0, 1000, 800};

TEST(ExclusionPlan, HolesAreRedrawnFromTheWindowsThatStay) {
    struct Case {
        std::string name;
        std::vector<StackedWindow> bottomToTop;
        std::vector<ExclusionHole> expected;
    };
    const std::vector<Case> cases = {
        {"nothing left out", {{1, {0, 0, 500, 500}, false}, {2, {100, 100, 50, 50}, false}}, {}},
        {"host over the bare background",
         {{9, {10, 20, 100, 50}, true}},
         {{{10, 20, 100, 50}, {}}}},
        {"host over parts of two windows, a third window above it, one elsewhere",
         {{1, {0, 0, 60, 800}, false}, {9, {40, 40, 100, 100}, true}, {2, {120, 0, 500, 60}, false},
          {3, {700, 700, 10, 10}, false}},
         {{{40, 40, 100, 100}, {{1, {40, 40, 20, 100}}, {2, {120, 40, 20, 20}}}}}},
        {"every window under and over the hole is drawn, also those another one covers",
         {{1, {0, 0, 1000, 800}, false}, {2, {0, 0, 900, 700}, false}, {9, {50, 50, 10, 10}, true},
          {3, {55, 0, 100, 52}, false}},
         {{{50, 50, 10, 10}, {{1, {50, 50, 10, 10}}, {2, {50, 50, 10, 10}}, {3, {55, 50, 5, 2}}}}}},
        {"hosts clipped to the display, one entirely off it, and never drawn into each other",
         {{1, {900, 700, 300, 300}, false}, {9, {950, 750, 200, 200}, true}, {8, {-50, -50, 40, 40}, true},
          {7, {960, 760, 10, 10}, true}},
         {{{950, 750, 50, 50}, {{1, {950, 750, 50, 50}}}}, {{960, 760, 10, 10}, {{1, {960, 760, 10, 10}}}}}},
        {"a hole for each part of a shaped host; a shaped window drawn where it covers, a translucent one blended",
         {{1, {0, 0, 100, 100}, false, {{0, 0, 100, 40}}}, {2, {0, 0, 100, 100}, false, {}, true},
          {9, {10, 10, 50, 50}, true, {{10, 10, 50, 20}, {10, 30, 20, 30}}}},
         {{{10, 10, 50, 20}, {{1, {10, 10, 50, 20}}, {2, {10, 10, 50, 20}, true}}},
          {{10, 30, 20, 30}, {{1, {10, 30, 20, 10}}, {2, {10, 30, 20, 30}, true}}}}},
    };
    for (const Case& c : cases) EXPECT_EQ(planExclusion(display, c.bottomToTop), c.expected) << c.name;
}

TEST(ExclusionPlan, RectangleArithmetic) {
    EXPECT_EQ(intersection({0, 0, 10, 10}, {5, -5, 10, 10}), (PixelRect{5, 0, 5, 5}));
    EXPECT_TRUE(intersection({0, 0, 10, 10}, {10, 0, 5, 5}).empty());  // touching edges share nothing
}

}  // namespace
}  // namespace brisko
