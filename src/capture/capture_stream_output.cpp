#include "capture/capture_stream_output.h"

#include <algorithm>
#include <cstring>

#include "capture/pixel_convert.h"
#include "capture/tile_compare.h"
#include "capture/tile_mask.h"
#include "cli/process_state.h"

namespace brisko {
namespace {

bool isComplete(platform::FrameStatus status) { return !status || *status == 0; }

bool hasPixels(const platform::BgraFrameView& frame) {
    return frame.base != nullptr && frame.width > 0 && frame.height > 0 && frame.bytesPerRow >= frame.width * 4;
}

std::size_t size(std::int64_t value) { return static_cast<std::size_t>(value); }

}  // namespace

CaptureStreamOutput::CaptureStreamOutput(RecordSink sink, std::size_t lanes)
    : CaptureStreamOutput(std::move(sink), lanes,
                          [level = processState().captureDeflateLevel] { return makeRawDeflater(level); }) {}

CaptureStreamOutput::CaptureStreamOutput(RecordSink sink, std::size_t lanes, const DeflaterFactory& makeDeflater)
    : tileSize_(processState().captureTileSize), sink_(std::move(sink)), pool_(lanes) {
    for (std::size_t lane = 0; lane < pool_.lanes(); ++lane) {
        lanes_.push_back({makeDeflater(), std::vector<std::uint8_t>(size(tileSize_ * tileSize_ * 4)), {}, 0, 0, 0, {}});
    }
}

FrameOutcome CaptureStreamOutput::encodeFrame(const platform::BgraFrameView& frame, platform::FrameStatus status) {
    if (!isComplete(status) || !hasPixels(frame)) {
        // What the next frame says changed since this one is not all that changed since the
        // reference.
        referenceIsLastFrame_ = false;
        return FrameOutcome::ignored;
    }
    // The frame becomes the reference before anything is compressed or written, whatever follows.
    if (frame.width == previousWidth_ && frame.height == previousHeight_) {
        findChangedTiles(frame);
    } else {
        copyRGBA(frame);
        tiles_.assign(1, TileRect{0, 0, frame.width, frame.height});
    }
    referenceIsLastFrame_ = true;
    if (tiles_.empty()) return FrameOutcome::unchanged;

    compressTiles();
    encoded_.clear();
    for (std::size_t i = 0; i < tiles_.size(); ++i) {
        // A tile that failed to compress is left out; the reference already holds its pixels.
        const Compressed& c = compressed_[i];
        if (c.length == 0) continue;
        encoded_.push_back({tiles_[i], {lanes_[c.lane].compressed.data() + c.offset, c.length}});
    }
    if (encoded_.empty()) {
        // The reader's picture now lags behind the reference: send the next frame whole.
        previousWidth_ = 0;
        previousHeight_ = 0;
        return FrameOutcome::nothingCompressed;
    }
    buildFrameRecord(record_, frame.width, frame.height, encoded_);
    const std::string_view bytes(reinterpret_cast<const char*>(record_.data()), record_.size());
    return sink_(bytes) ? FrameOutcome::sent : FrameOutcome::writeFailed;
}

// The whole frame as the new reference, converted in bands of rows on every lane.
void CaptureStreamOutput::copyRGBA(const platform::BgraFrameView& frame) {
    previous_.resize(size(frame.width * frame.height * 4));
    const std::int64_t bands = (frame.height + tileSize_ - 1) / tileSize_;
    pool_.run(size(bands), [&](std::size_t, std::size_t band) {
        const std::int64_t top = static_cast<std::int64_t>(band) * tileSize_;
        for (std::int64_t y = top; y < std::min(top + tileSize_, frame.height); ++y) {
            bgraToRgba(frame.base + y * frame.bytesPerRow, previous_.data() + y * frame.width * 4, size(frame.width));
        }
    });
    previousWidth_ = frame.width;
    previousHeight_ = frame.height;
}

// Lists the changed tiles in grid order (rows top to bottom, each left to right); rows of the
// grid are scanned on every lane, and each changed tile's new pixels go into the reference. Where
// the source says which areas may have changed, only the tiles they touch are compared.
void CaptureStreamOutput::findChangedTiles(const platform::BgraFrameView& frame) {
    const std::int64_t columns = (frame.width + tileSize_ - 1) / tileSize_;
    const std::int64_t rows = (frame.height + tileSize_ - 1) / tileSize_;
    if (frame.changedAreas && referenceIsLastFrame_) {
        markTouchedTiles(*frame.changedAreas, frame.width, frame.height, tileSize_, candidates_);
    } else {
        candidates_.assign(size(columns * rows), 1);
    }
    changed_.assign(size(columns * rows), 0);
    // A few tiles are compared sooner than the other lanes wake up.
    constexpr std::ptrdiff_t fewTiles = 64;
    if (std::count(candidates_.begin(), candidates_.end(), 1) <= fewTiles) {
        for (std::int64_t row = 0; row < rows; ++row) scanTileRow(frame, size(row));
    } else {
        pool_.run(size(rows), [&](std::size_t, std::size_t row) { scanTileRow(frame, row); });
    }
    tiles_.clear();
    for (std::int64_t row = 0; row < rows; ++row) {
        for (std::int64_t column = 0; column < columns; ++column) {
            if (changed_[size(row * columns + column)] == 0) continue;
            const std::int64_t x = column * tileSize_, y = row * tileSize_;
            tiles_.push_back({x, y, std::min(tileSize_, frame.width - x), std::min(tileSize_, frame.height - y)});
        }
    }
}

void CaptureStreamOutput::scanTileRow(const platform::BgraFrameView& frame, std::size_t row) {
    const std::int64_t columns = (frame.width + tileSize_ - 1) / tileSize_;
    const std::int64_t y = static_cast<std::int64_t>(row) * tileSize_;
    const std::int64_t h = std::min(tileSize_, frame.height - y);
    const std::size_t referenceStride = size(frame.width * 4);
    for (std::int64_t column = 0; column < columns; ++column) {
        if (candidates_[size(static_cast<std::int64_t>(row) * columns + column)] == 0) continue;
        const std::int64_t x = column * tileSize_;
        const std::int64_t w = std::min(tileSize_, frame.width - x);
        const std::uint8_t* source = frame.base + y * frame.bytesPerRow + x * 4;
        std::uint8_t* reference = previous_.data() + (y * frame.width + x) * 4;
        const std::size_t first =
            firstChangedRow(source, size(frame.bytesPerRow), reference, referenceStride, size(w), size(h));
        if (first == size(h)) continue;
        changed_[size(static_cast<std::int64_t>(row) * columns + column)] = 1;
        // Rows above the first changed one are equal already.
        for (std::size_t r = first; r < size(h); ++r) {
            bgraToRgba(source + r * size(frame.bytesPerRow), reference + r * referenceStride, size(w));
        }
    }
}

// Each lane writes the tiles it takes one after another into its own area, which has room for
// all of them; only the bytes written are ever touched.
void CaptureStreamOutput::compressTiles() {
    compressed_.resize(tiles_.size());
    std::size_t room = 0;
    for (const TileRect& tile : tiles_) room += deflateCapacity(size(tile.w * tile.h * 4));
    for (Lane& lane : lanes_) {
        lane.compressed.resize(room);
        lane.used = 0;
    }
    pool_.run(tiles_.size(), [this](std::size_t lane, std::size_t index) { compressTile(lane, index); });
}

void CaptureStreamOutput::compressTile(std::size_t laneIndex, std::size_t index) {
    Lane& lane = lanes_[laneIndex];
    const TileRect& tile = tiles_[index];
    const std::size_t rowBytes = size(tile.w * 4);
    const std::size_t bytes = rowBytes * size(tile.h);
    const std::uint8_t* topLeft = previous_.data() + (tile.y * previousWidth_ + tile.x) * 4;
    std::span<const std::uint8_t> input(topLeft, bytes);  // rows of a full-width tile are packed already
    if (tile.w != previousWidth_) {
        std::uint8_t* gathered = lane.gathered.data();
        for (std::size_t r = 0; r < size(tile.h); ++r) {
            std::memcpy(gathered + r * rowBytes, topLeft + r * size(previousWidth_ * 4), rowBytes);
        }
        input = {gathered, bytes};
    }
    const std::span<std::uint8_t> output(lane.compressed.data() + lane.used, deflateCapacity(bytes));
    const std::size_t length = deflateTile(lane, input, output);
    compressed_[index] = {laneIndex, lane.used, length};
    lane.used += length;
}

// A tile of one colour compresses to the same bytes as the last one of that colour and size,
// which a window's plain background repainted gives again and again.
std::size_t CaptureStreamOutput::deflateTile(Lane& lane, std::span<const std::uint8_t> input,
                                             std::span<std::uint8_t> output) {
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, input.data(), sizeof pixel);
    const bool oneColour = isOneColour(input);
    if (oneColour && lane.oneColourBytes == input.size() && lane.oneColourPixel == pixel) {
        std::memcpy(output.data(), lane.oneColourCompressed.data(), lane.oneColourCompressed.size());
        return lane.oneColourCompressed.size();
    }
    const std::size_t length = lane.deflater->deflateRaw(input, output);
    if (oneColour && length > 0) {
        lane.oneColourBytes = input.size();
        lane.oneColourPixel = pixel;
        lane.oneColourCompressed.assign(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(length));
    }
    return length;
}

}  // namespace brisko
