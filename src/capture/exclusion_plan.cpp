#include "capture/exclusion_plan.h"

#include <algorithm>

namespace brisko {

bool PixelRect::contains(const PixelRect& other) const {
    return other.x >= x && other.y >= y && other.x + other.width <= x + width &&
           other.y + other.height <= y + height;
}

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const std::int64_t left = std::max(a.x, b.x);
    const std::int64_t top = std::max(a.y, b.y);
    const std::int64_t right = std::min(a.x + a.width, b.x + b.width);
    const std::int64_t bottom = std::min(a.y + a.height, b.y + b.height);
    if (right <= left || bottom <= top) return {};
    return {left, top, right - left, bottom - top};
}

namespace {

ExclusionHole holeOver(const PixelRect& area, const std::vector<StackedWindow>& bottomToTop) {
    ExclusionHole hole{area, true, {}};
    std::size_t first = 0;
    for (std::size_t i = bottomToTop.size(); i-- > 0;) {
        if (!bottomToTop[i].excluded && bottomToTop[i].bounds.contains(area)) {
            first = i;
            hole.fillBackground = false;
            break;
        }
    }
    for (std::size_t i = first; i < bottomToTop.size(); ++i) {
        if (bottomToTop[i].excluded) continue;
        const PixelRect piece = intersection(bottomToTop[i].bounds, area);
        if (!piece.empty()) hole.pieces.push_back({bottomToTop[i].id, piece});
    }
    return hole;
}

}  // namespace

std::vector<ExclusionHole> planExclusion(const PixelRect& display, const std::vector<StackedWindow>& bottomToTop) {
    std::vector<ExclusionHole> holes;
    for (const StackedWindow& window : bottomToTop) {
        if (!window.excluded) continue;
        const PixelRect area = intersection(window.bounds, display);
        if (!area.empty()) holes.push_back(holeOver(area, bottomToTop));
    }
    return holes;
}

}  // namespace brisko
