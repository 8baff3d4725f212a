#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/property_number.h"
#include "platform/window_server.h"

namespace brisko {

// One entry of the window server's list as it came: each value absent when the entry lacks it or
// holds something of another kind. bounds is absent also when the system could not read it as a
// rectangle.
struct WindowListEntry {
    std::optional<platform::PropertyNumber> ownerPID;
    std::optional<platform::Rect> bounds;
    std::optional<platform::PropertyNumber> number;
    std::optional<platform::PropertyNumber> alpha;
    std::optional<platform::PropertyNumber> layer;
};

// The window of an entry. An entry without an owner pid or without bounds is no window; a missing
// number, alpha or layer reads as 0, 1.0 and 0.
std::optional<platform::ScreenWindow> screenWindowOf(const WindowListEntry& entry);

}  // namespace brisko
