#include "backends/x11/selection_connection.h"

#include <poll.h>

#include <cerrno>

namespace brisko::platform::x11 {
namespace {

template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
ReplyPtr<Reply> owned(Reply* reply) {
    return ReplyPtr<Reply>(reply, &std::free);
}

// Pieces of at most 1 MiB keep single replies small when a property holds megabytes.
constexpr std::uint32_t propertyPieceWords = 1u << 18;

// The protocol's header of a ChangeProperty request, which the data shares the request with.
constexpr std::size_t changePropertyHeaderBytes = 24;

}  // namespace

std::unique_ptr<SelectionConnection> SelectionConnection::open(const std::string& displayName) {
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && screens.rem > 0; ++i) xcb_screen_next(&screens);
    if (screens.rem == 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<SelectionConnection>(new SelectionConnection(connection, screens.data->root));
}

SelectionConnection::SelectionConnection(xcb_connection_t* connection, xcb_window_t root)
    : connection_(connection), root_(root), window_(xcb_generate_id(connection)) {
    const std::uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, 0, window_, root_, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
    xcb_flush(connection_);
}

SelectionConnection::~SelectionConnection() {
    // Closing the connection lets the server free the window; pending requests must reach it.
    xcb_flush(connection_);
    xcb_disconnect(connection_);
}

bool SelectionConnection::broken() const { return xcb_connection_has_error(connection_) != 0; }

std::size_t SelectionConnection::maxPropertyBytes() const {
    const std::size_t requestBytes = std::size_t{xcb_get_setup(connection_)->maximum_request_length} * 4;
    return requestBytes - changePropertyHeaderBytes;
}

xcb_atom_t SelectionConnection::atom(std::string_view name) {
    if (const auto found = atoms_.find(name); found != atoms_.end()) return found->second;
    const auto cookie = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
    const xcb_atom_t value = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    if (value != XCB_ATOM_NONE) {
        atoms_.emplace(std::string(name), value);
        names_.emplace(value, std::string(name));
    }
    return value;
}

std::vector<std::string> SelectionConnection::atomNames(const std::vector<xcb_atom_t>& atoms) {
    // All unknown names are asked for before the first answer is awaited: one round trip.
    std::map<xcb_atom_t, xcb_get_atom_name_cookie_t> asked;
    for (const xcb_atom_t a : atoms) {
        if (!names_.contains(a) && !asked.contains(a)) asked.emplace(a, xcb_get_atom_name(connection_, a));
    }
    for (const auto& [a, cookie] : asked) {
        const auto reply = owned(xcb_get_atom_name_reply(connection_, cookie, nullptr));
        if (!reply) continue;
        std::string name(xcb_get_atom_name_name(reply.get()),
                         static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
        atoms_.emplace(name, a);
        names_.emplace(a, std::move(name));
    }
    std::vector<std::string> result;
    for (const xcb_atom_t a : atoms) {
        const auto found = names_.find(a);
        result.push_back(found != names_.end() ? found->second : std::string());
    }
    return result;
}

std::optional<xcb_timestamp_t> SelectionConnection::serverTime(Deadline deadline) {
    const xcb_atom_t stamp = atom("_BRISKO_TIME_STAMP");
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, window_, stamp, XCB_ATOM_INTEGER, 32, 0, nullptr);
    xcb_flush(connection_);
    const Event event = waitFor(
        [&](const xcb_generic_event_t& e) {
            if (eventType(e) != XCB_PROPERTY_NOTIFY) return false;
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(e);
            return notify.window == window_ && notify.atom == stamp;
        },
        deadline);
    if (!event) return std::nullopt;
    return reinterpret_cast<const xcb_property_notify_event_t*>(event.get())->time;
}

Event SelectionConnection::nextEvent(std::optional<Deadline> deadline) {
    xcb_flush(connection_);
    for (;;) {
        if (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) return Event(event);
        if (broken()) return nullptr;
        int waitMs = -1;
        if (deadline) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) return nullptr;
            waitMs = static_cast<int>(left.count());
        }
        pollfd ready{xcb_get_file_descriptor(connection_), POLLIN, 0};
        if (::poll(&ready, 1, waitMs) < 0 && errno != EINTR) return nullptr;
    }
}

Event SelectionConnection::waitFor(const std::function<bool(const xcb_generic_event_t&)>& wanted, Deadline deadline) {
    for (;;) {
        Event event = nextEvent(deadline);
        if (!event || wanted(*event)) return event;
    }
}

std::optional<PropertyValue> SelectionConnection::readProperty(xcb_window_t window, xcb_atom_t property, bool remove) {
    PropertyValue value;
    std::uint32_t offsetWords = 0;
    for (;;) {
        const auto cookie = xcb_get_property(connection_, remove ? 1 : 0, window, property, XCB_GET_PROPERTY_TYPE_ANY,
                                             offsetWords, propertyPieceWords);
        const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
        if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
        value.type = reply->type;
        value.format = reply->format;
        const auto* bytes = static_cast<const std::uint8_t*>(xcb_get_property_value(reply.get()));
        const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
        value.bytes.insert(value.bytes.end(), bytes, bytes + length);
        if (reply->bytes_after == 0) return value;
        // A piece that leaves bytes after it is whole words long.
        offsetWords += static_cast<std::uint32_t>(length / 4);
    }
}

}  // namespace brisko::platform::x11
