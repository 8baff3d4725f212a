#include "support/screen_control.h"

#include <cstdlib>
#include <cstring>
#include <cstdlib>
#include <stdexcept>

#include "support/test_window.h"

namespace brisko::testing {

ScreenControl::ScreenControl(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_)) throw std::runtime_error("cannot connect to " + display);
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

ScreenControl::~ScreenControl() { xcb_disconnect(connection_); }

void ScreenControl::sync() { std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr)); }

void ScreenControl::setWallpaper(std::uint32_t color) {
    if (wallpaper_ == XCB_NONE) {
        wallpaper_ = xcb_generate_id(connection_);
        xcb_create_pixmap(connection_, screen_->root_depth, wallpaper_, screen_->root, screen_->width_in_pixels,
                          screen_->height_in_pixels);
    }
    const xcb_gcontext_t gc = xcb_generate_id(connection_);
    xcb_create_gc(connection_, gc, wallpaper_, XCB_GC_FOREGROUND, &color);
    const xcb_rectangle_t all{0, 0, screen_->width_in_pixels, screen_->height_in_pixels};
    xcb_poly_fill_rectangle(connection_, wallpaper_, gc, 1, &all);
    xcb_free_gc(connection_, gc);
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXMAP, &wallpaper_);
    xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen_->root, atomNamed(connection_, "_XROOTPMAP_ID"),
                        XCB_ATOM_PIXMAP, 32, 1, &wallpaper_);
    sync();
}

void ScreenControl::setRootBackground(std::uint32_t color) {
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXEL, &color);
    xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
    xcb_delete_property(connection_, screen_->root, atomNamed(connection_, "_XROOTPMAP_ID"));
    sync();
}

void ScreenControl::warpPointer(int x, int y) {
    xcb_warp_pointer(connection_, XCB_NONE, screen_->root, 0, 0, 0, 0, static_cast<std::int16_t>(x),
                     static_cast<std::int16_t>(y));
    sync();
}

RgbaPicture ScreenControl::screen() {
    const std::uint16_t width = screen_->width_in_pixels;
    const std::uint16_t height = screen_->height_in_pixels;
    xcb_get_image_reply_t* reply = xcb_get_image_reply(
        connection_, xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, screen_->root, 0, 0, width, height, ~0u),
        nullptr);
    if (!reply) throw std::runtime_error("cannot read the screen");
    RgbaPicture picture{width, height, std::vector<std::uint8_t>(std::size_t{width} * height * 4)};
    const std::uint8_t* bgrx = xcb_get_image_data(reply);
    for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
        picture.rgba[i * 4] = bgrx[i * 4 + 2];
        picture.rgba[i * 4 + 1] = bgrx[i * 4 + 1];
        picture.rgba[i * 4 + 2] = bgrx[i * 4];
        picture.rgba[i * 4 + 3] = 255;
    }
    std::free(reply);
    return picture;
}

bool samePixels(const RgbaPicture& a, const RgbaPicture& b, int skipX, int skipY, int skipHalf) {
    if (a.width != b.width || a.height != b.height) return false;
    for (std::uint32_t y = 0; y < a.height; ++y) {
        for (std::uint32_t x = 0; x < a.width; ++x) {
            const bool skipped = skipHalf > 0 && std::abs(int(x) - skipX) <= skipHalf && std::abs(int(y) - skipY) <= skipHalf;
            if (!skipped && a.rgb(x, y) != b.rgb(x, y)) return false;
        }
    }
    return true;
}

}  // namespace brisko::testing
