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
    // The entry, and the window it makes (none: the entry is left out): number, owner, bounds, alpha, layer.
    using W = std::tuple<std::uint32_t, std::int32_t, platform::Rect, double, std::int64_t>;
    using I = std::int64_t;
    const std::vector<std::tuple<const char*, WindowListEntry, std::optional<W>>> cases = {
        {"every value", {I{902}, bounds, I{881}, 0.5, I{101}}, W{881, 902, bounds, 0.5, 101}},
        {"integral floating values", {902.0, bounds, 881.0, I{0}, 3.0}, W{881, 902, bounds, 0.0, 3}},
        {"defaults", {I{7}, bounds, {}, {}, {}}, W{0, 7, bounds, 1.0, 0}},
        {"values of no such integer", {I{7}, bounds, I{-1}, 2.5, 1e30}, W{0, 7, bounds, 2.5, 0}},
        {"window number beyond 32 bits", {I{7}, bounds, I{1} << 32, {}, {}}, W{0, 7, bounds, 1.0, 0}},
        {"no owner", {{}, bounds, I{881}, {}, {}}, std::nullopt},
        {"owner not an integer", {902.5, bounds, {}, {}, {}}, std::nullopt},
        {"owner beyond 32 bits", {I{1} << 31, bounds, {}, {}, {}}, std::nullopt},
        {"no bounds", {I{902}, std::nullopt, {}, {}, {}}, std::nullopt},
    };
    for (const auto& [what, entry, expected] : cases) {
        const std::optional<platform::ScreenWindow> w = screenWindowOf(entry);
        const auto made = w ? std::optional(W{w->windowID, w->ownerPID, w->bounds, w->alpha, w->layer}) : std::nullopt;
        EXPECT_EQ(made, expected) << what;
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
        EXPECT_EQ(frameStatusOf(attachment), status) << ::testing::PrintToString(attachment);
    }
}

}  // namespace
}  // namespace brisko
