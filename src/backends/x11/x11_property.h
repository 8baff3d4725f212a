#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {

// Window properties, requested in batches (send every request, then collect every reply) so
// that a whole window list costs one round trip per kind of property.
xcb_get_property_cookie_t requestProperty(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
                                          xcb_atom_t type = XCB_GET_PROPERTY_TYPE_ANY);
XcbReply<xcb_get_property_reply_t> propertyReply(xcb_connection_t* connection, xcb_get_property_cookie_t cookie);

// What a reply holds; empty or absent when the property is missing or of another format.
bool propertyPresent(const xcb_get_property_reply_t* reply);
std::vector<std::uint32_t> cardinalsIn(const xcb_get_property_reply_t* reply);
std::optional<std::uint32_t> cardinalIn(const xcb_get_property_reply_t* reply);
std::string bytesIn(const xcb_get_property_reply_t* reply);

}  // namespace brisko::platform::x11
