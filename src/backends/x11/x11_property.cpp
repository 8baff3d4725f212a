#include "backends/x11/x11_property.h"

#include <cstring>

namespace brisko::platform::x11 {
namespace {

// Longer values are of no use to the inventory (type and state lists, ids, opacity).
constexpr std::uint32_t maxPropertyLongs = 1024;

}  // namespace

xcb_get_property_cookie_t requestProperty(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
                                          xcb_atom_t type) {
    return xcb_get_property(connection, 0, window, property, type, 0, maxPropertyLongs);
}

XcbReply<xcb_get_property_reply_t> propertyReply(xcb_connection_t* connection, xcb_get_property_cookie_t cookie) {
    return XcbReply<xcb_get_property_reply_t>(xcb_get_property_reply(connection, cookie, nullptr));
}

bool propertyPresent(const xcb_get_property_reply_t* reply) { return reply && reply->type != XCB_NONE; }

std::vector<std::uint32_t> cardinalsIn(const xcb_get_property_reply_t* reply) {
    if (!propertyPresent(reply) || reply->format != 32) return {};
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply)) / 4;
    std::vector<std::uint32_t> values(count);
    // An empty list (a window manager's empty _NET_WM_STATE) has no data to copy from.
    if (count > 0) std::memcpy(values.data(), xcb_get_property_value(reply), count * 4);
    return values;
}

std::optional<std::uint32_t> cardinalIn(const xcb_get_property_reply_t* reply) {
    const auto values = cardinalsIn(reply);
    if (values.empty()) return std::nullopt;
    return values.front();
}

std::string bytesIn(const xcb_get_property_reply_t* reply) {
    if (!propertyPresent(reply) || reply->format != 8) return {};
    const auto* data = static_cast<const char*>(xcb_get_property_value(reply));
    return std::string(data, static_cast<std::size_t>(xcb_get_property_value_length(reply)));
}

}  // namespace brisko::platform::x11
