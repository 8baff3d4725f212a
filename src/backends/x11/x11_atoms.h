#pragma once

#include <string_view>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// Interns the names in one round trip; an atom that could not be interned is XCB_NONE.
std::vector<xcb_atom_t> internAtoms(xcb_connection_t* connection, const std::vector<std::string_view>& names);

}  // namespace brisko::platform::x11
