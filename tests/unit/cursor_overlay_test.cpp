#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "capture/cursor_overlay.h"

namespace brisko {
namespace {

// A 4 x 3 canvas of one BGRA colour, rows padded to 20 bytes.
struct Canvas {
    explicit Canvas(std::array<std::uint8_t, 4> bgra) : bytes(60, 0xEE) {
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 4; ++x) std::copy(bgra.begin(), bgra.end(), bytes.begin() + y * 20 + x * 4);
        }
    }
    BgraCanvas at(std::int64_t originX, std::int64_t originY) { return {bytes.data(), 4, 3, 20, originX, originY}; }
    std::array<std::uint8_t, 4> pixel(int x, int y) const {
        std::array<std::uint8_t, 4> p{};
        std::copy_n(bytes.begin() + y * 20 + x * 4, 4, p.begin());
        return p;
    }
    std::vector<std::uint8_t> bytes;
};

TEST(CursorOverlay, BlendsPremultipliedColourOverTheCanvas) {
    struct Case {
        std::uint32_t argb;
        std::array<std::uint8_t, 4> expected;  // over a canvas of B 200, G 100, R 0, A 77
    };
    const std::vector<Case> cases = {
        {0xFF102030, {0x30, 0x20, 0x10, 77}},   // opaque: the cursor's colour, the alpha byte kept
        {0x00000000, {200, 100, 0, 77}},        // transparent: the canvas
        {0x80000000, {100, 50, 0, 77}},         // half-transparent black shadow: half the canvas
        {0x80404040, {164, 114, 64, 77}},       // half-transparent grey
        {0x00FFFFFF, {255, 255, 255, 77}},      // additive (premultiplied with alpha 0): adds, clamped
    };
    for (const Case& c : cases) {
        Canvas canvas({200, 100, 0, 77});
        drawCursor(canvas.at(0, 0), {1, 1, 1, 1, {c.argb}});
        EXPECT_EQ(canvas.pixel(1, 1), c.expected) << std::hex << c.argb;
        EXPECT_EQ(canvas.pixel(0, 0), (std::array<std::uint8_t, 4>{200, 100, 0, 77})) << "untouched";
    }
}

TEST(CursorOverlay, ClipsToTheCanvasInItsOwnCoordinates) {
    // A 3 x 3 opaque cursor whose pixels count up, placed partly outside the canvas.
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t i = 0; i < 9; ++i) pixels.push_back(0xFF000000 | i);
    Canvas canvas({0, 0, 0, 0});
    // The canvas starts at (100, 50); the cursor's top-left is at (102, 49): columns 0-1 and rows
    // 1-2 of the cursor land on canvas pixels (2..3, 0..1).
    drawCursor(canvas.at(100, 50), {102, 49, 3, 3, pixels});
    EXPECT_EQ(canvas.pixel(2, 0)[0], 3);
    EXPECT_EQ(canvas.pixel(3, 0)[0], 4);
    EXPECT_EQ(canvas.pixel(2, 1)[0], 6);
    EXPECT_EQ(canvas.pixel(3, 1)[0], 7);
    EXPECT_EQ(canvas.pixel(2, 2)[0], 0);
    EXPECT_EQ(canvas.pixel(1, 0)[0], 0);
    EXPECT_EQ(canvas.bytes[16], 0xEE) << "row padding untouched";

    Canvas untouched({9, 9, 9, 9});
    drawCursor(untouched.at(0, 0), {-3, 0, 3, 3, pixels});
    drawCursor(untouched.at(0, 0), {4, 3, 3, 3, pixels});
    drawCursor(untouched.at(0, 0), {0, 0, 3, 3, {0xFF000000}});  // fewer pixels than its size: not drawn
    EXPECT_EQ(untouched.bytes, Canvas({9, 9, 9, 9}).bytes);
}

}  // namespace
}  // namespace brisko
