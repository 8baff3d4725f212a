#include "backends/x11/x11_frame_composer.h"

#include <algorithm>
#include <cstring>
#include <map>

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include "capture/cursor_overlay.h"
#include "capture/frame_read_plan.h"
#include "capture/pixel_blend.h"
#include "backends/x11/x11_atoms.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_owner_pids.h"
#include "backends/x11/x11_property.h"
#include "backends/x11/x11_top_level_windows.h"

namespace brisko::platform::x11 {
namespace {

std::int16_t i16(std::int64_t value) { return static_cast<std::int16_t>(value); }
std::uint16_t u16(std::int64_t value) { return static_cast<std::uint16_t>(value); }

void copyRows(const std::uint8_t* from, std::int64_t fromStride, std::uint8_t* to, std::int64_t toStride,
              std::int64_t rowBytes, std::int64_t rows) {
    for (std::int64_t row = 0; row < rows; ++row) {
        std::memcpy(to + row * toStride, from + row * fromStride, static_cast<std::size_t>(rowBytes));
    }
}

bool extensionPresent(xcb_connection_t* connection, xcb_extension_t& extension) {
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, &extension);
    return data && data->present;
}

// Composite 0.2 names window pixmaps. Asking for the version is also what enables an extension
// for a client.
bool compositeReady(xcb_connection_t* connection) {
    if (!extensionPresent(connection, xcb_composite_id)) return false;
    const XcbReply<xcb_composite_query_version_reply_t> version(xcb_composite_query_version_reply(
        connection, xcb_composite_query_version(connection, 0, 4), nullptr));
    return version && (version->major_version > 0 || version->minor_version >= 2);
}

PixelRect pixelRect(const Rect& r) {
    return {static_cast<std::int64_t>(r.x), static_cast<std::int64_t>(r.y), static_cast<std::int64_t>(r.width),
            static_cast<std::int64_t>(r.height)};
}

}  // namespace

FrameComposer::FrameComposer(xcb_connection_t* connection, const xcb_screen_t& screen, PixelRect display)
    : connection_(connection), screen_(screen), display_(display) {}

