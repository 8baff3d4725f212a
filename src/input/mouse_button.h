#pragma once

#include <cstdint>
#include <string_view>

namespace brisko {

// A pointer button as the event constructors take it: its number and the event types of its press
// and release.
struct MouseButton {
    std::uint32_t button;
    std::uint32_t down;
    std::uint32_t up;

    // "left", "right" or "middle", matched exactly. Throws InputCommandError for any other name.
    static MouseButton named(std::string_view name);

    bool operator==(const MouseButton&) const = default;
};

}  // namespace brisko
