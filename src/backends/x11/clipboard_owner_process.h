#pragma once

#include <string>
#include <vector>

#include "backends/x11/selection_server.h"

namespace brisko::platform::x11 {

// An X selection lives only as long as its owner's connection, so contents that must outlive
// this process are handed to a process of their own: the program itself, started afresh in a
// hidden mode and given the contents on a socket. Detached from this one (its own session, no
// standard streams, nobody's child), it takes the CLIPBOARD selection and answers for it until
// another client takes the selection or the display closes, then exits.
//
// It is started, not forked: the caller may have several threads (input-stream's reader and
// player), and the child of a fork of such a process may do nothing but async-signal-safe calls
// until it execs, where serving needs xcb and the heap.
//
// Returns true once that process owns the clipboard (so that a reader who asks right after finds
// the new contents), false when it could not take it.
bool serveClipboardFromOwnerProcess(const std::string& displayName, const std::vector<SelectionOffer>& offers);

// Serves the clipboard and ends the process when this process was started as such an owner;
// returns at once otherwise.
void serveClipboardIfStartedAsOwner(int argc, char** argv);

}  // namespace brisko::platform::x11
