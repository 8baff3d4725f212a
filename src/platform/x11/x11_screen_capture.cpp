#include "platform/x11/x11_screen_capture.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include "platform/x11/x11_monitors.h"

namespace brisko::platform::x11 {
namespace {

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

}  // namespace brisko::platform::x11
