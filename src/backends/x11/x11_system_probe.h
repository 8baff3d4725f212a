#pragma once

#include "platform/system_probe.h"
#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {

// Permissions, modifier state, screen size and session state as the X server knows them. X asks
// no one for permission: capture works when the server hands out the screen's pixels, input when
// it offers XTEST.
class X11SystemProbe final : public SystemProbe {
public:
    explicit X11SystemProbe(X11Connection& connection) : connection_(connection) {}

    void requestPermissions() override {}
    bool screenCaptureAllowed() override;
    bool postEventAllowed() override;
    std::uint64_t hidFlags() override;
    Rect mainDisplayBounds() override;
    std::optional<PixelSize> mainDisplayPixelSize() override;
    std::optional<std::map<std::string, double>> sessionValues() override;
    bool displayAsleep() override;

private:
    bool screenSaverActive();

    X11Connection& connection_;
};

}  // namespace brisko::platform::x11
