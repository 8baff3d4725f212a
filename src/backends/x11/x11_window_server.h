#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "platform/screen_capture.h"
#include "platform/window_server.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_top_level_windows.h"
#include "backends/x11/x11_window_level.h"

namespace brisko::platform::x11 {

// The window inventory of an X server: top-level windows in stacking order, their owners from
// the server's own records, and the application ids those owners advertise.
class X11WindowServer final : public WindowServer {
public:
    explicit X11WindowServer(X11Connection& connection) : connection_(connection) {}

    std::vector<ScreenWindow> onScreenWindows() override;
    std::optional<std::string> executablePath(std::int32_t pid) override;
    std::optional<std::string> bundleIdentifier(std::int32_t pid) override;
    // X has no level of its own for open menus; they are reported at the macOS value.
    std::int64_t popUpMenuLayer() override { return 101; }
    // The top-level window that holds the input focus, or with the focus on the root (or following
    // the pointer) the one under the pointer: key events go there or into it.
    std::optional<std::uint32_t> keyboardFocusWindow() override;
    std::optional<std::string> ownerlessWindows() override { return ownerless_; }

    // Every process that owns a top-level window, mapped or not, once each, in the order of its
    // frontmost window, with the application id it advertises (empty when none).
    std::vector<CaptureApplication> applications();

    // Everything the inventory reads about one window, besides its place and owner.
    struct WindowFacts {
        std::optional<WindowKind> kind;        // absent: no type it knows
        bool keptAbove = false;                // _NET_WM_STATE_ABOVE
        std::optional<std::uint32_t> opacity;  // _NET_WM_WINDOW_OPACITY of the client, else of its frame
        bool takesInput = true;                // the top-level's input region is not empty
    };

private:
    struct Atoms {
        xcb_atom_t wmState = XCB_NONE;
        xcb_atom_t windowType = XCB_NONE;
        xcb_atom_t state = XCB_NONE;
        xcb_atom_t stateAbove = XCB_NONE;
        xcb_atom_t opacity = XCB_NONE;
        xcb_atom_t gtkApplicationId = XCB_NONE;
        std::map<xcb_atom_t, WindowKind> kinds;
    };
    struct OwnedWindow {
        TopLevelWindow window;
        std::int32_t pid = 0;
    };

    const Atoms& atoms(xcb_connection_t* connection);
    // Top-level windows whose owner the server knows, front to back.
    std::vector<OwnedWindow> ownedWindows(xcb_connection_t* connection, Mapped which);
    // One batch of requests for all the windows.
    std::vector<WindowFacts> readFacts(xcb_connection_t* connection, const std::vector<OwnedWindow>& owned);

    X11Connection& connection_;
    std::once_flag interned_;
    Atoms atoms_;
    bool unknownOwners_ = false;  // the last ownedWindows left some out, the server knowing no owners
    std::optional<std::string> ownerless_;
};

}  // namespace brisko::platform::x11
