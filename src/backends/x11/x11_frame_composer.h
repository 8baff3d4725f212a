#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "capture/exclusion_plan.h"
#include "capture/frame_read_plan.h"
#include "platform/capture_frame.h"
#include "platform/geometry.h"
#include "backends/x11/x11_root_background.h"
#include "backends/x11/x11_shm_image.h"
#include "backends/x11/x11_top_level_windows.h"

namespace brisko::platform::x11 {

// Pictures of one display of an X server with the windows of some processes left out. The
// server's picture of the display is taken as it is; where a left-out window lies, the screen
// is drawn afresh from the other windows' own contents (Composite keeps every top-level window's
// contents in a pixmap of its own, also where others cover it), bottom to top, over the root
// window's background. Only that area costs more than one read. The last picture is kept, so
// that the next one reads only where the server says it drew meanwhile.
class FrameComposer {
public:
    FrameComposer(xcb_connection_t* connection, const xcb_screen_t& screen, PixelRect display);

    // Checks that the server's pixels can be read and redirects the top-level windows (for as
    // long as the connection lasts); the reason when the display cannot be captured.
    std::optional<std::string> prepare();

    // A picture of the display; absent when the server would not give the display's pixels. The
    // view stays valid until the next call. damage: where the server drew since the last call, in
    // root coordinates (absent: unknown, which reads the whole display). The view says where the
    // picture may differ from the last one when it was not read whole.
    std::optional<BgraFrameView> compose(const std::set<std::int32_t>& excludedPids, bool withCursor,
                                         const std::optional<std::vector<PixelRect>>& damage = std::nullopt);

    // The top-level windows must be listed again: something was mapped, moved, restacked, ...
    void windowsChanged() { stack_.reset(); }
    // Where the pointer was when the last cursor was drawn.
    std::optional<std::pair<std::int32_t, std::int32_t>> lastPointer() const { return lastPointer_; }
    // True when the composer found a left-out window on the display at the last picture.
    bool hadHoles() const { return hadHoles_; }
    // The window the composer keeps on the server, if any (see RootBackground).
    xcb_window_t ownWindow() const { return rootBackground_ ? rootBackground_->window() : XCB_NONE; }

private:
    struct Stacked {
        xcb_window_t window = XCB_NONE;
        PixelRect bounds;
        std::optional<std::int32_t> pid;
        std::vector<PixelRect> shape;
        bool translucent = false;
    };
    struct WindowLook {
        std::vector<PixelRect> shape;
        bool alpha = false;
    };

    const std::vector<Stacked>& stack();
    std::vector<WindowLook> lookOf(const std::vector<TopLevelWindow>& windows);
    bool compositingManagerRuns();
    std::vector<ExclusionHole> holes(const std::set<std::int32_t>& excludedPids);
    std::optional<FrameReadPlan> readServerPixels(const std::optional<std::vector<PixelRect>>& damage, bool layoutChanged);
    void restoreUnderCursor(std::uint8_t* frame);
    // holes: around every hole of this picture.
    void drawHole(std::uint8_t* frame, const ExclusionHole& hole, const std::vector<Stacked>& windows,
                  const PixelRect& holes);
    void fillBackground(std::uint8_t* frame, const PixelRect& area, const PixelRect& holes);
    void copyIn(std::uint8_t* frame, const std::uint8_t* pixels, const PixelRect& area, bool blend = false);
    // Where it drew the pointer, in the display's pixels, keeping what lay there; nothing when it
    // drew none.
    std::optional<PixelRect> drawCursor(std::uint8_t* frame);
    xcb_pixmap_t wallpaper();

    xcb_connection_t* connection_;
    const xcb_screen_t& screen_;
    const PixelRect display_;
    bool composite_ = false;
    bool xfixes_ = false;
    bool shape_ = false;
    bool compositingManager_ = false;
    std::unique_ptr<RootBackground> rootBackground_;
    xcb_atom_t wmState_ = XCB_NONE;
    std::vector<xcb_atom_t> wallpaperAtoms_;
    std::unique_ptr<ShmImage> frame_;
    std::unique_ptr<ShmImage> scratch_;
    std::optional<std::vector<Stacked>> stack_;
    std::optional<std::pair<std::int32_t, std::int32_t>> lastPointer_;
    bool hadHoles_ = false;

    // What the kept picture holds besides the server's pixels (in the display's pixels), and where
    // it may differ from the one before it (absent: anywhere).
    bool kept_ = false;
    std::set<std::int32_t> keptExcluded_;
    std::vector<PixelRect> keptHoles_;
    std::optional<PixelRect> keptCursor_;
    std::vector<std::uint8_t> underCursor_;  // the pixels the pointer covers there, rows packed
    std::optional<std::vector<PixelRect>> changed_;
};

// XFIXES 2 or later, which hands out cursor images and regions, enabled for this client.
bool xfixesReady(xcb_connection_t* connection);

// X scales nothing: a display is captured at its own size. Why the size asked for cannot be
// given, or nothing when it is the display's.
std::optional<std::string> unavailableSize(const PixelRect& display, PixelSize size);

}  // namespace brisko::platform::x11
