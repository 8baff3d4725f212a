#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "capture/overwrite_buffer.h"
#include "capture/raw_deflater.h"
#include "capture/stream_format.h"
#include "capture/worker_pool.h"
#include "platform/capture_frame.h"

namespace brisko {

// What became of one frame handed to the encoder.
enum class FrameOutcome {
    ignored,            // not a complete frame, or no pixels: stream and reference untouched
    unchanged,          // the same picture as the reference: nothing written
    sent,               // one record written
    nothingCompressed,  // every changed tile failed to compress: nothing written, next frame whole
    writeFailed,        // the record could not be written: the reader has gone
};

// Turns each captured frame into at most one record of the capture stream: the 64 x 64 tiles
// that changed since the reference frame, each compressed with raw DEFLATE, or the whole frame as
// one tile when there is no reference of its size. One instance serves a whole session and is
// called with one frame at a time; changed tiles are compressed on a pool of lanes, each with its
// own compressor, and the record is the same bytes whatever the number of lanes.
class CaptureStreamOutput {
public:
    // Takes one record per call, written whole; false when the write failed.
    using RecordSink = std::function<bool(std::string_view record)>;
    using DeflaterFactory = std::function<std::unique_ptr<RawDeflater>()>;

    // Compresses with the platform's compressor at the process's capture level.
    explicit CaptureStreamOutput(RecordSink sink, std::size_t lanes = hardwareLanes());
    CaptureStreamOutput(RecordSink sink, std::size_t lanes, const DeflaterFactory& makeDeflater);

    FrameOutcome encodeFrame(const platform::BgraFrameView& frame, platform::FrameStatus status);

private:
    bool takeReference(const platform::BgraFrameView& frame);
    void copyRGBA(const platform::BgraFrameView& frame);
    void findChangedTiles(const platform::BgraFrameView& frame);
    void scanTileRow(const platform::BgraFrameView& frame, std::size_t row);
    void compressTiles();
    void compressTile(std::size_t lane, std::size_t index);
    struct Lane;
    static std::size_t deflateTile(Lane& lane, std::span<const std::uint8_t> input, std::span<std::uint8_t> output);

    const std::int64_t tileSize_;
    RecordSink sink_;
    WorkerPool pool_;

    // The reference: R, G, B, 255 per pixel, rows packed. A size of 0 x 0 means none.
    OverwriteBuffer previous_;
    std::int64_t previousWidth_ = 0;
    std::int64_t previousHeight_ = 0;
    // The reference was taken from the frame handed over last (none was ignored since).
    bool referenceIsLastFrame_ = false;

    // Where a tile's compressed bytes lie: in which lane's area, and how many (0: it failed).
    struct Compressed {
        std::size_t lane = 0;
        std::size_t offset = 0;
        std::size_t length = 0;
    };
    // Per frame, reused: tiles to compare and tiles found changed (flags per grid cell), the
    // changed ones listed in grid order, each one's compressed bytes, and the record.
    std::vector<std::uint8_t> candidates_;
    std::vector<std::uint8_t> changed_;
    std::vector<TileRect> tiles_;
    std::vector<Compressed> compressed_;
    std::vector<EncodedTile> encoded_;
    std::vector<std::uint8_t> record_;

    // Per lane: its compressor, its tile gathering buffer, the area it compresses into, and the
    // last tile of one colour it compressed, with its compressed bytes.
    struct Lane {
        std::unique_ptr<RawDeflater> deflater;
        std::vector<std::uint8_t> gathered;
        OverwriteBuffer compressed;
        std::size_t used = 0;
        std::size_t oneColourBytes = 0;  // none yet when 0
        std::uint32_t oneColourPixel = 0;
        std::vector<std::uint8_t> oneColourCompressed;
    };
    std::vector<Lane> lanes_;
};

}  // namespace brisko
