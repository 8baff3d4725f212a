#include "backends/x11/clipboard_change_count.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>

namespace brisko::platform::x11 {
namespace {

// The property's value: count (low, high 32 bits), owner window, owner's time.
using Record = std::array<std::uint32_t, 4>;

// How long the server may take to stamp a property change.
constexpr std::chrono::seconds stampPatience{2};

std::int64_t advance(SelectionConnection& connection, const ClipboardOwner& owner) {
    const xcb_atom_t property = connection.atom("_BRISKO_CLIPBOARD_CHANGE_COUNT");
    const auto stored = connection.readProperty(connection.root(), property, false);
    Record record{};
    const bool known = stored && stored->type == XCB_ATOM_INTEGER && stored->format == 32 &&
                       stored->bytes.size() == sizeof record;
    if (known) std::memcpy(record.data(), stored->bytes.data(), sizeof record);
    const auto count = static_cast<std::int64_t>((std::uint64_t{record[1]} << 32) | record[0]);
    if (known && record[2] == owner.window && record[3] == owner.since) return count;

    const auto now = connection.serverTime(std::chrono::steady_clock::now() + stampPatience);
    const std::int64_t next = std::max<std::int64_t>(count + 1, now.value_or(0));
    const auto bits = static_cast<std::uint64_t>(next);
    record = {static_cast<std::uint32_t>(bits), static_cast<std::uint32_t>(bits >> 32), owner.window, owner.since};
    xcb_change_property(connection.xcb(), XCB_PROP_MODE_REPLACE, connection.root(), property, XCB_ATOM_INTEGER, 32,
                        static_cast<std::uint32_t>(record.size()), record.data());
    return next;
}

}  // namespace

std::int64_t clipboardChangeCount(SelectionConnection& connection, const ClipboardOwner& owner) {
    xcb_grab_server(connection.xcb());
    const std::int64_t count = advance(connection, owner);
    xcb_ungrab_server(connection.xcb());
    xcb_flush(connection.xcb());
    return count;
}

}  // namespace brisko::platform::x11
