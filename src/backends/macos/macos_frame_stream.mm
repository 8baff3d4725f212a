// A ScreenCaptureKit stream whose frames go to the program's stream output, one at a time on the
// capture queue.
#import <CoreMedia/CoreMedia.h>
#import <CoreVideo/CoreVideo.h>

#include "backends/macos/macos_frame_stream.h"

#include <atomic>

#include "backends/macos/bridging.h"
#include "capture/frame_status.h"

using brisko::platform::BgraFrameView;
using brisko::platform::FrameStreamOutput;
using brisko::platform::PropertyNumber;

namespace {

// The value under the frame-status key of the first attachment dictionary, if there is one.
std::optional<PropertyNumber> statusAttachment(CMSampleBufferRef sample) {
    CFArrayRef attachments = CMSampleBufferGetSampleAttachmentsArray(sample, false);
    if (!attachments || CFArrayGetCount(attachments) < 1) return std::nullopt;
    id first = (__bridge id)CFArrayGetValueAtIndex(attachments, 0);
    if (![first isKindOfClass:[NSDictionary class]]) return std::nullopt;
    return brisko::platform::macos::propertyNumber(static_cast<NSDictionary*>(first)[SCStreamFrameInfoStatus]);
}

}  // namespace

// ScreenCaptureKit's side of the stream: it hands over each frame's pixels and reports a stop.
// Whatever it gets goes to the target on the capture queue.
@interface BriskoStreamOutput : NSObject <SCStreamOutput, SCStreamDelegate>
- (instancetype)initWithQueue:(dispatch_queue_t)queue;
- (void)setTarget:(FrameStreamOutput*)target;
@end

@implementation BriskoStreamOutput {
    dispatch_queue_t _queue;
    std::atomic<FrameStreamOutput*> _target;
}

- (instancetype)initWithQueue:(dispatch_queue_t)queue {
    if ((self = [super init])) {
        _queue = queue;
        _target = nullptr;
    }
    return self;
}

- (void)setTarget:(FrameStreamOutput*)target {
    _target = target;
}

- (void)stream:(SCStream*)stream didOutputSampleBuffer:(CMSampleBufferRef)sampleBuffer ofType:(SCStreamOutputType)type {
    FrameStreamOutput* target = _target;
    if (!target || type != SCStreamOutputTypeScreen || !CMSampleBufferIsValid(sampleBuffer)) return;
    brisko::platform::FrameStatus status;
    @autoreleasepool {
        status = brisko::frameStatusOf(statusAttachment(sampleBuffer));
    }
    // A buffer without readable pixels goes on as a frame without pixels, which the encoder ignores.
    CVImageBufferRef pixels = CMSampleBufferGetImageBuffer(sampleBuffer);
    if (!pixels || CVPixelBufferLockBaseAddress(pixels, kCVPixelBufferLock_ReadOnly) != kCVReturnSuccess) {
        target->didOutputFrame(BgraFrameView{}, status);
        return;
    }
    const BgraFrameView frame{static_cast<const std::uint8_t*>(CVPixelBufferGetBaseAddress(pixels)),
                              static_cast<std::int64_t>(CVPixelBufferGetWidth(pixels)),
                              static_cast<std::int64_t>(CVPixelBufferGetHeight(pixels)),
                              static_cast<std::int64_t>(CVPixelBufferGetBytesPerRow(pixels))};
    target->didOutputFrame(frame, status);
    CVPixelBufferUnlockBaseAddress(pixels, kCVPixelBufferLock_ReadOnly);
}

- (void)stream:(SCStream*)stream didStopWithError:(NSError*)error {
    const std::string reason = brisko::platform::macos::describe(error).value_or("stopped");
    dispatch_async(_queue, ^{
      if (FrameStreamOutput* target = self->_target) target->didStopWithError(reason);
    });
}

@end

namespace brisko::platform::macos {
namespace {

constexpr const char* notListed = "the display to capture is no longer listed";

class MacFrameStream final : public FrameStream {
public:
    MacFrameStream(SCContentFilter* filter, SCStreamConfiguration* configuration, ContentFilterMaker makeFilter)
        : makeFilter_(std::move(makeFilter)),
          queue_(dispatch_queue_create("com.brisko.capture-stream", DISPATCH_QUEUE_SERIAL)),
          output_([[BriskoStreamOutput alloc] initWithQueue:queue_]) {
        if (filter) stream_ = [[SCStream alloc] initWithFilter:filter configuration:configuration delegate:output_];
        dispatch_queue_set_specific(queue_, &queueKey, &queueKey, nullptr);
    }
    ~MacFrameStream() override { stop(); }
    MacFrameStream(const MacFrameStream&) = delete;
    MacFrameStream& operator=(const MacFrameStream&) = delete;

    std::optional<std::string> addOutput(FrameStreamOutput& output) override {
        if (!stream_) return notListed;
        @autoreleasepool {
            [output_ setTarget:&output];
            NSError* error = nil;
            if ([stream_ addStreamOutput:output_ type:SCStreamOutputTypeScreen sampleHandlerQueue:queue_ error:&error]) {
                return std::nullopt;
            }
            [output_ setTarget:nullptr];
            return describe(error).value_or("unknown error");
        }
    }

    std::optional<std::string> startCapture() override {
        if (!stream_) return notListed;
        std::optional<std::string> failure = finish(^(void (^completion)(NSError*)) {
          [stream_ startCaptureWithCompletionHandler:completion];
        });
        if (!failure) running_ = true;
        return failure;
    }

    std::optional<std::string> updateFilter(const CaptureFilter& filter) override {
        if (!stream_) return notListed;
        @autoreleasepool {
            SCContentFilter* replacement = makeFilter_(filter);
            if (!replacement) return notListed;
            return finish(^(void (^completion)(NSError*)) {
              [stream_ updateContentFilter:replacement completionHandler:completion];
            });
        }
    }

    void stop() override {
        if (!running_.exchange(false)) return;
        finish(^(void (^completion)(NSError*)) {
          [stream_ stopCaptureWithCompletionHandler:completion];
        });
        // A delivery may still be running on the queue: let it end, unless this is it.
        if (dispatch_get_specific(&queueKey) != &queueKey) dispatch_sync(queue_, ^{});
        [output_ setTarget:nullptr];
    }

private:
    // Starts a call with a completion handler and waits for its error, if any.
    static std::optional<std::string> finish(void (^call)(void (^completion)(NSError*))) {
        @autoreleasepool {
            __block NSError* failure = nil;
            awaitCompletion(^(dispatch_block_t finished) {
              call(^(NSError* error) {
                failure = error;
                finished();
              });
            });
            return describe(failure);
        }
    }

    // Marks the capture queue, so that stop() can tell when it runs on it.
    static inline char queueKey = 0;

    ContentFilterMaker makeFilter_;
    dispatch_queue_t queue_;
    BriskoStreamOutput* output_;
    SCStream* stream_ = nil;
    std::atomic<bool> running_{false};
};

}  // namespace

std::unique_ptr<FrameStream> makeFrameStream(SCContentFilter* filter, SCStreamConfiguration* configuration,
                                             ContentFilterMaker makeFilter) {
    return std::make_unique<MacFrameStream>(filter, configuration, std::move(makeFilter));
}

}  // namespace brisko::platform::macos
