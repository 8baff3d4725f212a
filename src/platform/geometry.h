#pragma once

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

struct PixelSize {
    long long width = 0;
    long long height = 0;
};

}  // namespace brisko::platform
