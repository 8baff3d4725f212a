#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/capture_frame.h"
#include "platform/geometry.h"

namespace brisko::platform {

struct CaptureDisplay {
    std::uint32_t displayID = 0;
    long long width = 0;  // points
    long long height = 0;
};

struct CaptureApplication {
    std::int32_t processID = 0;
    std::string bundleIdentifier;  // empty when the application has none
};

struct ShareableContent {
    std::vector<CaptureDisplay> displays;
    std::vector<CaptureApplication> applications;
};

// Either content or, when it could not be listed, the platform's description of why (may be absent).
struct ShareableContentResult {
    std::optional<ShareableContent> content;
    std::optional<std::string> error;
};

// What to capture: one display with every window of the listed applications left out.
struct CaptureFilter {
    CaptureDisplay display;
    std::vector<std::int32_t> excludedPids;
};

// One captured picture: rows of B, G, R, A bytes, packed (width * 4 bytes a row).
struct CapturedImage {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::vector<std::uint8_t> bgra;

    BgraFrameView view() const { return {bgra.data(), width, height, width * 4}; }
};

// Either the picture or, when there is none, the platform's description of why (may be absent).
struct CapturedImageResult {
    std::optional<CapturedImage> image;
    std::optional<std::string> error;
};

struct FrameStreamConfiguration {
    PixelSize size;                  // of every frame
    double minimumFrameIntervalSeconds = 1.0 / 15.0;
    bool showsCursor = true;
    int queueDepth = 3;              // frames the source may hold ready before they are taken
};

// Where a frame stream delivers. Both calls come on the stream's one delivery thread, one at a
// time.
class FrameStreamOutput {
public:
    virtual ~FrameStreamOutput() = default;
    // The view lends the stream's memory for the duration of the call only. True when the frame
    // showed the reader something new; false when it was ignored or showed the same picture, so
    // that a stream that paces itself need not count it.
    virtual bool didOutputFrame(const BgraFrameView& frame, FrameStatus status) = 0;
    // The stream stopped by itself; nothing is delivered after this.
    virtual void didStopWithError(const std::string& error) = 0;
};

// A running capture of one display. Frames flow from startCapture until stop or destruction;
// both return once no delivery is running.
class FrameStream {
public:
    virtual ~FrameStream() = default;
    // Each returns the platform's description of the failure, or nothing when it worked.
    virtual std::optional<std::string> addOutput(FrameStreamOutput& output) = 0;
    virtual std::optional<std::string> startCapture() = 0;
    // Replaces which applications are left out, without restarting; from any thread.
    virtual std::optional<std::string> updateFilter(const CaptureFilter& filter) = 0;
    virtual void stop() = 0;
};

class ScreenCapture {
public:
    virtual ~ScreenCapture() = default;
    // Every display and application, desktop windows and off-screen windows included.
    virtual ShareableContentResult shareableContent() = 0;
    virtual std::uint32_t mainDisplayID() = 0;
    // The display's current mode in pixels; absent when the mode cannot be read.
    virtual std::optional<PixelSize> displayPixelSize(std::uint32_t displayID) = 0;
    // One picture of the filter's display at the given size.
    virtual CapturedImageResult captureImage(const CaptureFilter& filter, PixelSize size, bool showsCursor) = 0;
    // A stream of the filter's display, not yet started.
    virtual std::unique_ptr<FrameStream> makeFrameStream(const CaptureFilter& filter,
                                                         const FrameStreamConfiguration& configuration) = 0;
};

}  // namespace brisko::platform
