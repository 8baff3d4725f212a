// The window server's list of on-screen windows, and the identity of the processes that own them.
#import <AppKit/AppKit.h>
#import <CoreGraphics/CoreGraphics.h>
#include <libproc.h>

#include <cstring>

#include "backends/macos/bridging.h"
#include "backends/macos/cf_owned.h"
#include "backends/macos/macos_services.h"
#include "ownui/window_list_entry.h"

namespace brisko::platform::macos {
namespace {

// One window dictionary's values as they are; the logic decides what makes a window of them.
WindowListEntry entryOf(NSDictionary* window) {
    WindowListEntry entry;
    entry.ownerPID = propertyNumber(window[(__bridge NSString*)kCGWindowOwnerPID]);
    id bounds = window[(__bridge NSString*)kCGWindowBounds];
    CGRect rect;
    if ([bounds isKindOfClass:[NSDictionary class]] &&
        CGRectMakeWithDictionaryRepresentation((__bridge CFDictionaryRef)bounds, &rect)) {
        entry.bounds = Rect{rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
    }
    entry.number = propertyNumber(window[(__bridge NSString*)kCGWindowNumber]);
    entry.alpha = propertyNumber(window[(__bridge NSString*)kCGWindowAlpha]);
    entry.layer = propertyNumber(window[(__bridge NSString*)kCGWindowLayer]);
    return entry;
}

class MacWindowServer final : public WindowServer {
public:
    std::vector<ScreenWindow> onScreenWindows() override {
        @autoreleasepool {
            NSArray* list = CFBridgingRelease(CGWindowListCopyWindowInfo(
                kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID));
            std::vector<ScreenWindow> windows;
            if (![list isKindOfClass:[NSArray class]]) return windows;
            for (id window in list) {
                // A list that is not all dictionaries is no window list.
                if (![window isKindOfClass:[NSDictionary class]]) return {};
                if (const std::optional<ScreenWindow> made = screenWindowOf(entryOf(window))) windows.push_back(*made);
            }
            return windows;
        }
    }

    std::optional<std::string> executablePath(std::int32_t pid) override {
        char path[PROC_PIDPATHINFO_MAXSIZE] = {};
        if (proc_pidpath(pid, path, sizeof path) < 1) return std::nullopt;
        return std::string(path, strnlen(path, sizeof path));
    }

    std::optional<std::string> bundleIdentifier(std::int32_t pid) override {
        @autoreleasepool {
            NSString* identifier = [NSRunningApplication runningApplicationWithProcessIdentifier:pid].bundleIdentifier;
            if (!identifier) return std::nullopt;
            return utf8(identifier);
        }
    }

    std::int64_t popUpMenuLayer() override { return CGWindowLevelForKey(kCGPopUpMenuWindowLevelKey); }

    // Keys go to the frontmost application, whose window the stacking order puts first.
    std::optional<std::uint32_t> keyboardFocusWindow() override { return std::nullopt; }

    // The window server names the owner of every window it lists.
    std::optional<std::string> ownerlessWindows() override { return std::nullopt; }
};

}  // namespace

std::unique_ptr<WindowServer> makeWindowServer() { return std::make_unique<MacWindowServer>(); }

}  // namespace brisko::platform::macos
