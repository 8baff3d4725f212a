#include "backends/x11/x11_window_server.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <set>
#include <string_view>
#include <system_error>

#include <xcb/shape.h>

#include "backends/x11/x11_application_ids.h"
#include "backends/x11/x11_atoms.h"
#include "backends/x11/x11_monitors.h"
#include "backends/x11/x11_owner_pids.h"
#include "backends/x11/x11_property.h"
#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {
namespace {

// _NET_WM_WINDOW_OPACITY spans the whole 32-bit range from transparent to opaque.
constexpr double opaqueValue = std::numeric_limits<std::uint32_t>::max();

// Alpha answers "would this window take a press?". X gives a press to a window whatever its
// opacity, so only a window that takes no input at all is transparent to the guard; a fully
// transparent window that takes input reports the least opacity there is, not zero.
double alphaOf(const X11WindowServer::WindowFacts& facts) {
    if (!facts.takesInput) return 0.0;
    if (!facts.opacity) return 1.0;
    return std::max(*facts.opacity, std::uint32_t{1}) / opaqueValue;
}

// Whether a window's input region (SHAPE) is empty, for each window; false for all when the
// server has no SHAPE extension, since then every window takes input over its whole extent.
std::vector<bool> inputRegionsEmpty(xcb_connection_t* connection, const std::vector<xcb_window_t>& windows) {
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(connection, &xcb_shape_id);
    if (!shape || !shape->present) return std::vector<bool>(windows.size(), false);
    std::vector<xcb_shape_get_rectangles_cookie_t> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t w : windows) cookies.push_back(xcb_shape_get_rectangles(connection, w, XCB_SHAPE_SK_INPUT));
    std::vector<bool> empty;
    empty.reserve(windows.size());
    for (const auto cookie : cookies) {
        const XcbReply<xcb_shape_get_rectangles_reply_t> reply(
            xcb_shape_get_rectangles_reply(connection, cookie, nullptr));
        empty.push_back(reply && reply->rectangles_len == 0);
    }
    return empty;
}

}  // namespace

const X11WindowServer::Atoms& X11WindowServer::atoms(xcb_connection_t* connection) {
    std::call_once(interned_, [&] {
        std::vector<std::string_view> names = {"WM_STATE",          "_NET_WM_WINDOW_TYPE",    "_NET_WM_STATE",
                                               "_NET_WM_STATE_ABOVE", "_NET_WM_WINDOW_OPACITY", "_GTK_APPLICATION_ID"};
        for (const auto& [name, kind] : windowTypeKinds()) names.push_back(name);
        const std::vector<xcb_atom_t> interned = internAtoms(connection, names);
        atoms_.wmState = interned[0];
        atoms_.windowType = interned[1];
        atoms_.state = interned[2];
        atoms_.stateAbove = interned[3];
        atoms_.opacity = interned[4];
        atoms_.gtkApplicationId = interned[5];
        for (std::size_t i = 0; i < windowTypeKinds().size(); ++i) {
            atoms_.kinds.emplace(interned[6 + i], windowTypeKinds()[i].second);
        }
    });
    return atoms_;
}

std::vector<X11WindowServer::OwnedWindow> X11WindowServer::ownedWindows(xcb_connection_t* connection, Mapped which) {
    const std::vector<TopLevelWindow> windows =
        topLevelWindows(connection, connection_.root(), atoms(connection).wmState, which);
    std::vector<xcb_window_t> clients;
    clients.reserve(windows.size());
    for (const auto& w : windows) clients.push_back(w.client);
    const auto pids = ownerPids(connection, clients);
    std::vector<OwnedWindow> owned;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (pids[i]) owned.push_back({windows[i], *pids[i]});
    }
    // Windows of other machines' clients have no local owner on any server; that is not news.
    unknownOwners_ = owned.size() < windows.size() && !serverKnowsOwners(connection);
    return owned;
}

std::vector<X11WindowServer::WindowFacts> X11WindowServer::readFacts(xcb_connection_t* connection,
                                                                        const std::vector<OwnedWindow>& owned) {
    const Atoms& a = atoms(connection);
    struct Requests {
        xcb_get_property_cookie_t types, states, clientOpacity, frameOpacity;
    };
    std::vector<Requests> requests;
    // The top-level's input region decides: the server looks for a window under a press only
    // within it, and a window manager's frame takes what its client lets through.
    std::vector<xcb_window_t> frames;
    for (const auto& [w, pid] : owned) {
        requests.push_back({requestProperty(connection, w.client, a.windowType, XCB_ATOM_ATOM),
                            requestProperty(connection, w.client, a.state, XCB_ATOM_ATOM),
                            requestProperty(connection, w.client, a.opacity, XCB_ATOM_CARDINAL),
                            requestProperty(connection, w.frame, a.opacity, XCB_ATOM_CARDINAL)});
        frames.push_back(w.frame);
    }
    std::vector<WindowFacts> facts;
    for (const auto& r : requests) {
        WindowFacts f;
        const auto types = cardinalsIn(propertyReply(connection, r.types).get());
        const auto known = std::find_if(types.begin(), types.end(), [&](auto t) { return a.kinds.contains(t); });
        if (known != types.end()) f.kind = a.kinds.at(*known);
        const auto states = cardinalsIn(propertyReply(connection, r.states).get());
        f.keptAbove = std::find(states.begin(), states.end(), a.stateAbove) != states.end();
        // Compositing window managers copy the client's opacity to their frame.
        const auto clientOpacity = cardinalIn(propertyReply(connection, r.clientOpacity).get());
        const auto frameOpacity = cardinalIn(propertyReply(connection, r.frameOpacity).get());
        f.opacity = clientOpacity ? clientOpacity : frameOpacity;
        facts.push_back(f);
    }
    const std::vector<bool> empty = inputRegionsEmpty(connection, frames);
    for (std::size_t i = 0; i < facts.size(); ++i) facts[i].takesInput = !empty[i];
    return facts;
}