std::optional<std::string> FrameComposer::prepare() {
    if (auto unsupported = unsupportedPixelLayout(connection_, screen_)) return unsupported;
    const std::size_t pixels = static_cast<std::size_t>(display_.width * display_.height);
    frame_ = std::make_unique<ShmImage>(connection_, pixels);
    scratch_ = std::make_unique<ShmImage>(connection_, pixels);
    composite_ = compositeReady(connection_);
    // Automatic redirection leaves the screen as it was (the server still draws every window
    // on it) and keeps each top-level window's whole contents in its own pixmap.
    if (composite_) xcb_composite_redirect_subwindows(connection_, screen_.root, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    xfixes_ = xfixesReady(connection_);
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(connection_, &xcb_shape_id);
    shape_ = shape && shape->present;
    rootBackground_ = std::make_unique<RootBackground>(connection_, screen_);
    const std::vector<xcb_atom_t> atoms = internAtoms(connection_, {"WM_STATE", "_XROOTPMAP_ID", "ESETROOT_PMAP_ID"});
    wmState_ = atoms[0];
    wallpaperAtoms_ = {atoms[1], atoms[2]};
    return std::nullopt;
}

std::optional<BgraFrameView> FrameComposer::compose(const std::set<std::int32_t>& excludedPids, bool withCursor,
                                                    const std::optional<std::vector<PixelRect>>& damage) {
    std::uint8_t* frame = frame_->pixels();
    const std::vector<ExclusionHole> drawn = holes(excludedPids);
    std::vector<PixelRect> holeAreas;
    for (const ExclusionHole& hole : drawn) {
        holeAreas.push_back({hole.area.x - display_.x, hole.area.y - display_.y, hole.area.width, hole.area.height});
    }
    const bool layoutChanged = !kept_ || excludedPids != keptExcluded_ || holeAreas != keptHoles_;
    restoreUnderCursor(frame);
    const std::optional<FrameReadPlan> read = readServerPixels(damage, layoutChanged);
    kept_ = read.has_value();
    if (!kept_) return std::nullopt;
    // Where the picture may differ from the last one: what the server drew, and everything this
    // composer draws over the server's pixels, before and now.
    std::optional<std::vector<PixelRect>> changed = read->damaged;
    if (changed) {
        changed->insert(changed->end(), holeAreas.begin(), holeAreas.end());
        if (keptCursor_) changed->push_back(*keptCursor_);
    }
    keptExcluded_ = excludedPids;
    keptHoles_ = holeAreas;
    PixelRect holes;
    for (const ExclusionHole& hole : drawn) holes = unite(holes, hole.area);
    for (const ExclusionHole& hole : drawn) drawHole(frame, hole, stack(), holes);
    hadHoles_ = !drawn.empty();
    keptCursor_ = withCursor ? drawCursor(frame) : std::nullopt;
    if (changed && keptCursor_) changed->push_back(*keptCursor_);
    changed_ = std::move(changed);
    BgraFrameView view{frame, display_.width, display_.height, display_.width * 4};
    if (changed_) view.changedAreas = std::span<const PixelRect>(*changed_);
    return view;
}

std::vector<ExclusionHole> FrameComposer::holes(const std::set<std::int32_t>& excludedPids) {
    if (excludedPids.empty()) return {};
    std::vector<StackedWindow> planned;
    for (const Stacked& w : stack()) {
        planned.push_back({w.window, w.bounds, w.pid && excludedPids.contains(*w.pid), w.shape, w.translucent});
    }
    return planExclusion(display_, planned);
}

// Brings the kept picture up to date with the server's in one read straight into it: the rows
// that the damage spans, or all; pixels of those rows outside the damage come back as they were.
// Absent when the server would not give the pixels.
std::optional<FrameReadPlan> FrameComposer::readServerPixels(const std::optional<std::vector<PixelRect>>& damage,
                                                             bool layoutChanged) {
    std::optional<std::vector<PixelRect>> local;
    if (damage) {
        local.emplace();
        for (const PixelRect& r : *damage) local->push_back({r.x - display_.x, r.y - display_.y, r.width, r.height});
    }
    FrameReadPlan plan = planFrameRead({display_.width, display_.height}, local, layoutChanged);
    if (plan.rows > 0 && !frame_->read(screen_.root, i16(display_.x), i16(display_.y + plan.top), u16(display_.width),
                                       u16(plan.rows), static_cast<std::size_t>(plan.top * display_.width * 4))) {
        return std::nullopt;
    }
    return plan;
}

// The viewable top-level windows bottom to top, with the process that owns each (the client
// window's owner under a window manager's frame), where each covers the screen and whether the
// screen blends it.
const std::vector<FrameComposer::Stacked>& FrameComposer::stack() {
    if (stack_) return *stack_;
    std::vector<TopLevelWindow> windows = topLevelWindows(connection_, screen_.root, wmState_, Mapped::viewableOnly);
    std::erase_if(windows, [this](const TopLevelWindow& w) { return w.frame == rootBackground_->window(); });
    std::reverse(windows.begin(), windows.end());
    std::vector<xcb_window_t> clients;
    clients.reserve(windows.size());
    for (const TopLevelWindow& w : windows) clients.push_back(w.client);
    const std::vector<std::optional<std::int32_t>> pids = ownerPids(connection_, clients);
    const std::vector<WindowLook> looks = lookOf(windows);
    compositingManager_ = compositingManagerRuns();
    stack_.emplace();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        // Without a compositing manager the server copies a window's pixels to the screen as they
        // are, alpha or not.
        stack_->push_back({windows[i].frame, pixelRect(windows[i].bounds), pids[i], looks[i].shape,
                           looks[i].alpha && compositingManager_});
    }
    return *stack_;
}

