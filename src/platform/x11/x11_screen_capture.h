#pragma once

#include <cstdint>

#include "platform/screen_capture.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_window_server.h"

namespace brisko::platform::x11 {

// What an X server offers to capture: its monitors, and the processes that own windows.
class X11ScreenCapture final : public ScreenCapture {
public:
    X11ScreenCapture(X11Connection& connection, X11WindowServer& windows)
        : connection_(connection), windows_(windows) {}

    ShareableContentResult shareableContent() override;
    std::uint32_t mainDisplayID() override;
    std::optional<PixelSize> displayPixelSize(std::uint32_t) override { return std::nullopt; }
    CapturedImageResult captureImage(const CaptureFilter&, PixelSize, bool) override {
        return {std::nullopt, "not built yet"};
    }
    std::unique_ptr<FrameStream> makeFrameStream(const CaptureFilter&, const FrameStreamConfiguration&) override {
        return nullptr;
    }

private:
    X11Connection& connection_;
    X11WindowServer& windows_;
};

}  // namespace brisko::platform::x11
