#include "clipboard_peer.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <xcb/xfixes.h>

#include "window_request.h"

namespace window_client {
namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* p) {
    return {p, &std::free};
}

xcb_window_t inputOnlyWindow(xcb_connection_t* c, xcb_window_t root) {
    const xcb_window_t w = xcb_generate_id(c);
    xcb_create_window(c, 0, w, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    return w;
}

}  // namespace

ClipboardPeer::ClipboardPeer(xcb_connection_t* connection, xcb_window_t root)
    : connection_(connection), root_(root), clipboard_(atomNamed(connection, "CLIPBOARD")) {
    // Every change of the clipboard's owner is announced to the client.
    const auto version =
        owned(xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 5, 0), nullptr));
    if (!version) return;
    xcb_xfixes_select_selection_input(connection, root, clipboard_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    ownerNotify_ = xcb_get_extension_data(connection, &xcb_xfixes_id)->first_event + XCB_XFIXES_SELECTION_NOTIFY;
}

bool ClipboardPeer::ownerChangedFrom(xcb_window_t was, const xcb_generic_event_t* event) const {
    if (ownerNotify_ == 0 || (event->response_type & 0x7F) != ownerNotify_) return false;
    return reinterpret_cast<const xcb_xfixes_selection_notify_event_t*>(event)->owner != was;
}

bool ClipboardPeer::own(Targets targets, Answers answers) {
    disown();
    targets_ = std::move(targets);
    answers_ = answers;
    window_ = inputOnlyWindow(connection_, root_);
    xcb_set_selection_owner(connection_, window_, clipboard_, XCB_CURRENT_TIME);
    return owner() == window_;
}

void ClipboardPeer::disown() {
    if (window_ == XCB_NONE) return;
    xcb_destroy_window(connection_, window_);
    window_ = XCB_NONE;
    roundTrip(connection_);
}

xcb_window_t ClipboardPeer::owner() {
    const auto reply =
        owned(xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, clipboard_), nullptr));
    return reply ? reply->owner : xcb_window_t{XCB_NONE};
}

std::string ClipboardPeer::atomName(xcb_atom_t atom) {
    const auto reply = owned(xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

bool ClipboardPeer::handle(const xcb_generic_event_t* event) {
    const std::uint8_t type = event->response_type & 0x7F;
    if (type == XCB_SELECTION_CLEAR &&
        reinterpret_cast<const xcb_selection_clear_event_t*>(event)->owner == window_) {
        // Another client took the clipboard.
        xcb_destroy_window(connection_, window_);
        window_ = XCB_NONE;
        return true;
    }
    if (type != XCB_SELECTION_REQUEST) return false;
    const auto& request = *reinterpret_cast<const xcb_selection_request_event_t*>(event);
    if (request.owner != window_ || window_ == XCB_NONE) return false;
    if (answers_ == Answers::all || (answers_ == Answers::targetsOnly && atomName(request.target) == "TARGETS")) {
        answer(request);
    }
    return true;
}

void ClipboardPeer::answer(const xcb_selection_request_event_t& request) {
    const std::string wanted = atomName(request.target);
    xcb_atom_t property = XCB_ATOM_NONE;
    if (wanted == "TARGETS") {
        std::vector<xcb_atom_t> list{request.target};
        for (const auto& target : targets_) list.push_back(atomNamed(connection_, target.first));
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_ATOM, 32,
                            static_cast<std::uint32_t>(list.size()), list.data());
        property = request.property;
    }
    for (const auto& [name, value] : targets_) {
        if (name != wanted) continue;
        if (name == "TIMESTAMP") {
            const auto time = static_cast<std::uint32_t>(std::stoul(value));
            xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                XCB_ATOM_INTEGER, 32, 1, &time);
        } else {
            xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                request.target, 8, static_cast<std::uint32_t>(value.size()), value.data());
        }
        property = request.property;
    }
    const xcb_selection_notify_event_t notify{XCB_SELECTION_NOTIFY, 0, 0,        request.time, request.requestor,
                                             request.selection,    request.target, property};
    std::array<char, 32> wire{};  // an event is sent as 32 bytes
    std::memcpy(wire.data(), &notify, sizeof notify);
    xcb_send_event(connection_, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, wire.data());
}

void ClipboardPeer::ask(const std::string& target) {
    if (requestor_ == XCB_NONE) requestor_ = inputOnlyWindow(connection_, root_);
    xcb_convert_selection(connection_, requestor_, clipboard_, atomNamed(connection_, target),
                          atomNamed(connection_, "ANSWER"), XCB_CURRENT_TIME);
}

std::string ClipboardPeer::answerType(const xcb_generic_event_t* event) {
    const auto& notify = *reinterpret_cast<const xcb_selection_notify_event_t*>(event);
    if (notify.property == XCB_ATOM_NONE) return "none";
    const auto reply = owned(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, requestor_, notify.property, XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
        nullptr));
    return reply ? atomName(reply->type) : "none";
}

}  // namespace window_client
