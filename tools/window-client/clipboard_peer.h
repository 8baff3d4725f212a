#pragma once

#include <string>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

namespace window_client {

// The client's part in the CLIPBOARD selection, written directly against the protocol and
// independent of the program under test: an owner with fixed contents, and a requestor.
class ClipboardPeer {
public:
    // Targets in the order TARGETS lists them, each with its bytes; TIMESTAMP's value is a
    // decimal number given as a 32-bit integer.
    using Targets = std::vector<std::pair<std::string, std::string>>;

    ClipboardPeer(xcb_connection_t* connection, xcb_window_t root);

    // Which requests an owner answers: all, only those for TARGETS, or none.
    enum class Answers { all, targetsOnly, none };

    // Takes the clipboard. False when it did not get it.
    bool own(Targets targets, Answers answers);
    // Gives the clipboard up as an owner's end does: it belongs to nobody afterwards.
    void disown();
    // Answers a request for the clipboard; true when the event was one for this peer.
    bool handle(const xcb_generic_event_t* event);
    // The window that owns the clipboard now, 0 for none.
    xcb_window_t owner();
    // Whether the event tells that the clipboard's owner is now another window than `was`.
    bool ownerChangedFrom(xcb_window_t was, const xcb_generic_event_t* event) const;
    // Starts asking the owner for a target; the answer comes as a SelectionNotify event, which
    // answerType reads: the type the owner labelled its answer with ("INCR" for an incremental
    // transfer), or "none" when it refused.
    void ask(const std::string& target);
    std::string answerType(const xcb_generic_event_t* event);

private:
    void answer(const xcb_selection_request_event_t& request);
    std::string atomName(xcb_atom_t atom);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    xcb_atom_t clipboard_;
    std::uint8_t ownerNotify_ = 0;  // the event code of XFIXES's selection notify, 0 without it
    xcb_window_t window_ = XCB_NONE;  // the owning window while this peer owns the clipboard
    xcb_window_t requestor_ = XCB_NONE;
    Targets targets_;
    Answers answers_ = Answers::all;
};

}  // namespace window_client
