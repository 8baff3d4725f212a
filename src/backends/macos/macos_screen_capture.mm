// ScreenCaptureKit: the shareable content, one-shot pictures and frame streams of a display with
// applications left out.
#import <CoreGraphics/CoreGraphics.h>
#import <CoreMedia/CoreMedia.h>
#import <CoreVideo/CoreVideo.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <mutex>

#include "backends/macos/bridging.h"
#include "backends/macos/cf_owned.h"
#include "backends/macos/macos_frame_stream.h"
#include "backends/macos/macos_services.h"
#include "ownui/capture_exclusion.h"

namespace brisko::platform::macos {
namespace {

// Every frame rate in use divides this timescale, so a frame interval of 1/15 s is exact in it.
constexpr int32_t frameIntervalTimescale = 600;

ShareableContent contentOf(SCShareableContent* listed) {
    ShareableContent content;
    for (SCDisplay* display in listed.displays) {
        content.displays.push_back({display.displayID, display.width, display.height});
    }
    for (SCRunningApplication* application in listed.applications) {
        content.applications.push_back({application.processID, utf8(application.bundleIdentifier)});
    }
    return content;
}

// The picture as rows of B, G, R, A bytes, drawn unchanged (same colour space, no blending).
std::optional<CapturedImage> pixelsOf(CGImageRef image) {
    CapturedImage picture;
    picture.width = static_cast<std::int64_t>(CGImageGetWidth(image));
    picture.height = static_cast<std::int64_t>(CGImageGetHeight(image));
    picture.bgra.resize(static_cast<std::size_t>(picture.width * picture.height * 4));
    const CFOwned<CGColorSpaceRef> sRGB(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
    const CGBitmapInfo layout = static_cast<CGBitmapInfo>(kCGImageAlphaPremultipliedFirst) | kCGBitmapByteOrder32Little;
    const CFOwned<CGContextRef> canvas(CGBitmapContextCreate(
        picture.bgra.data(), CGImageGetWidth(image), CGImageGetHeight(image), 8,
        static_cast<std::size_t>(picture.width * 4), sRGB.get(), layout));
    if (!canvas) return std::nullopt;
    CGContextSetBlendMode(canvas.get(), kCGBlendModeCopy);
    CGContextDrawImage(canvas.get(),
                       CGRectMake(0, 0, static_cast<CGFloat>(picture.width), static_cast<CGFloat>(picture.height)),
                       image);
    return picture;
}

class MacScreenCapture final : public ScreenCapture {
public:
    ShareableContentResult shareableContent() override {
        @autoreleasepool {
            // ScreenCaptureKit relies on this process's connection to the window server, which a
            // command-line process has only once it has asked CoreGraphics something.
            CGMainDisplayID();
            __block SCShareableContent* listed = nil;
            __block NSError* failure = nil;
            awaitCompletion(^(dispatch_block_t finished) {
              [SCShareableContent getShareableContentExcludingDesktopWindows:NO
                                                         onScreenWindowsOnly:NO
                                                           completionHandler:^(SCShareableContent* content, NSError* error) {
                                                             listed = content;
                                                             failure = error;
                                                             finished();
                                                           }];
            });
            if (!listed) return {std::nullopt, describe(failure)};
            const std::lock_guard guard(lock_);
            latest_ = listed;
            return {contentOf(listed), std::nullopt};
        }
    }

    std::uint32_t mainDisplayID() override { return CGMainDisplayID(); }

    std::optional<PixelSize> displayPixelSize(std::uint32_t displayID) override { return displayModePixels(displayID); }

    CapturedImageResult captureImage(const CaptureFilter& filter, PixelSize size, bool showsCursor) override {
        @autoreleasepool {
            SCContentFilter* content = contentFilter(filter);
            if (!content) return {std::nullopt, "the display to capture is not listed"};
            SCStreamConfiguration* configuration = [[SCStreamConfiguration alloc] init];
            configuration.width = static_cast<std::size_t>(size.width);
            configuration.height = static_cast<std::size_t>(size.height);
            configuration.showsCursor = showsCursor;
            configuration.pixelFormat = kCVPixelFormatType_32BGRA;
            // The picture leaves as bytes without a colour space, which PNG files then call sRGB.
            configuration.colorSpaceName = kCGColorSpaceSRGB;
            __block CFOwned<CGImageRef> captured;
            __block NSError* failure = nil;
            awaitCompletion(^(dispatch_block_t finished) {
              [SCScreenshotManager captureImageWithFilter:content
                                            configuration:configuration
                                        completionHandler:^(CGImageRef image, NSError* error) {
                                          // The image is the handler's only while it runs.
                                          captured.reset(CGImageRetain(image));
                                          failure = error;
                                          finished();
                                        }];
            });
            if (!captured) return {std::nullopt, describe(failure)};
            std::optional<CapturedImage> picture = pixelsOf(captured.get());
            if (!picture) return {std::nullopt, "the picture could not be read"};
            return {std::move(picture), std::nullopt};
        }
    }

    std::unique_ptr<FrameStream> makeFrameStream(const CaptureFilter& filter,
                                                 const FrameStreamConfiguration& configuration) override {
        @autoreleasepool {
            SCStreamConfiguration* stream = [[SCStreamConfiguration alloc] init];
            stream.width = static_cast<std::size_t>(configuration.size.width);
            stream.height = static_cast<std::size_t>(configuration.size.height);
            stream.minimumFrameInterval =
                CMTimeMakeWithSeconds(configuration.minimumFrameIntervalSeconds, frameIntervalTimescale);
            stream.pixelFormat = kCVPixelFormatType_32BGRA;
            stream.showsCursor = configuration.showsCursor;
            stream.queueDepth = configuration.queueDepth;
            return macos::makeFrameStream(contentFilter(filter), stream,
                                          [this](const CaptureFilter& replacement) { return contentFilter(replacement); });
        }
    }

private:
    // The filter over the latest listed content: its display with that id, and every listed
    // application with an excluded pid left out. Nil when the display is not listed.
    SCContentFilter* contentFilter(const CaptureFilter& filter) {
        const std::lock_guard guard(lock_);
        if (!latest_) return nil;
        SCDisplay* display = nil;
        for (SCDisplay* candidate in latest_.displays) {
            if (candidate.displayID == filter.display.displayID) {
                display = candidate;
                break;
            }
        }
        if (!display) return nil;
        NSMutableArray<SCRunningApplication*>* excluded = [NSMutableArray array];
        for (const std::size_t i : applicationsWithPids(contentOf(latest_), filter.excludedPids)) {
            [excluded addObject:latest_.applications[i]];
        }
        return [[SCContentFilter alloc] initWithDisplay:display excludingApplications:excluded exceptingWindows:@[]];
    }

    std::mutex lock_;
    SCShareableContent* latest_ = nil;
};

}  // namespace

std::unique_ptr<ScreenCapture> makeScreenCapture() { return std::make_unique<MacScreenCapture>(); }

}  // namespace brisko::platform::macos
