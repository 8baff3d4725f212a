#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisko::platform::x11 {

using Deadline = std::chrono::steady_clock::time_point;

struct FreeEvent {
    void operator()(xcb_generic_event_t* event) const { std::free(event); }
};
using Event = std::unique_ptr<xcb_generic_event_t, FreeEvent>;

// The event's type without the bit that marks events sent by another client.
inline std::uint8_t eventType(const xcb_generic_event_t& event) { return event.response_type & 0x7f; }

struct PropertyValue {
    xcb_atom_t type = XCB_ATOM_NONE;
    std::uint8_t format = 0;
    std::vector<std::uint8_t> bytes;
};

// One client connection to the X server with a hidden window of its own. Selection data is
// delivered to the window, and a property change on it tells the server's time.
class SelectionConnection {
public:
    // Absent when the display cannot be opened. An empty name means the one DISPLAY names.
    static std::unique_ptr<SelectionConnection> open(const std::string& displayName);
    ~SelectionConnection();
    SelectionConnection(const SelectionConnection&) = delete;
    SelectionConnection& operator=(const SelectionConnection&) = delete;

    xcb_connection_t* xcb() const { return connection_; }
    xcb_window_t window() const { return window_; }
    xcb_window_t root() const { return root_; }
    bool broken() const;
    // The largest property chunk one core-protocol request carries (no BIG-REQUESTS).
    std::size_t maxPropertyBytes() const;

    xcb_atom_t atom(std::string_view name);
    std::vector<std::string> atomNames(const std::vector<xcb_atom_t>& atoms);

    // The server's time now: the stamp of an (empty) property change on the window.
    std::optional<xcb_timestamp_t> serverTime(Deadline deadline);

    // The next event; absent at the deadline (none: wait for ever) or when the connection broke.
    Event nextEvent(std::optional<Deadline> deadline);
    // The next event that `wanted` accepts; other events are dropped.
    Event waitFor(const std::function<bool(const xcb_generic_event_t&)>& wanted, Deadline deadline);

    // The whole value of a property, read in pieces; absent when the window has no such property.
    // With `remove`, the server deletes the property once its last piece is read.
    std::optional<PropertyValue> readProperty(xcb_window_t window, xcb_atom_t property, bool remove);

private:
    SelectionConnection(xcb_connection_t* connection, xcb_window_t root);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_window_t window_;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
    std::map<xcb_atom_t, std::string> names_;
};

}  // namespace brisko::platform::x11
