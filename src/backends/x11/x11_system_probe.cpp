#include "backends/x11/x11_system_probe.h"

#include <xcb/dpms.h>
#include <xcb/screensaver.h>
#include <xcb/xtest.h>

#include <cmath>

#include "backends/x11/x11_modifier_state.h"
#include "backends/x11/x11_monitors.h"

namespace brisko::platform::x11 {
namespace {

// The session keys the status probes read.
constexpr const char* screenLockedKey = "CGSSessionScreenIsLocked";
constexpr const char* onConsoleKey = "kCGSSessionOnConsoleKey";

}  // namespace

bool X11SystemProbe::screenCaptureAllowed() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return false;
    const xcb_get_image_cookie_t cookie =
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, connection_.root(), 0, 0, 1, 1, ~0u);
    XcbReply<xcb_get_image_reply_t> image(xcb_get_image_reply(connection, cookie, nullptr));
    return image != nullptr;
}

bool X11SystemProbe::postEventAllowed() { return connection_.hasExtension(xcb_test_id); }

std::uint64_t X11SystemProbe::hidFlags() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return 0;
    XcbReply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, connection_.root()), nullptr));
    if (!pointer) return 0;
    return flagsOfModifierState(connection, pointer->mask);
}

Rect X11SystemProbe::mainDisplayBounds() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return {};
    // The main display's corner is where points count from.
    const Rect main = x11::mainDisplayBounds(connection, connection_.screen());
    return {0, 0, main.width, main.height};
}

std::optional<PixelSize> X11SystemProbe::mainDisplayPixelSize() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return std::nullopt;
    // X has no points: a display's size is its pixel size.
    const Rect main = x11::mainDisplayBounds(connection, connection_.screen());
    return PixelSize{std::llround(main.width), std::llround(main.height)};
}

std::optional<std::map<std::string, double>> X11SystemProbe::sessionValues() {
    // A display that opens is a session on its own console: the X server is the console.
    if (!connection_.get()) return std::nullopt;
    return std::map<std::string, double>{
        {screenLockedKey, screenSaverActive() ? 1.0 : 0.0},
        {onConsoleKey, 1.0},
    };
}

bool X11SystemProbe::screenSaverActive() {
    // An active screen saver is taken as a locked screen: a locker shows itself as the saver.
    if (!connection_.hasExtension(xcb_screensaver_id)) return false;
    xcb_connection_t* connection = connection_.get();
    XcbReply<xcb_screensaver_query_info_reply_t> info(xcb_screensaver_query_info_reply(
        connection, xcb_screensaver_query_info(connection, connection_.root()), nullptr));
    return info && info->state == XCB_SCREENSAVER_STATE_ON;
}

bool X11SystemProbe::displayAsleep() {
    if (!connection_.hasExtension(xcb_dpms_id)) return false;
    xcb_connection_t* connection = connection_.get();
    XcbReply<xcb_dpms_info_reply_t> info(xcb_dpms_info_reply(connection, xcb_dpms_info(connection), nullptr));
    return info && info->state && info->power_level != XCB_DPMS_DPMS_MODE_ON;
}

}  // namespace brisko::platform::x11
