#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

class ScreenCapture {
public:
    virtual ~ScreenCapture() = default;
    // Every display and application, desktop windows and off-screen windows included.
    virtual ShareableContentResult shareableContent() = 0;
    virtual std::uint32_t mainDisplayID() = 0;
};

}  // namespace brisko::platform
