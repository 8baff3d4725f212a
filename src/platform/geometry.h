#pragma once

#include <cstdint>

namespace brisko::platform {

// Global display coordinates in points, origin at the top-left of the main display.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

// Stored as the window server reports it; width or height may be negative (see standardized()).
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
};

// The rectangle with a non-negative width and height covering the same area: a negative stored
// width (height) extends from x (y) towards smaller values. NaN sizes are left as they are.
inline Rect standardized(Rect r) {
    if (r.width < 0) {
        r.x += r.width;
        r.width = -r.width;
    }
    if (r.height < 0) {
        r.y += r.height;
        r.height = -r.height;
    }
    return r;
}

struct PixelSize {
    long long width = 0;
    long long height = 0;
};

// A rectangle of whole pixels.
struct PixelRect {
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;

    bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const PixelRect&) const = default;
};

}  // namespace brisko::platform
