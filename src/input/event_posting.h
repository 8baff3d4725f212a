#pragma once

#include <cstdint>

#include "platform/event_poster.h"

namespace brisko {

// A pointer event at the point, stamped with the modifier flags the process holds (heldFlags).
platform::InputEvent mouseEvent(std::uint32_t type, platform::Point point, std::uint32_t button);

// Posts the event at the HID level, with the modifiers the process holds down (modifierKeysDown)
// as the ones left held after it, then pauses postPacingMicroseconds (no pause when it is 0).
// An event the platform cannot create ends the process: nothing sensible is left to do, and what
// was posted before stays posted.
void post(const platform::InputEvent& event);

}  // namespace brisko
