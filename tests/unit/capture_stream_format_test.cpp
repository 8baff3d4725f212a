#include <gtest/gtest.h>

#include "capture/capture_preamble.h"
#include "capture/stream_format.h"
#include "fake/fake_platform.h"

namespace brisko {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(CaptureStreamFormat, PreambleIsMagicThenVersionInOneWrite) {
    fake::FakePlatform platform;
    writeCaptureStreamPreamble();
    EXPECT_EQ(platform.streams.out(), std::string("BCS2\x02\x00\x00\x00", 8));
}

TEST(CaptureStreamFormat, AFailedPreambleWriteEndsTheProcessWithStatusZero) {
    fake::FakePlatform platform;
    platform.streams.failWrites = true;
    try {
        writeCaptureStreamPreamble();
        ADD_FAILURE() << "the process went on";
    } catch (const fake::ProcessExit& exit) {
        EXPECT_EQ(exit.status, 0);
    }
    EXPECT_EQ(platform.streams.err(), "");
}

TEST(CaptureStreamFormat, RecordLayoutIsLittleEndianWithoutPadding) {
    const Bytes data(100, 0xAB), other = {1, 2, 3};
    const std::vector<EncodedTile> tiles = {{{0x40, 0x80, 64, 6}, data}, {{0x01020304, 0, 2, 1}, other}};
    Bytes record = {9, 9, 9};  // replaced, not appended to
    buildFrameRecord(record, 1440, 900, tiles);

    Bytes expected = {
        155, 0, 0, 0,                    // 12 + (20 + 100) + (20 + 3)
        0xA0, 0x05, 0, 0, 0x84, 0x03, 0, 0,  // 1440 x 900
        2, 0, 0, 0,                      // tiles
        0x40, 0, 0, 0, 0x80, 0, 0, 0, 64, 0, 0, 0, 6, 0, 0, 0, 100, 0, 0, 0,
    };
    expected.insert(expected.end(), data.begin(), data.end());
    expected.insert(expected.end(), {4, 3, 2, 1, 0, 0, 0, 0, 2, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 1, 2, 3});
    EXPECT_EQ(record, expected);

    buildFrameRecord(record, 64, 64, std::span(tiles).first(1));
    EXPECT_EQ(Bytes(record.begin(), record.begin() + 4), (Bytes{132, 0, 0, 0}));
    EXPECT_EQ(record.size(), 4u + 132u);
}

}  // namespace
}  // namespace brisko