// For each window, the parts of the screen its SHAPE bounding region covers (none listed: its
// whole rectangle) and whether its pixels carry alpha (32 bits deep); one batch of requests.
std::vector<FrameComposer::WindowLook> FrameComposer::lookOf(const std::vector<TopLevelWindow>& windows) {
    std::vector<xcb_get_geometry_cookie_t> geometries;
    std::vector<xcb_shape_get_rectangles_cookie_t> shapes;
    for (const TopLevelWindow& w : windows) {
        geometries.push_back(xcb_get_geometry(connection_, w.frame));
        if (shape_) shapes.push_back(xcb_shape_get_rectangles(connection_, w.frame, XCB_SHAPE_SK_BOUNDING));
    }
    std::vector<WindowLook> looks(windows.size());
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(connection_, geometries[i], nullptr));
        const XcbReply<xcb_shape_get_rectangles_reply_t> region(
            shape_ ? xcb_shape_get_rectangles_reply(connection_, shapes[i], nullptr) : nullptr);
        if (!geometry) continue;
        looks[i].alpha = geometry->depth == 32;
        if (!region) continue;
        // Shape rectangles count from the window's inside corner, within its border.
        const std::int64_t left = geometry->x + geometry->border_width, top = geometry->y + geometry->border_width;
        const xcb_rectangle_t* parts = xcb_shape_get_rectangles_rectangles(region.get());
        for (int k = 0; k < xcb_shape_get_rectangles_rectangles_length(region.get()); ++k) {
            looks[i].shape.push_back({left + parts[k].x, top + parts[k].y, parts[k].width, parts[k].height});
        }
    }
    return looks;
}

// A compositing manager owns the screen's _NET_WM_CM_Sn selection while it runs.
bool FrameComposer::compositingManagerRuns() {
    int number = 0;
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection_)); it.rem && it.data->root != screen_.root;
         xcb_screen_next(&it)) {
        ++number;
    }
    const xcb_atom_t selection = internAtoms(connection_, {"_NET_WM_CM_S" + std::to_string(number)})[0];
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection_, xcb_get_selection_owner(connection_, selection), nullptr));
    return owner && owner->owner != XCB_NONE;
}

void FrameComposer::drawHole(std::uint8_t* frame, const ExclusionHole& hole, const std::vector<Stacked>& windows,
                             const PixelRect& holes) {
    fillBackground(frame, hole.area, holes);
    // Without Composite no window's hidden contents can be read: the background alone hides the
    // left-out window.
    if (!composite_) return;
    std::map<xcb_window_t, PixelRect> bounds;
    for (const Stacked& w : windows) bounds.emplace(w.window, w.bounds);
    for (const WindowPiece& piece : hole.pieces) {
        const PixelRect& window = bounds.at(piece.window);
        const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
        xcb_composite_name_window_pixmap(connection_, piece.window, pixmap);
        // A window that went away meanwhile refuses the read; what lies under it stays.
        if (const std::uint8_t* pixels = scratch_->read(pixmap, i16(piece.area.x - window.x),
                                                        i16(piece.area.y - window.y), u16(piece.area.width),
                                                        u16(piece.area.height))) {
            copyIn(frame, pixels, piece.area, piece.blend);
        }
        xcb_free_pixmap(connection_, pixmap);
    }
}

// The root window's background where it is published (_XROOTPMAP_ID, as wallpaper setters and
// desktops do for clients that draw what lies beneath them), else the root's own background as
// the server would paint it; black where neither can be read (a compositing manager paints a
// background of its own choosing).
void FrameComposer::fillBackground(std::uint8_t* frame, const PixelRect& area, const PixelRect& holes) {
    for (std::int64_t row = 0; row < area.height; ++row) {
        std::uint8_t* line = frame + ((area.y - display_.y + row) * display_.width + (area.x - display_.x)) * 4;
        for (std::int64_t column = 0; column < area.width; ++column) {
            const std::uint8_t black[4] = {0, 0, 0, 255};
            std::memcpy(line + column * 4, black, 4);
        }
    }
    const xcb_pixmap_t background = wallpaper();
    if (background == XCB_NONE) {
        if (compositingManager_) return;
        if (const std::uint8_t* pixels = rootBackground_->read(*scratch_, area, holes)) copyIn(frame, pixels, area);
        return;
    }
    const XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, background), nullptr));
    if (!geometry) return;
    const PixelRect covered = intersection(area, {0, 0, geometry->width, geometry->height});
    if (covered.empty()) return;
    if (const std::uint8_t* pixels =
            scratch_->read(background, i16(covered.x), i16(covered.y), u16(covered.width), u16(covered.height))) {
        copyIn(frame, pixels, covered);
    }
}

