#pragma once

#include <mutex>
#include <string>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// The one connection of the process to the X server named by DISPLAY, opened on first use so that
// commands that need no display work without one.
class X11Connection {
public:
    X11Connection() = default;
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    // The open connection, or nullptr when the display cannot be opened or the connection broke.
    xcb_connection_t* get();
    // The root window of the default screen; only meaningful once get() has succeeded.
    xcb_window_t root() const { return root_; }
    const xcb_screen_t* screen() const { return screen_; }
    // Why get() returned nullptr.
    std::string failure() const;

private:
    void open();

    std::once_flag opened_;
    xcb_connection_t* connection_ = nullptr;
    const xcb_screen_t* screen_ = nullptr;
    xcb_window_t root_ = XCB_NONE;
};

}  // namespace brisko::platform::x11
