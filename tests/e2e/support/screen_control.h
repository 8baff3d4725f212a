#pragma once

#include <cstdint>
#include <string>

#include <xcb/xcb.h>

#include "support/png_image.h"

namespace brisko::testing {

// What the tests do to the screen themselves, over a connection of their own: the desktop's
// wallpaper, the pointer, and the screen's pixels as the server holds them.
class ScreenControl {
public:
    explicit ScreenControl(const std::string& display);
    ~ScreenControl();
    ScreenControl(const ScreenControl&) = delete;
    ScreenControl& operator=(const ScreenControl&) = delete;

    // Sets the root window's background to one colour (0xRRGGBB) and publishes it as the
    // wallpaper (_XROOTPMAP_ID), as wallpaper setters do. Lasts while this connection does.
    void setWallpaper(std::uint32_t color);
    // Sets the root window's own background to one colour, published nowhere.
    void setRootBackground(std::uint32_t color);
    void warpPointer(int x, int y);
    // The whole screen as the server shows it (without the pointer's sprite).
    RgbaPicture screen();

private:
    void sync();

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_;
    xcb_pixmap_t wallpaper_ = XCB_NONE;
};

// Whether the pictures have the same size and pixels, leaving out the square of the given
// half-size around (skipX, skipY); half-size 0 leaves out nothing.
bool samePixels(const RgbaPicture& a, const RgbaPicture& b, int skipX = 0, int skipY = 0, int skipHalf = 0);

}  // namespace brisko::testing
