#include "backends/x11/x11_top_level_windows.h"

#include <algorithm>
#include <cstdint>

#include "backends/x11/x11_property.h"
#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {
namespace {

// Window managers put the client at most a couple of levels below their frame; looking deeper
// would only walk the insides of applications that have no manager around them.
constexpr int maxClientDepth = 3;

std::vector<xcb_window_t> children(xcb_connection_t* connection, xcb_query_tree_cookie_t cookie) {
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection, cookie, nullptr));
    if (!tree) return {};
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

// The part of a resource id that names the client which created it: every client's ids share a
// base of their own within the bits outside the server's resource id mask.
std::uint32_t creatorOf(xcb_connection_t* connection, xcb_window_t window) {
    return window & ~xcb_get_setup(connection)->resource_id_mask;
}

// Whether a window manager runs: it is the one client that redirects the root's map requests.
bool windowManagerRuns(xcb_connection_t* connection, xcb_get_window_attributes_cookie_t rootAttributes) {
    const XcbReply<xcb_get_window_attributes_reply_t> root(
        xcb_get_window_attributes_reply(connection, rootAttributes, nullptr));
    return root && (root->all_event_masks & XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT) != 0;
}

// The client window inside each top-level that has no WM_STATE of its own: the first window below
// it that has one, searched level by level (as X clients have always found the client window).
// While a window manager runs, a frame whose client has no WM_STATE yet (the manager decorates
// it before it marks it managed) holds the client all the same: the first window below it that
// another client created. Every level of every frame is one batch of requests.
void findClients(xcb_connection_t* connection, xcb_atom_t wmState, bool managed, std::vector<TopLevelWindow*> frames) {
    struct Search {
        TopLevelWindow* window;
        std::vector<xcb_window_t> level;
        xcb_window_t foreign = XCB_NONE;  // the first window of another client below the frame
    };
    std::vector<Search> pending;
    for (TopLevelWindow* frame : frames) pending.push_back({frame, {frame->frame}});
    std::vector<Search> exhausted;
    for (int depth = 0; depth < maxClientDepth && !pending.empty(); ++depth) {
        std::vector<std::vector<xcb_query_tree_cookie_t>> trees(pending.size());
        for (std::size_t i = 0; i < pending.size(); ++i) {
            for (const xcb_window_t w : pending[i].level) trees[i].push_back(xcb_query_tree(connection, w));
        }
        std::vector<std::vector<xcb_window_t>> next(pending.size());
        std::vector<std::vector<xcb_get_property_cookie_t>> states(pending.size());
        for (std::size_t i = 0; i < pending.size(); ++i) {
            for (const auto cookie : trees[i]) {
                for (const xcb_window_t child : children(connection, cookie)) {
                    next[i].push_back(child);
                    states[i].push_back(requestProperty(connection, child, wmState));
                }
            }
        }
        std::vector<Search> stillPending;
        for (std::size_t i = 0; i < pending.size(); ++i) {
            Search& search = pending[i];
            xcb_window_t found = XCB_NONE;
            for (std::size_t k = 0; k < states[i].size(); ++k) {
                const auto reply = propertyReply(connection, states[i][k]);
                if (found == XCB_NONE && propertyPresent(reply.get())) found = next[i][k];
                if (search.foreign == XCB_NONE &&
                    creatorOf(connection, next[i][k]) != creatorOf(connection, search.window->frame)) {
                    search.foreign = next[i][k];
                }
            }
            if (found != XCB_NONE) {
                search.window->client = found;
            } else if (!next[i].empty()) {
                search.level = std::move(next[i]);
                stillPending.push_back(std::move(search));
            } else {
                exhausted.push_back(std::move(search));
            }
        }
        pending = std::move(stillPending);
    }
    if (!managed) return;
    for (const auto* searches : {&pending, &exhausted}) {
        for (const Search& search : *searches) {
            if (search.foreign != XCB_NONE) search.window->client = search.foreign;
        }
    }
}

}  // namespace

std::vector<TopLevelWindow> topLevelWindows(xcb_connection_t* connection, xcb_window_t root, xcb_atom_t wmState,
                                            Mapped which) {
    std::vector<xcb_window_t> stack = children(connection, xcb_query_tree(connection, root));
    std::reverse(stack.begin(), stack.end());  // the server lists them bottom to top

    struct Pending {
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_geometry_cookie_t geometry;
        xcb_get_property_cookie_t state;
    };
    const xcb_get_window_attributes_cookie_t rootAttributes = xcb_get_window_attributes(connection, root);
    std::vector<Pending> requests;
    requests.reserve(stack.size());
    for (const xcb_window_t w : stack) {
        requests.push_back({xcb_get_window_attributes(connection, w), xcb_get_geometry(connection, w),
                            requestProperty(connection, w, wmState)});
    }
    const bool managed = windowManagerRuns(connection, rootAttributes);
    std::vector<TopLevelWindow> windows;
    std::vector<bool> hasState;
    for (std::size_t i = 0; i < stack.size(); ++i) {
        const XcbReply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(connection, requests[i].attributes, nullptr));
        const XcbReply<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(connection, requests[i].geometry, nullptr));
        const auto state = propertyReply(connection, requests[i].state);
        if (!attributes || !geometry || attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY) continue;
        const bool viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
        if (which == Mapped::viewableOnly && !viewable) continue;
        const double border = 2.0 * geometry->border_width;
        windows.push_back({stack[i], stack[i],
                           Rect{double(geometry->x), double(geometry->y), geometry->width + border,
                                geometry->height + border},
                           viewable, attributes->override_redirect != 0});
        hasState.push_back(propertyPresent(state.get()));
    }
    std::vector<TopLevelWindow*> frames;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (!hasState[i]) frames.push_back(&windows[i]);
    }
    findClients(connection, wmState, managed, std::move(frames));
    return windows;
}

}  // namespace brisko::platform::x11
