#pragma once

#include <optional>

#include "platform/capture_frame.h"
#include "platform/property_number.h"

namespace brisko {

// The status a frame's status attachment reports: its value when that reads as an integer.
// Without a status, or with one that is no integer, the frame reports none and counts as complete.
inline platform::FrameStatus frameStatusOf(const std::optional<platform::PropertyNumber>& attachment) {
    if (!attachment) return std::nullopt;
    return platform::exactly<std::int64_t>(*attachment);
}

}  // namespace brisko
