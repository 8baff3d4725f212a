#include "capture/frame_read_plan.h"

#include <algorithm>

#include "capture/exclusion_plan.h"

namespace brisko {

FrameReadPlan planFrameRead(platform::PixelSize display, const std::optional<std::vector<PixelRect>>& damage,
                            bool layoutChanged) {
    if (layoutChanged || !damage) return {0, display.height, std::nullopt};
    FrameReadPlan plan{0, 0, std::vector<PixelRect>{}};
    std::int64_t bottom = 0;
    for (const PixelRect& area : *damage) {
        const PixelRect inside = intersection(area, {0, 0, display.width, display.height});
        if (inside.empty()) continue;
        plan.top = plan.damaged->empty() ? inside.y : std::min(plan.top, inside.y);
        bottom = std::max(bottom, inside.y + inside.height);
        plan.damaged->push_back(inside);
    }
    plan.rows = plan.damaged->empty() ? 0 : bottom - plan.top;
    return plan;
}

}  // namespace brisko
