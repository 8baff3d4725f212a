#pragma once

#include <cstdint>
#include <string_view>

#include "input/mouse_button.h"
#include "platform/geometry.h"

namespace brisko {

// Pointer motion without a button.
void moveTo(platform::Point point);
// Press and release of the button at the point, both with the click state (2 for the second click
// of a double click).
void clickAt(platform::Point point, const MouseButton& button, std::int64_t clickState = 1);
// A left-button drag: move to start, press, 12 interpolated dragged events ending exactly at end,
// release at end.
void drag(platform::Point start, platform::Point end);
// amount line-scroll events of 3 lines, up or down. Throws InputCommandError for any other
// direction, before posting.
void scroll(std::string_view direction, std::int32_t amount);

}  // namespace brisko
