#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/screen_capture.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_window_server.h"

namespace brisko::platform::x11 {

// What an X server offers to capture: its monitors, and the processes that own windows; pictures
// and frame streams of a monitor with some processes' windows left out.
class X11ScreenCapture final : public ScreenCapture {
public:
    X11ScreenCapture(X11Connection& connection, X11WindowServer& windows)
        : connection_(connection), windows_(windows) {}

    ShareableContentResult shareableContent() override;
    std::uint32_t mainDisplayID() override;
    // X has no scale factor: a display's pixels are its points.
    std::optional<PixelSize> displayPixelSize(std::uint32_t displayID) override;
    CapturedImageResult captureImage(const CaptureFilter& filter, PixelSize size, bool showsCursor) override;
    std::unique_ptr<FrameStream> makeFrameStream(const CaptureFilter& filter,
                                                 const FrameStreamConfiguration& configuration) override;

private:
    // Where the display lies on the screen, in pixels; absent when it is not there.
    std::optional<Rect> displayBounds(std::uint32_t displayID);

    X11Connection& connection_;
    X11WindowServer& windows_;
};

}  // namespace brisko::platform::x11
