// Permissions, the HID modifier state, the main display and the login session.
#import <ApplicationServices/ApplicationServices.h>
#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

#include "backends/macos/bridging.h"
#include "backends/macos/macos_services.h"

namespace brisko::platform::macos {

std::optional<PixelSize> displayModePixels(std::uint32_t displayID) {
    CGDisplayModeRef mode = CGDisplayCopyDisplayMode(displayID);
    if (!mode) return std::nullopt;
    const PixelSize pixels{static_cast<long long>(CGDisplayModeGetPixelWidth(mode)),
                           static_cast<long long>(CGDisplayModeGetPixelHeight(mode))};
    CGDisplayModeRelease(mode);
    return pixels;
}

namespace {

class MacSystemProbe final : public SystemProbe {
public:
    void requestPermissions() override {
        CGRequestScreenCaptureAccess();
        CGRequestPostEventAccess();
        // Accessibility trust is asked for with the system's own prompt; its answer is not used.
        @autoreleasepool {
            AXIsProcessTrustedWithOptions(
                (__bridge CFDictionaryRef) @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : @YES});
        }
    }

    bool screenCaptureAllowed() override { return CGPreflightScreenCaptureAccess(); }
    bool postEventAllowed() override { return CGPreflightPostEventAccess(); }
    std::uint64_t hidFlags() override { return CGEventSourceFlagsState(kCGEventSourceStateHIDSystemState); }

    Rect mainDisplayBounds() override {
        const CGRect bounds = CGDisplayBounds(CGMainDisplayID());
        return {bounds.origin.x, bounds.origin.y, bounds.size.width, bounds.size.height};
    }

    std::optional<PixelSize> mainDisplayPixelSize() override { return displayModePixels(CGMainDisplayID()); }

    std::optional<std::map<std::string, double>> sessionValues() override {
        @autoreleasepool {
            NSDictionary* session = CFBridgingRelease(CGSessionCopyCurrentDictionary());
            if (![session isKindOfClass:[NSDictionary class]]) return std::nullopt;
            std::map<std::string, double> values;
            for (id key in session) {
                const std::optional<PropertyNumber> number = propertyNumber(session[key]);
                if ([key isKindOfClass:[NSString class]] && number) values[utf8(key)] = asDouble(*number);
            }
            return values;
        }
    }

    bool displayAsleep() override { return CGDisplayIsAsleep(CGMainDisplayID()) != 0; }
};

}  // namespace

std::unique_ptr<SystemProbe> makeSystemProbe() { return std::make_unique<MacSystemProbe>(); }

}  // namespace brisko::platform::macos
