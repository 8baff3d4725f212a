#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "capture/frame_status.h"
#include "ownui/window_list_entry.h"

namespace brisko {
namespace {

using platform::PropertyNumber;
using N = std::optional<PropertyNumber>;

const double nan = std::numeric_limits<double>::quiet_NaN();

TEST(WindowListEntry, OwnerAndBoundsMakeAWindowAndTheRestHasDefaults) {
    const platform::Rect bounds{-1440.5, 38, 360, -520};
    // The entry, and the window it makes (none: the entry is left out).
    const std::vector<std::tuple<const char*, WindowListEntry, std::optional<platform::ScreenWindow>>> cases = {
        {"every value", {std::int64_t{902}, bounds, std::int64_t{881}, 0.5, std::int64_t{101}},
         platform::ScreenWindow{881, 902, bounds, 0.5, 101}},
        {"integral floating values", {902.0, bounds, 881.0, std::int64_t{0}, 3.0},
         platform::ScreenWindow{881, 902, bounds, 0.0, 3}},
        {"defaults", {std::int64_t{7}, bounds, {}, {}, {}}, platform::ScreenWindow{0, 7, bounds, 1.0, 0}},
        {"values of no such integer", {std::int64_t{7}, bounds, std::int64_t{-1}, nan, 1e30},
         platform::ScreenWindow{0, 7, bounds, nan, 0}},
        {"window number beyond 32 bits", {std::int64_t{7}, bounds, std::int64_t{1} << 32, {}, {}},
         platform::ScreenWindow{0, 7, bounds, 1.0, 0}},
        {"no owner", {{}, bounds, std::int64_t{881}, {}, {}}, std::nullopt},
        {"owner not an integer", {902.5, bounds, {}, {}, {}}, std::nullopt},
        {"owner beyond 32 bits", {std::int64_t{1} << 31, bounds, {}, {}, {}}, std::nullopt},
        {"no bounds", {std::int64_t{902}, std::nullopt, {}, {}, {}}, std::nullopt},
    };
    for (const auto& [what, entry, expected] : cases) {
        const std::optional<platform::ScreenWindow> window = screenWindowOf(entry);
        ASSERT_EQ(window.has_value(), expected.has_value()) << what;
        if (!window) continue;
        EXPECT_EQ(std::tuple(window->windowID, window->ownerPID, window->bounds, window->layer),
                  std::tuple(expected->windowID, expected->ownerPID, expected->bounds, expected->layer)) << what;
        EXPECT_TRUE(window->alpha == expected->alpha || (std::isnan(window->alpha) && std::isnan(expected->alpha)))
            << what;
    }
}

TEST(FrameStatus, OnlyAnIntegerIsAStatus) {
    const std::vector<std::pair<N, platform::FrameStatus>> cases = {
        {std::nullopt, std::nullopt},     {std::int64_t{0}, 0},       {std::int64_t{1}, 1},
        {std::int64_t{-3}, -3},           {0.0, 0},                   {4.0, 4},
        {2.5, std::nullopt},              {nan, std::nullopt},        {1e19, std::nullopt},
        {-std::ldexp(1.0, 63), std::numeric_limits<std::int64_t>::min()},
    };
    for (const auto& [attachment, status] : cases) {
        EXPECT_EQ(frameStatusOf(attachment), status)
            << (attachment ? platform::asDouble(*attachment) : -0.0);
    }
}

}  // namespace
}  // namespace brisko
