#pragma once

#include <cstdint>

#include "backends/x11/selection_connection.h"

namespace brisko::platform::x11 {

// Who holds the clipboard: the owner window and the time it took the selection (0 when there is
// no owner, or the owner does not tell its TIMESTAMP).
struct ClipboardOwner {
    xcb_window_t window = XCB_WINDOW_NONE;
    xcb_timestamp_t since = 0;
    bool operator==(const ClipboardOwner&) const = default;
};

// The clipboard's change count: a number that grows whenever the clipboard is seen with another
// owner than the last time, and stays while the owner stays.
//
// X keeps no such count, and the owner's TIMESTAMP alone will not do: many owners do not offer
// it, and toolkits stamp ownership with the time of the user's key press, which may lie before
// a change another client made meanwhile. So the count is kept on the server, where it outlives
// every one-shot process: a property of the root window holds the count and the owner it
// belongs to, and whoever reads or changes the clipboard through this program moves it on when
// the owner differs, to the server's time then (never by less than one). The server's clock
// keeps running when the server resets after its last client leaves, which wipes the property
// and the clipboard alike, so the count still grows across a reset (a reset counts as a change).
// The server is grabbed while the property is read and written, so that readers who see one
// change at the same moment agree on its count.
std::int64_t clipboardChangeCount(SelectionConnection& connection, const ClipboardOwner& owner);

}  // namespace brisko::platform::x11
