#include "backends/x11/x11_monitors.h"

#include <algorithm>
#include <cstdlib>

#include <xcb/randr.h>

#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {
namespace {

std::vector<Monitor> randrMonitors(xcb_connection_t* connection, xcb_window_t root) {
    const xcb_query_extension_reply_t* randr = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!randr || !randr->present) return {};
    // Monitors came with RandR 1.5; an older server refuses the request, which says as much as
    // asking for its version first would, in one round trip instead of two.
    xcb_generic_error_t* refused = nullptr;
    const XcbReply<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(connection, xcb_randr_get_monitors(connection, root, 1), &refused));
    std::free(refused);
    if (!reply) return {};
    std::vector<Monitor> list;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem; xcb_randr_monitor_info_next(&it)) {
        const xcb_randr_monitor_info_t& m = *it.data;
        list.push_back({m.name, Rect{double(m.x), double(m.y), double(m.width), double(m.height)}, m.primary != 0});
    }
    return list;
}

}  // namespace

std::vector<Monitor> monitors(xcb_connection_t* connection, const xcb_screen_t& screen) {
    std::vector<Monitor> list = randrMonitors(connection, screen.root);
    if (list.empty()) {
        list.push_back({screen.root, Rect{0, 0, double(screen.width_in_pixels), double(screen.height_in_pixels)},
                        true});
    }
    return list;
}

const Monitor& mainMonitor(const std::vector<Monitor>& monitors) {
    const auto primary = std::find_if(monitors.begin(), monitors.end(), [](const Monitor& m) { return m.primary; });
    return primary != monitors.end() ? *primary : monitors.front();
}

Rect mainDisplayBounds(xcb_connection_t* connection, const xcb_screen_t& screen) {
    return mainMonitor(monitors(connection, screen)).bounds;
}

}  // namespace brisko::platform::x11
