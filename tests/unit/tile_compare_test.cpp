#include <gtest/gtest.h>

#include "capture/pixel_convert.h"
#include "capture/tile_compare.h"
#include "support/capture_records.h"

namespace brisko {
namespace {

// Every width up to two vector steps and a bit, so that changes land in the vector part and in
// the scalar remainder alike, in every channel and on every row.
TEST(TileCompare, FindsTheFirstChangedRowWhateverTheColumnOrChannel) {
    constexpr std::size_t rows = 3;
    for (std::size_t width = 1; width <= 37; ++width) {
        const testing::BgraImage frame = testing::noiseImage(static_cast<std::int64_t>(width), rows, 1, 8);
        std::vector<std::uint8_t> reference = testing::rgbaOf(frame);
        const auto first = [&](const testing::BgraImage& image) {
            return firstChangedRow(image.bytes.data(), static_cast<std::size_t>(image.bytesPerRow), reference.data(),
                                   width * 4, width, rows);
        };
        ASSERT_EQ(first(frame), rows);
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t x = 0; x < width; ++x) {
                for (std::size_t channel = 0; channel < 4; ++channel) {
                    testing::BgraImage changed = frame;
                    changed.pixel(static_cast<std::int64_t>(x), static_cast<std::int64_t>(row))[channel] ^= 0x10;
                    EXPECT_EQ(first(changed), channel == 3 ? rows : row)
                        << "width " << width << ", pixel " << x << ", " << row << ", channel " << channel;
                }
            }
        }
    }
}

TEST(PixelConvert, MakesOpaqueRgbaOfEveryRunLength) {
    for (std::int64_t width = 0; width <= 21; ++width) {
        const testing::BgraImage frame = testing::noiseImage(width, 1, 2);
        std::vector<std::uint8_t> rgba(static_cast<std::size_t>(width * 4) + 4, 0xEE);
        bgraToRgba(frame.bytes.data(), rgba.data(), static_cast<std::size_t>(width));
        const std::vector<std::uint8_t> expected = testing::rgbaOf(frame);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), rgba.begin())) << "width " << width;
        EXPECT_EQ(rgba.back(), 0xEE) << "wrote past the run, width " << width;
    }
}

}  // namespace
}  // namespace brisko
