// Input as CoreGraphics events from one event source, posted at the HID event tap.
#import <CoreGraphics/CoreGraphics.h>

#include <mutex>

#include "backends/macos/cf_owned.h"
#include "backends/macos/macos_services.h"

namespace brisko::platform::macos {
namespace {

class MacEventPoster final : public EventPoster {
public:
    bool post(const InputEvent& event) override {
        const CFOwned<CGEventRef> created(create(event));
        if (!created) return false;
        CGEventSetFlags(created.get(), static_cast<CGEventFlags>(event.flags));
        CGEventPost(kCGHIDEventTap, created.get());
        return true;
    }

private:
    CGEventRef create(const InputEvent& event) {
        CGEventSourceRef from = source();
        switch (event.type) {
            case event_type::leftMouseDown:
            case event_type::leftMouseUp:
            case event_type::rightMouseDown:
            case event_type::rightMouseUp:
            case event_type::mouseMoved:
            case event_type::leftMouseDragged:
            case event_type::rightMouseDragged:
            case event_type::otherMouseDown:
            case event_type::otherMouseUp:
            case event_type::otherMouseDragged: {
                CGEventRef mouse = CGEventCreateMouseEvent(from, static_cast<CGEventType>(event.type),
                                                           CGPointMake(event.point.x, event.point.y),
                                                           static_cast<CGMouseButton>(event.button));
                if (mouse && event.clickState) {
                    CGEventSetIntegerValueField(mouse, kCGMouseEventClickState, *event.clickState);
                }
                return mouse;
            }
            case event_type::keyDown:
            case event_type::keyUp: {
                CGEventRef key = CGEventCreateKeyboardEvent(from, event.keyCode, event.type == event_type::keyDown);
                if (key && !event.text.empty()) {
                    CGEventKeyboardSetUnicodeString(key, event.text.size(),
                                                    reinterpret_cast<const UniChar*>(event.text.data()));
                }
                return key;
            }
            case event_type::flagsChanged: {
                // A modifier change is a key-down event of the modifier's key turned into a flags
                // change; its flags say what is held after it, press or release alike.
                CGEventRef change = CGEventCreateKeyboardEvent(from, event.keyCode, true);
                if (change) CGEventSetType(change, kCGEventFlagsChanged);
                return change;
            }
            case event_type::scrollWheel:
                return CGEventCreateScrollWheelEvent2(from, kCGScrollEventUnitLine, 1, event.scrollLines, 0, 0);
            default:
                return nullptr;
        }
    }

    // Created on first use, then shared by every event. Absent when creation fails; the
    // constructors accept an absent source.
    CGEventSourceRef source() {
        std::call_once(sourceCreated_,
                       [this] { source_.reset(CGEventSourceCreate(kCGEventSourceStateHIDSystemState)); });
        return source_.get();
    }

    std::once_flag sourceCreated_;
    CFOwned<CGEventSourceRef> source_;
};

}  // namespace

std::unique_ptr<EventPoster> makeEventPoster() { return std::make_unique<MacEventPoster>(); }

}  // namespace brisko::platform::macos
