#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::platform::x11 {

// Reads rectangles of a drawable's pixels as 32-bit B, G, R, X words, rows packed. The server
// writes them straight into memory shared with this process (MIT-SHM) when it can; otherwise
// they travel in the reply and are copied once.
class ShmImage {
public:
    // Room for rectangles of up to maxPixels pixels.
    ShmImage(xcb_connection_t* connection, std::size_t maxPixels);
    ~ShmImage();
    ShmImage(const ShmImage&) = delete;
    ShmImage& operator=(const ShmImage&) = delete;

    // The pixels of the rectangle, which must lie inside the drawable, placed `offset` bytes into
    // the memory; absent when the server refused (a drawable that is gone, or a rectangle outside
    // it), or when the drawable's pixels are not 24 or 32 bits deep and so not in this layout.
    std::uint8_t* read(xcb_drawable_t drawable, std::int16_t x, std::int16_t y, std::uint16_t width,
                       std::uint16_t height, std::size_t offset = 0);

    bool shared() const { return segment_ != XCB_NONE; }
    // Where reads land: what the last read left, and what it did not cover from earlier ones.
    std::uint8_t* pixels() { return shared() ? memory_ : copied_.data(); }

private:
    bool attach();
    std::uint8_t* readShared(xcb_drawable_t drawable, std::int16_t x, std::int16_t y, std::uint16_t width,
                             std::uint16_t height, std::size_t offset);
    std::uint8_t* readCopied(xcb_drawable_t drawable, std::int16_t x, std::int16_t y, std::uint16_t width,
                             std::uint16_t height, std::size_t offset);

    xcb_connection_t* connection_;
    std::size_t bytes_;
    std::uint32_t segment_ = XCB_NONE;
    std::uint8_t* memory_ = nullptr;
    std::vector<std::uint8_t> copied_;  // bytes_ long when the memory is not shared
};

// Why the screen's pixels cannot be read as 32-bit B, G, R words; absent when they can.
std::optional<std::string> unsupportedPixelLayout(xcb_connection_t* connection, const xcb_screen_t& screen);

}  // namespace brisko::platform::x11
