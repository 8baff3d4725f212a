#pragma once

#include <chrono>
#include <optional>

#include "backends/x11/selection_connection.h"

namespace brisko::platform::x11 {

// What the owner of a selection gave for one request.
struct SelectionAnswer {
    std::optional<PropertyValue> value;  // absent when there is no owner, it refused or it fell silent
    bool silent = false;                 // it let the patience run out
};

// Asks the owner of the selection for its contents converted to the target and receives them,
// in one piece or incrementally (INCR) when the owner sends them that way. The owner falls silent
// when it keeps the answer, or the next piece of it, for longer than `patience`.
SelectionAnswer requestSelection(SelectionConnection& connection, xcb_atom_t selection, xcb_atom_t target,
                                 std::chrono::milliseconds patience);

}  // namespace brisko::platform::x11
