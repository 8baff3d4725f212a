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

PixelRect unite(const PixelRect& a, const PixelRect& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    const std::int64_t left = std::min(a.x, b.x);
    const std::int64_t top = std::min(a.y, b.y);
    return {left, top, std::max(a.x + a.width, b.x + b.width) - left, std::max(a.y + a.height, b.y + b.height) - top};
}

namespace {

// The parts of the screen a window covers.
std::vector<PixelRect> covered(const StackedWindow& window) {
    if (window.shape.empty()) return {window.bounds};
    std::vector<PixelRect> parts;
    for (const PixelRect& part : window.shape) {
        const PixelRect inside = intersection(part, window.bounds);
        if (!inside.empty()) parts.push_back(inside);
    }
    return parts;
}

}  // namespace

std::vector<ExclusionHole> planExclusion(const PixelRect& display, const std::vector<StackedWindow>& bottomToTop) {
    std::vector<ExclusionHole> holes;
    for (const StackedWindow& window : bottomToTop) {
        if (!window.excluded) continue;
        for (const PixelRect& part : covered(window)) {
            const PixelRect area = intersection(part, display);
            if (area.empty()) continue;
            ExclusionHole& hole = holes.emplace_back(ExclusionHole{area, {}});
            for (const StackedWindow& other : bottomToTop) {
                if (other.excluded) continue;
                for (const PixelRect& otherPart : covered(other)) {
                    const PixelRect piece = intersection(otherPart, area);
                    if (!piece.empty()) hole.pieces.push_back({other.id, piece, other.translucent});
                }
            }
        }
    }
    return holes;
}

}  // namespace brisko
