#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "backends/x11/selection_connection.h"

namespace brisko::platform::x11 {

// One form in which the owner hands out its contents: asked for `target`, it answers with
// `data` labelled `replyType`.
struct SelectionOffer {
    std::string target;
    std::string replyType;
    std::vector<std::uint8_t> data;
    bool operator==(const SelectionOffer&) const = default;
};

// Makes the connection's window the owner of the selection. Returns the time of the change,
// absent when the server did not make the window the owner.
std::optional<xcb_timestamp_t> takeSelection(SelectionConnection& connection, xcb_atom_t selection);

// Answers requests for a selection the connection's window owns: TARGETS, TIMESTAMP and the
// offers, each in one piece when it fits one request and incrementally (INCR) otherwise.
// run() returns once another client has taken the selection and every transfer under way has
// ended, or when the connection to the server broke.
class SelectionServer {
public:
    SelectionServer(SelectionConnection& connection, xcb_atom_t selection, xcb_timestamp_t ownedSince,
                    const std::vector<SelectionOffer>& offers);
    void run();

private:
    struct Served {
        xcb_atom_t target;
        xcb_atom_t replyType;
        const std::vector<std::uint8_t>* data;
    };
    struct Transfer {
        xcb_window_t requestor;
        xcb_atom_t property;
        xcb_atom_t replyType;
        const std::vector<std::uint8_t>* data;
        std::size_t sent = 0;
        Deadline giveUpAt;
    };

    void answer(const xcb_selection_request_event_t& request);
    bool write(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t target);
    void startTransfer(xcb_window_t requestor, xcb_atom_t property, const Served& served);
    void continueTransfer(const xcb_property_notify_event_t& notify);
    void stopWatching(xcb_window_t requestor);
    void dropStalledTransfers();
    std::optional<Deadline> nextGiveUp() const;

    SelectionConnection& connection_;
    xcb_atom_t selection_;
    xcb_timestamp_t ownedSince_;
    std::vector<Served> served_;
    std::vector<Transfer> transfers_;
    bool taken_ = false;
};

}  // namespace brisko::platform::x11
