#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "backends/x11/selection_server.h"

namespace brisko::platform::x11 {

// An X selection lives only as long as its owner's connection, so contents that must outlive
// this process are handed to a process of their own: detached from this one (its own session,
// no standard streams, not this process's child), it takes the selection with the offers and
// answers for it until another client takes the selection, then exits.
//
// Returns true once that process owns the selection (so a reader that asks right after finds
// the new contents), false when it could not take it. `whenOwned` runs in that process once it
// owns the selection, before this call returns.
bool serveFromDetachedProcess(const std::string& displayName, std::string_view selection,
                              const std::vector<SelectionOffer>& offers,
                              const std::function<void(SelectionConnection&, xcb_timestamp_t)>& whenOwned);

}  // namespace brisko::platform::x11