std::vector<ScreenWindow> X11WindowServer::onScreenWindows() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return {};
    const std::vector<OwnedWindow> owned = ownedWindows(connection, Mapped::viewableOnly);
    ownerless_ = unknownOwners_ ? std::optional<std::string>(
                                      "the X server has no X-Resource extension, and they set no _NET_WM_PID")
                                : std::nullopt;
    const std::vector<WindowFacts> facts = readFacts(connection, owned);
    // Bounds count from the main display's corner, as points do.
    const Rect main = mainDisplayBounds(connection, connection_.screen());
    std::vector<ScreenWindow> list;
    for (std::size_t i = 0; i < owned.size(); ++i) {
        const auto& [w, pid] = owned[i];
        const WindowFacts& f = facts[i];
        if (f.kind == WindowKind::desktop) continue;  // the desktop is no window of an application
        const std::int64_t layer = windowLayer(f.kind, f.keptAbove, w.overrideRedirect, popUpMenuLayer());
        const Rect bounds{w.bounds.x - main.x, w.bounds.y - main.y, w.bounds.width, w.bounds.height};
        list.push_back({w.client, pid, bounds, alphaOf(f), layer});
    }
    return list;
}

std::optional<std::uint32_t> X11WindowServer::keyboardFocusWindow() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return std::nullopt;
    const xcb_window_t root = connection_.root();
    const XcbReply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    if (!focus || focus->focus == XCB_NONE) return XCB_NONE;
    xcb_window_t topLevel = focus->focus;
    if (topLevel == XCB_INPUT_FOCUS_POINTER_ROOT || topLevel == root) {
        const XcbReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(connection, xcb_query_pointer(connection, root), nullptr));
        if (!pointer || !pointer->same_screen || pointer->child == XCB_NONE) return XCB_NONE;
        topLevel = pointer->child;
    }
    for (;;) {
        const XcbReply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(connection, xcb_query_tree(connection, topLevel), nullptr));
        if (!tree) return XCB_NONE;
        if (tree->parent == root || tree->parent == XCB_NONE) break;
        topLevel = tree->parent;
    }
    // Named as the inventory names it: the client window in a window manager's frame.
    for (const TopLevelWindow& w : topLevelWindows(connection, root, atoms(connection).wmState, Mapped::viewableOnly)) {
        if (w.frame == topLevel) return w.client;
    }
    return topLevel;
}

std::optional<std::string> X11WindowServer::executablePath(std::int32_t pid) {
    std::error_code error;
    std::string path = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error).string();
    if (error || path.empty()) return std::nullopt;
    // The kernel marks an executable that was replaced or removed since the process started.
    constexpr std::string_view deleted = " (deleted)";
    if (path.ends_with(deleted) && !std::filesystem::exists(path, error)) path.resize(path.size() - deleted.size());
    return path;
}

std::optional<std::string> X11WindowServer::bundleIdentifier(std::int32_t pid) {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return std::nullopt;
    std::vector<xcb_window_t> windows;
    for (const auto& [w, owner] : ownedWindows(connection, Mapped::any)) {
        if (owner == pid) windows.push_back(w.client);
    }
    return applicationId(applicationIdHints(connection, atoms(connection).gtkApplicationId, windows));
}

std::vector<CaptureApplication> X11WindowServer::applications() {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return {};
    const std::vector<OwnedWindow> owned = ownedWindows(connection, Mapped::any);
    std::vector<xcb_window_t> clients;
    for (const auto& [w, pid] : owned) clients.push_back(w.client);
    const auto hints = applicationIdHints(connection, atoms(connection).gtkApplicationId, clients);

    std::vector<std::int32_t> order;
    std::map<std::int32_t, std::vector<ApplicationIdHints>> byPid;
    for (std::size_t i = 0; i < owned.size(); ++i) {
        auto& mine = byPid[owned[i].pid];
        if (mine.empty()) order.push_back(owned[i].pid);
        mine.push_back(hints[i]);
    }
    std::vector<CaptureApplication> applications;
    for (const std::int32_t pid : order) {
        applications.push_back({pid, applicationId(byPid[pid]).value_or("")});
    }
    return applications;
}

}  // namespace brisko::platform::x11
