#pragma once

#include <cstdint>
#include <vector>

#include "platform/geometry.h"

namespace brisko {

// Here in the window system's screen coordinates.
using platform::PixelRect;

// The common part; empty when there is none.
PixelRect intersection(const PixelRect& a, const PixelRect& b);
// The smallest rectangle around both; an empty one counts for nothing.
PixelRect unite(const PixelRect& a, const PixelRect& b);

// A top-level window as the screen stacks it.
struct StackedWindow {
    std::uint32_t id = 0;
    PixelRect bounds;   // border included
    bool excluded = false;
    // The parts of the bounds that the window covers (a shaped window's region), in screen
    // coordinates; empty: all of them.
    std::vector<PixelRect> shape = {};
    // Its pixels carry an alpha that the screen blends over what lies beneath.
    bool translucent = false;
};

// A part of one window's own contents to draw, in screen coordinates: copied, or blended over
// what is drawn below it.
struct WindowPiece {
    std::uint32_t window = 0;
    PixelRect area;
    bool blend = false;
    bool operator==(const WindowPiece&) const = default;
};

// The screen under one left-out window, drawn afresh without it: the background, then the
// pieces, bottom to top.
struct ExclusionHole {
    PixelRect area;
    std::vector<WindowPiece> pieces;
    bool operator==(const ExclusionHole&) const = default;
};

// What to draw over a picture of the display so that the left-out windows disappear and what lies
// beneath them shows: one hole for each part of a left-out window's shape on the display. Windows
// come bottom to top; every hole is drawn from all the windows that are not left out, each within
// its shape, so holes of overlapping left-out windows agree where they meet. No window is taken
// to hide those below it: a window whose contents cannot be read (a compositing manager's
// overlay, which shows the whole screen, host windows included) is passed over when drawn, and
// what lies below it must be there.
std::vector<ExclusionHole> planExclusion(const PixelRect& display, const std::vector<StackedWindow>& bottomToTop);

}  // namespace brisko
