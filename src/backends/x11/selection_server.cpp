#include "backends/x11/selection_server.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace brisko::platform::x11 {
namespace {

// How long a requestor may leave an incremental transfer without reading the next piece.
constexpr std::chrono::seconds transferPatience{5};

// How long the server may take to stamp the change of ownership.
constexpr std::chrono::seconds ownershipPatience{2};

void notifyRequestor(xcb_connection_t* connection, const xcb_selection_request_event_t& request,
                     xcb_atom_t property) {
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = property;
    // SendEvent always carries 32 bytes; the notify structure is shorter.
    std::array<char, 32> wire{};
    std::memcpy(wire.data(), &notify, sizeof notify);
    xcb_send_event(connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, wire.data());
}

}  // namespace

std::optional<xcb_timestamp_t> takeSelection(SelectionConnection& connection, xcb_atom_t selection) {
    const auto time = connection.serverTime(std::chrono::steady_clock::now() + ownershipPatience);
    if (!time) return std::nullopt;
    xcb_set_selection_owner(connection.xcb(), connection.window(), selection, *time);
    const auto cookie = xcb_get_selection_owner(connection.xcb(), selection);
    xcb_get_selection_owner_reply_t* reply = xcb_get_selection_owner_reply(connection.xcb(), cookie, nullptr);
    const bool owned = reply != nullptr && reply->owner == connection.window();
    std::free(reply);
    if (!owned) return std::nullopt;
    return time;
}

SelectionServer::SelectionServer(SelectionConnection& connection, xcb_atom_t selection, xcb_timestamp_t ownedSince,
                                 const std::vector<SelectionOffer>& offers)
    : connection_(connection), selection_(selection), ownedSince_(ownedSince) {
    for (const SelectionOffer& offer : offers) {
        served_.push_back({connection_.atom(offer.target), connection_.atom(offer.replyType), &offer.data});
    }
}

void SelectionServer::run() {
    while (!taken_ || !transfers_.empty()) {
        const Event event = connection_.nextEvent(nextGiveUp());
        if (!event) {
            if (connection_.broken()) return;
            dropStalledTransfers();
            continue;
        }
        switch (eventType(*event)) {
        case XCB_SELECTION_REQUEST:
            answer(*reinterpret_cast<const xcb_selection_request_event_t*>(event.get()));
            break;
        case XCB_SELECTION_CLEAR:
            if (reinterpret_cast<const xcb_selection_clear_event_t*>(event.get())->selection == selection_) {
                taken_ = true;
            }
            break;
        case XCB_PROPERTY_NOTIFY:
            continueTransfer(*reinterpret_cast<const xcb_property_notify_event_t*>(event.get()));
            break;
        default:
            break;
        }
    }
}

void SelectionServer::answer(const xcb_selection_request_event_t& request) {
    // Requestors from before ICCCM name no property; the target's name serves as one.
    const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
    const bool written = request.selection == selection_ && !taken_ && write(request.requestor, property, request.target);
    notifyRequestor(connection_.xcb(), request, written ? property : xcb_atom_t{XCB_ATOM_NONE});
}

bool SelectionServer::write(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t target) {
    xcb_connection_t* const c = connection_.xcb();
    if (target == connection_.atom("TARGETS")) {
        std::vector<xcb_atom_t> targets{connection_.atom("TARGETS"), connection_.atom("TIMESTAMP")};
        for (const Served& s : served_) targets.push_back(s.target);
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM, 32,
                            static_cast<std::uint32_t>(targets.size()), targets.data());
        return true;
    }
    if (target == connection_.atom("TIMESTAMP")) {
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_INTEGER, 32, 1, &ownedSince_);
        return true;
    }
    const auto found = std::find_if(served_.begin(), served_.end(), [&](const Served& s) { return s.target == target; });
    if (found == served_.end()) return false;
    if (found->data->size() > connection_.maxPropertyBytes()) {
        startTransfer(requestor, property, *found);
    } else {
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, requestor, property, found->replyType, 8,
                            static_cast<std::uint32_t>(found->data->size()), found->data->data());
    }
    return true;
}

void SelectionServer::startTransfer(xcb_window_t requestor, xcb_atom_t property, const Served& served) {
    // The requestor's deletions of the property pace the transfer; watch for them before the
    // requestor can learn that the transfer began.
    const std::uint32_t watch = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.xcb(), requestor, XCB_CW_EVENT_MASK, &watch);
    const auto total = static_cast<std::uint32_t>(std::min<std::size_t>(served.data->size(), UINT32_MAX));
    xcb_change_property(connection_.xcb(), XCB_PROP_MODE_REPLACE, requestor, property, connection_.atom("INCR"), 32,
                        1, &total);
    // A requestor that asks again into the same property has given up on the earlier transfer.
    std::erase_if(transfers_, [&](const Transfer& t) { return t.requestor == requestor && t.property == property; });
    transfers_.push_back(
        {requestor, property, served.replyType, served.data, 0, std::chrono::steady_clock::now() + transferPatience});
}

void SelectionServer::continueTransfer(const xcb_property_notify_event_t& notify) {
    if (notify.state != XCB_PROPERTY_DELETE) return;
    const auto found = std::find_if(transfers_.begin(), transfers_.end(), [&](const Transfer& t) {
        return t.requestor == notify.window && t.property == notify.atom;
    });
    if (found == transfers_.end()) return;
    // The requestor has taken the previous piece (the INCR announcement at first); an empty
    // piece after the last one ends the transfer.
    const std::size_t piece = std::min(found->data->size() - found->sent, connection_.maxPropertyBytes());
    xcb_change_property(connection_.xcb(), XCB_PROP_MODE_REPLACE, found->requestor, found->property, found->replyType,
                        8, static_cast<std::uint32_t>(piece), found->data->data() + found->sent);
    if (piece == 0) {
        const xcb_window_t requestor = found->requestor;
        transfers_.erase(found);
        stopWatching(requestor);
        return;
    }
    found->sent += piece;
    found->giveUpAt = std::chrono::steady_clock::now() + transferPatience;
}

void SelectionServer::stopWatching(xcb_window_t requestor) {
    const bool stillUsed =
        std::any_of(transfers_.begin(), transfers_.end(), [&](const Transfer& t) { return t.requestor == requestor; });
    if (stillUsed) return;
    const std::uint32_t none = XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.xcb(), requestor, XCB_CW_EVENT_MASK, &none);
}

void SelectionServer::dropStalledTransfers() {
    const auto now = std::chrono::steady_clock::now();
    std::vector<xcb_window_t> dropped;
    std::erase_if(transfers_, [&](const Transfer& t) {
        if (t.giveUpAt > now) return false;
        dropped.push_back(t.requestor);
        return true;
    });
    for (const xcb_window_t requestor : dropped) stopWatching(requestor);
}

std::optional<Deadline> SelectionServer::nextGiveUp() const {
    if (transfers_.empty()) return std::nullopt;
    return std::min_element(transfers_.begin(), transfers_.end(), [](const Transfer& a, const Transfer& b) {
               return a.giveUpAt < b.giveUpAt;
           })->giveUpAt;
}

}  // namespace brisko::platform::x11
