#pragma once

#include <chrono>
#include <optional>

#include "backends/x11/selection_connection.h"

namespace brisko::platform::x11 {

// Asks the owner of the selection for its contents converted to the target and receives them,
// in one piece or incrementally (INCR) when the owner sends them that way. Absent when there is
// no owner, the owner refuses, or it falls silent for longer than `patience`.
std::optional<PropertyValue> requestSelection(SelectionConnection& connection, xcb_atom_t selection,
                                              xcb_atom_t target, std::chrono::milliseconds patience);

}  // namespace brisko::platform::x11
