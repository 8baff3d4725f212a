#include "backends/x11/x11_root_background.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {

RootBackground::RootBackground(xcb_connection_t* connection, const xcb_screen_t& screen)
    : connection_(connection), screen_(screen) {}

RootBackground::~RootBackground() {
    if (window_ == XCB_NONE) return;
    xcb_destroy_window(connection_, window_);
    xcb_flush(connection_);
}

// Makes the window and moves it over `within`; false when the server would not keep it off the
// screen (a compositing manager holds that right), and then it never tries again.
bool RootBackground::cover(const PixelRect& within) {
    if (!usable_) return false;
    if (window_ != XCB_NONE && within == bounds_) return true;
    const auto x = static_cast<std::int16_t>(within.x), y = static_cast<std::int16_t>(within.y);
    const auto width = static_cast<std::uint16_t>(within.width), height = static_cast<std::uint16_t>(within.height);
    if (window_ == XCB_NONE) {
        window_ = xcb_generate_id(connection_);
        const std::uint32_t values[] = {XCB_BACK_PIXMAP_PARENT_RELATIVE, 1};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen_.root, x, y, width, height, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
        const XcbReply<xcb_generic_error_t> refused(xcb_request_check(
            connection_, xcb_composite_redirect_window_checked(connection_, window_, XCB_COMPOSITE_REDIRECT_MANUAL)));
        if (refused) {
            xcb_destroy_window(connection_, window_);
            window_ = XCB_NONE;
            usable_ = false;
            return false;
        }
        const xcb_query_extension_reply_t* shape = xcb_get_extension_data(connection_, &xcb_shape_id);
        if (shape && shape->present) {
            xcb_shape_rectangles(connection_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, window_,
                                 0, 0, 0, nullptr);
        }
        const std::uint32_t bottom = XCB_STACK_MODE_BELOW;
        xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_STACK_MODE, &bottom);
        xcb_map_window(connection_, window_);
    } else {
        const std::uint32_t geometry[] = {static_cast<std::uint32_t>(within.x), static_cast<std::uint32_t>(within.y),
                                          width, height};
        xcb_configure_window(connection_, window_,
                             XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                 XCB_CONFIG_WINDOW_HEIGHT,
                             geometry);
    }
    bounds_ = within;
    return true;
}

const std::uint8_t* RootBackground::read(ShmImage& image, const PixelRect& area, const PixelRect& within) {
    if (!cover(within)) return nullptr;
    // Painted afresh each time: the root's background may have changed since.
    const auto left = static_cast<std::int16_t>(area.x - bounds_.x), top = static_cast<std::int16_t>(area.y - bounds_.y);
    const auto width = static_cast<std::uint16_t>(area.width), height = static_cast<std::uint16_t>(area.height);
    xcb_clear_area(connection_, 0, window_, left, top, width, height);
    const xcb_pixmap_t pixmap = xcb_generate_id(connection_);
    xcb_composite_name_window_pixmap(connection_, window_, pixmap);
    const std::uint8_t* pixels = image.read(pixmap, left, top, width, height);
    xcb_free_pixmap(connection_, pixmap);
    return pixels;
}

}  // namespace brisko::platform::x11
