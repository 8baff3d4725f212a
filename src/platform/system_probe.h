#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "platform/geometry.h"

namespace brisko::platform {

class SystemProbe {
public:
    virtual ~SystemProbe() = default;
    // Makes the system show its permission prompts (screen capture, event posting, accessibility).
    virtual void requestPermissions() = 0;
    virtual bool screenCaptureAllowed() = 0;
    virtual bool postEventAllowed() = 0;
    // Modifier flags the HID system state holds now, in the program's flag bits.
    virtual std::uint64_t hidFlags() = 0;
    // Main display bounds in points.
    virtual Rect mainDisplayBounds() = 0;
    // Main display mode in pixels; absent when the mode cannot be read.
    virtual std::optional<PixelSize> mainDisplayPixelSize() = 0;
    // The login session's numeric values by key; absent outside a session.
    virtual std::optional<std::map<std::string, double>> sessionValues() = 0;
    virtual bool displayAsleep() = 0;
};

}  // namespace brisko::platform