xcb_pixmap_t FrameComposer::wallpaper() {
    for (const xcb_atom_t atom : wallpaperAtoms_) {
        if (atom == XCB_NONE) continue;
        const auto value = cardinalIn(propertyReply(connection_, requestProperty(connection_, screen_.root, atom,
                                                                                   XCB_ATOM_PIXMAP))
                                          .get());
        if (value && *value != XCB_NONE) return *value;
    }
    return XCB_NONE;
}

// Rows of packed pixels of the area (in screen coordinates) into the frame, copied or blended.
void FrameComposer::copyIn(std::uint8_t* frame, const std::uint8_t* pixels, const PixelRect& area, bool blend) {
    std::uint8_t* to = frame + ((area.y - display_.y) * display_.width + (area.x - display_.x)) * 4;
    if (!blend) {
        copyRows(pixels, area.width * 4, to, display_.width * 4, area.width * 4, area.height);
        return;
    }
    for (std::int64_t row = 0; row < area.height; ++row) {
        blendOver(pixels + row * area.width * 4, to + row * display_.width * 4, static_cast<std::size_t>(area.width));
    }
}

// Puts back the pixels that the last pointer covered: the server's picture never holds it.
void FrameComposer::restoreUnderCursor(std::uint8_t* frame) {
    if (!keptCursor_) return;
    const PixelRect& a = *keptCursor_;
    copyRows(underCursor_.data(), a.width * 4, frame + (a.y * display_.width + a.x) * 4, display_.width * 4,
             a.width * 4, a.height);
}

std::optional<PixelRect> FrameComposer::drawCursor(std::uint8_t* frame) {
    if (!xfixes_) return std::nullopt;
    const XcbReply<xcb_xfixes_get_cursor_image_reply_t> cursor(
        xcb_xfixes_get_cursor_image_reply(connection_, xcb_xfixes_get_cursor_image(connection_), nullptr));
    if (!cursor) return std::nullopt;
    lastPointer_ = std::pair<std::int32_t, std::int32_t>{cursor->x, cursor->y};
    const std::uint32_t* argb = xcb_xfixes_get_cursor_image_cursor_image(cursor.get());
    const CursorImage image{cursor->x - cursor->xhot, cursor->y - cursor->yhot, cursor->width, cursor->height,
                            std::vector<std::uint32_t>(argb, argb + std::size_t{cursor->width} * cursor->height)};
    const PixelRect covered = intersection({image.left - display_.x, image.top - display_.y, image.width, image.height},
                                           {0, 0, display_.width, display_.height});
    if (covered.empty()) return std::nullopt;
    underCursor_.resize(static_cast<std::size_t>(covered.width * covered.height * 4));
    copyRows(frame + (covered.y * display_.width + covered.x) * 4, display_.width * 4, underCursor_.data(),
             covered.width * 4, covered.width * 4, covered.height);
    brisko::drawCursor({frame, display_.width, display_.height, display_.width * 4, display_.x, display_.y}, image);
    return covered;
}

bool xfixesReady(xcb_connection_t* connection) {
    if (!extensionPresent(connection, xcb_xfixes_id)) return false;
    const XcbReply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 4, 0), nullptr));
    return version && version->major_version >= 2;
}

std::optional<std::string> unavailableSize(const PixelRect& display, PixelSize size) {
    if (size.width == display.width && size.height == display.height) return std::nullopt;
    return "an X display is captured at its own size, " + std::to_string(display.width) + " x " +
           std::to_string(display.height);
}

}  // namespace brisko::platform::x11
