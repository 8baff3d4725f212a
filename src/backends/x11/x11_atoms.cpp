#include "backends/x11/x11_atoms.h"

#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {

std::vector<xcb_atom_t> internAtoms(xcb_connection_t* connection, const std::vector<std::string_view>& names) {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    cookies.reserve(names.size());
    for (const std::string_view name : names) {
        cookies.push_back(xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    std::vector<xcb_atom_t> atoms;
    atoms.reserve(names.size());
    for (const auto cookie : cookies) {
        const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
        atoms.push_back(reply ? reply->atom : XCB_NONE);
    }
    return atoms;
}

}  // namespace brisko::platform::x11
