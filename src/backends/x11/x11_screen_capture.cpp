#include "backends/x11/x11_screen_capture.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <thread>

#include "backends/x11/x11_frame_composer.h"
#include "backends/x11/x11_frame_stream.h"
#include "backends/x11/x11_monitors.h"

namespace brisko::platform::x11 {
namespace {

// Windows that had never drawn what others covered are asked to (Expose) when their top-level
// windows are first redirected; a picture that needs those parts waits this long for them.
constexpr std::chrono::milliseconds repaintAfterRedirect{150};

PixelRect pixelRect(const Rect& r) {
    return {std::llround(r.x), std::llround(r.y), std::llround(r.width), std::llround(r.height)};
}

std::string unreachableDisplay() {
    const char* name = std::getenv("DISPLAY");
    return std::string("cannot connect to X display ") + (name && *name ? name : "(DISPLAY is not set)");
}

}  // namespace

ShareableContentResult X11ScreenCapture::shareableContent() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return {std::nullopt, unreachableDisplay()};
    ShareableContent content;
    for (const Monitor& m : monitors(connection, connection_.screen())) {
        content.displays.push_back(
            {m.id, std::llround(m.bounds.width), std::llround(m.bounds.height)});
    }
    content.applications = windows_.applications();
    return {std::move(content), std::nullopt};
}

std::uint32_t X11ScreenCapture::mainDisplayID() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return 0;
    return mainMonitor(monitors(connection, connection_.screen())).id;
}

std::optional<Rect> X11ScreenCapture::displayBounds(std::uint32_t displayID) {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return std::nullopt;
    for (const Monitor& m : monitors(connection, connection_.screen())) {
        if (m.id == displayID) return m.bounds;
    }
    return std::nullopt;
}

std::optional<PixelSize> X11ScreenCapture::displayPixelSize(std::uint32_t displayID) {
    const std::optional<Rect> bounds = displayBounds(displayID);
    if (!bounds) return std::nullopt;
    return PixelSize{std::llround(bounds->width), std::llround(bounds->height)};
}

CapturedImageResult X11ScreenCapture::captureImage(const CaptureFilter& filter, PixelSize size, bool showsCursor) {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return {std::nullopt, unreachableDisplay()};
    const std::optional<Rect> bounds = displayBounds(filter.display.displayID);
    if (!bounds) return {std::nullopt, "the display is no longer there"};
    const PixelRect display = pixelRect(*bounds);
    if (auto unavailable = unavailableSize(display, size)) return {std::nullopt, unavailable};
    FrameComposer composer(connection, connection_.screen(), display);
    if (auto error = composer.prepare()) return {std::nullopt, error};
    const std::set<std::int32_t> excluded(filter.excludedPids.begin(), filter.excludedPids.end());
    std::optional<BgraFrameView> frame = composer.compose(excluded, showsCursor);
    if (frame && composer.hadHoles()) {
        std::this_thread::sleep_for(repaintAfterRedirect);
        composer.windowsChanged();
        frame = composer.compose(excluded, showsCursor);
    }
    if (!frame) return {std::nullopt, "the X server would not give the display's pixels"};
    CapturedImage image{frame->width, frame->height,
                        std::vector<std::uint8_t>(static_cast<std::size_t>(frame->height * frame->bytesPerRow))};
    std::memcpy(image.bgra.data(), frame->base, image.bgra.size());
    return {std::move(image), std::nullopt};
}

std::unique_ptr<FrameStream> X11ScreenCapture::makeFrameStream(const CaptureFilter& filter,
                                                               const FrameStreamConfiguration& configuration) {
    std::optional<PixelRect> display;
    if (const std::optional<Rect> bounds = displayBounds(filter.display.displayID)) display = pixelRect(*bounds);
    return std::make_unique<X11FrameStream>(filter.display.displayID, display, filter, configuration);
}

}  // namespace brisko::platform::x11
