#pragma once

#include <cstdint>
#include <optional>

#include <xcb/xcb.h>

#include "platform/geometry.h"
#include "backends/x11/x11_shm_image.h"

namespace brisko::platform::x11 {

// The root window's own background (a colour or a tile), which the server paints where no window
// covers the root and keeps nowhere else. It is read through a window of ours that shows it: its
// background is its parent's, the root's, aligned as the root's; it lies under every other
// window, takes no input, and the server never puts it on the screen (Composite keeps its
// contents aside for a compositing manager, which we are the only client to be). So it changes
// nothing anyone sees or clicks, and only needs a server without a compositing manager.
class RootBackground {
public:
    RootBackground(xcb_connection_t* connection, const xcb_screen_t& screen);
    ~RootBackground();
    RootBackground(const RootBackground&) = delete;
    RootBackground& operator=(const RootBackground&) = delete;

    // The background's pixels over the area (root coordinates), rows packed, read with `image`;
    // null when they cannot be read. `within` is where reads will be asked for now: the window
    // covers it.
    const std::uint8_t* read(ShmImage& image, const PixelRect& area, const PixelRect& within);
    // Our window, which the listings of top-level windows leave out; none until the first read.
    xcb_window_t window() const { return window_; }

private:
    bool cover(const PixelRect& within);

    xcb_connection_t* connection_;
    const xcb_screen_t& screen_;
    xcb_window_t window_ = XCB_NONE;
    PixelRect bounds_;
    bool usable_ = true;
};

}  // namespace brisko::platform::x11
