#include "backends/x11/selection_request.h"

namespace brisko::platform::x11 {
namespace {

Deadline after(std::chrono::milliseconds patience) { return std::chrono::steady_clock::now() + patience; }

// The owner writes each piece into the property and waits until the requestor has read and
// deleted it; an empty piece ends the transfer.
SelectionAnswer receiveIncrementally(SelectionConnection& connection, xcb_atom_t property,
                                     std::chrono::milliseconds patience) {
    PropertyValue whole;
    for (;;) {
        const Event event = connection.waitFor(
            [&](const xcb_generic_event_t& e) {
                if (eventType(e) != XCB_PROPERTY_NOTIFY) return false;
                const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(e);
                return notify.window == connection.window() && notify.atom == property &&
                       notify.state == XCB_PROPERTY_NEW_VALUE;
            },
            after(patience));
        if (!event) return {std::nullopt, !connection.broken()};
        auto piece = connection.readProperty(connection.window(), property, true);
        if (!piece) return {};
        if (piece->bytes.empty()) return {std::move(whole)};
        if (whole.bytes.empty()) {
            whole.type = piece->type;
            whole.format = piece->format;
        }
        whole.bytes.insert(whole.bytes.end(), piece->bytes.begin(), piece->bytes.end());
    }
}

}  // namespace

SelectionAnswer requestSelection(SelectionConnection& connection, xcb_atom_t selection, xcb_atom_t target,
                                 std::chrono::milliseconds patience) {
    const xcb_atom_t property = connection.atom("_BRISKO_SELECTION");
    // An answer to an earlier request that gave up waiting must not pass for this one.
    xcb_delete_property(connection.xcb(), connection.window(), property);
    xcb_convert_selection(connection.xcb(), connection.window(), selection, target, property, XCB_CURRENT_TIME);
    const Event event = connection.waitFor(
        [&](const xcb_generic_event_t& e) {
            if (eventType(e) != XCB_SELECTION_NOTIFY) return false;
            const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(e);
            return notify.requestor == connection.window() && notify.selection == selection && notify.target == target;
        },
        after(patience));
    if (!event) return {std::nullopt, !connection.broken()};
    const auto& notify = *reinterpret_cast<const xcb_selection_notify_event_t*>(event.get());
    if (notify.property == XCB_ATOM_NONE) return {};
    // Reading with delete also tells an incremental sender to start.
    auto value = connection.readProperty(connection.window(), notify.property, true);
    if (!value || value->type != connection.atom("INCR")) return {std::move(value)};
    return receiveIncrementally(connection, notify.property, patience);
}

}  // namespace brisko::platform::x11
