#include "capture/exclusion_plan.h"

#include <algorithm>

namespace brisko {

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const std::int64_t left = std::max(a.x, b.x);
    const std::int64_t top = std::max(a.y, b.y);
    const std::int64_t right = std::min(a.x + a.width, b.x + b.width);
    const std::int64_t bottom = std::min(a.y + a.height, b.y + b.height);
    if (right <= left || bottom <= top) return {};
    return {left, top, right - left, bottom - top};
}

std::vector<ExclusionHole> planExclusion(const PixelRect& display, const std::vector<StackedWindow>& bottomToTop) {
    std::vector<ExclusionHole> holes;
    for (const StackedWindow& window : bottomToTop) {
        if (!window.excluded) continue;
        const PixelRect area = intersection(window.bounds, display);
        if (area.empty()) continue;
        ExclusionHole& hole = holes.emplace_back(ExclusionHole{area, {}});
        for (const StackedWindow& other : bottomToTop) {
            const PixelRect piece = other.excluded ? PixelRect{} : intersection(other.bounds, area);
            if (!piece.empty()) hole.pieces.push_back({other.id, piece});
        }
    }
    return holes;
}

}  // namespace brisko
