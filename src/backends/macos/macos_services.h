#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/services.h"

// The services of the macOS backend, each over the system frameworks that provide it.
namespace brisko::platform::macos {

std::unique_ptr<EventPoster> makeEventPoster();
std::unique_ptr<WindowServer> makeWindowServer();
std::unique_ptr<ScreenCapture> makeScreenCapture();
std::unique_ptr<Pasteboard> makePasteboard();
std::unique_ptr<SystemProbe> makeSystemProbe();

// A display's current mode in pixels; absent when the mode cannot be read.
std::optional<PixelSize> displayModePixels(std::uint32_t displayID);

}  // namespace brisko::platform::macos
