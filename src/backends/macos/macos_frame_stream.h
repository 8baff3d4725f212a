#pragma once

#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <functional>
#include <memory>

#include "platform/screen_capture.h"

namespace brisko::platform::macos {

// The system's filter for one of ours; nil when it cannot be made (its display is not listed).
using ContentFilterMaker = std::function<SCContentFilter*(const CaptureFilter&)>;

// A ScreenCaptureKit stream with the filter and configuration, delivering on the serial queue
// "com.brisko.capture-stream". Without a filter every call of the stream reports that the
// display is not listed. makeFilter serves the stream's filter updates.
std::unique_ptr<FrameStream> makeFrameStream(SCContentFilter* filter, SCStreamConfiguration* configuration,
                                             ContentFilterMaker makeFilter);

}  // namespace brisko::platform::macos
