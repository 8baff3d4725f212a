#pragma once

#include <cstdint>

#include "platform/window_server.h"

namespace brisko::testing {

// A window as the window server would report it, opaque and at layer 0 unless told otherwise.
inline platform::ScreenWindow screenWindow(std::uint32_t id, std::int32_t pid, platform::Rect bounds,
                                           std::int64_t layer = 0, double alpha = 1.0) {
    return {.windowID = id, .ownerPID = pid, .bounds = bounds, .alpha = alpha, .layer = layer};
}

}  // namespace brisko::testing
