#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "capture/exclusion_plan.h"
#include "platform/capture_frame.h"
#include "platform/geometry.h"
#include "backends/x11/x11_shm_image.h"

namespace brisko::platform::x11 {

// Pictures of one display of an X server with the windows of some processes left out. The
// server's picture of the display is taken as it is; where a left-out window lies, the screen
// is drawn afresh from the other windows' own contents (Composite keeps every top-level window's
// contents in a pixmap of its own, also where others cover it), bottom to top, over the root
// window's background. Only that area costs more than one read.
class FrameComposer {
public:
    FrameComposer(xcb_connection_t* connection, const xcb_screen_t& screen, PixelRect display);

    // Checks that the server's pixels can be read and redirects the top-level windows (for as
    // long as the connection lasts); the reason when the display cannot be captured.
    std::optional<std::string> prepare();

    // A picture of the display; absent when the server would not give the display's pixels. The
    // view stays valid until the next call.
    std::optional<BgraFrameView> compose(const std::set<std::int32_t>& excludedPids, bool withCursor);

    // The top-level windows must be listed again: something was mapped, moved, restacked, ...
    void windowsChanged() { stack_.reset(); }
    // Where the pointer was when the last cursor was drawn.
    std::optional<std::pair<std::int32_t, std::int32_t>> lastPointer() const { return lastPointer_; }
    // True when the composer found a left-out window on the display at the last picture.
    bool hadHoles() const { return hadHoles_; }

private:
    struct Stacked {
        xcb_window_t window = XCB_NONE;
        PixelRect bounds;
        std::optional<std::int32_t> pid;
    };

    const std::vector<Stacked>& stack();
    void drawHole(std::uint8_t* frame, const ExclusionHole& hole, const std::vector<Stacked>& windows);
    void fillBackground(std::uint8_t* frame, const PixelRect& area);
    void copyIn(std::uint8_t* frame, const std::uint8_t* pixels, const PixelRect& area);
    void drawCursor(std::uint8_t* frame);
    xcb_pixmap_t wallpaper();

    xcb_connection_t* connection_;
    const xcb_screen_t& screen_;
    const PixelRect display_;
    bool composite_ = false;
    bool xfixes_ = false;
    xcb_atom_t wmState_ = XCB_NONE;
    std::vector<xcb_atom_t> wallpaperAtoms_;
    std::unique_ptr<ShmImage> frame_;
    std::unique_ptr<ShmImage> scratch_;
    std::optional<std::vector<Stacked>> stack_;
    std::optional<std::pair<std::int32_t, std::int32_t>> lastPointer_;
    bool hadHoles_ = false;
};

// X scales nothing: a display is captured at its own size. Why the size asked for cannot be
// given, or nothing when it is the display's.
std::optional<std::string> unavailableSize(const PixelRect& display, PixelSize size);

}  // namespace brisko::platform::x11
