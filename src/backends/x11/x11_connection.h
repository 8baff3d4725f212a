#pragma once

#include <cstdlib>
#include <memory>
#include <mutex>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// Replies and other buffers that xcb hands over are released with free().
struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using XcbReply = std::unique_ptr<T, FreeDeleter>;

// The one connection to the X server that the X services of the process share. It is opened on
// first use, to the display named the usual X way (xcb reads DISPLAY), so that commands that need
// no display never touch one. Safe to use from several threads, as xcb itself is.
class X11Connection {
public:
    X11Connection() = default;
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    // The open connection; null when the server cannot be reached or the connection has broken.
    xcb_connection_t* get();
    // The screen named by the display; only meaningful once get() has returned a connection.
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }
    // True when the server offers the extension (asked once, then cached by xcb).
    bool hasExtension(xcb_extension_t& extension);
    // Waits until the server has handled every request sent so far: the events they generated
    // have reached their clients' queues. False when the connection has broken.
    bool sync();

private:
    void open();

    std::once_flag opened_;
    xcb_connection_t* connection_ = nullptr;
    const xcb_screen_t* screen_ = nullptr;
};

}  // namespace brisko::platform::x11
