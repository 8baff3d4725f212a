#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/geometry.h"

namespace brisko::platform {

// Event type numbers are the program's vocabulary on every platform (the CoreGraphics values).
namespace event_type {
inline constexpr std::uint32_t leftMouseDown = 1;
inline constexpr std::uint32_t leftMouseUp = 2;
inline constexpr std::uint32_t rightMouseDown = 3;
inline constexpr std::uint32_t rightMouseUp = 4;
inline constexpr std::uint32_t mouseMoved = 5;
inline constexpr std::uint32_t leftMouseDragged = 6;
inline constexpr std::uint32_t rightMouseDragged = 7;
inline constexpr std::uint32_t keyDown = 10;
inline constexpr std::uint32_t keyUp = 11;
inline constexpr std::uint32_t flagsChanged = 12;
inline constexpr std::uint32_t scrollWheel = 22;
inline constexpr std::uint32_t otherMouseDown = 25;
inline constexpr std::uint32_t otherMouseUp = 26;
inline constexpr std::uint32_t otherMouseDragged = 27;
}  // namespace event_type

// One decided event: everything a backend needs to create and post it, nothing it must decide.
struct InputEvent {
    std::uint32_t type = 0;
    Point point;                             // pointer events
    std::uint32_t button = 0;                // pointer events: 0 left, 1 right, 2 middle
    std::optional<std::int64_t> clickState;  // set only when the logic sets the field
    std::uint16_t keyCode = 0;               // keyboard events: macOS virtual key code
    std::uint64_t flags = 0;                 // modifiers held while the event happens
    // Modifiers held once the event is over: those whose keys the process holds down (for a
    // flags-changed event, its own flags). A backend whose modifiers are keys rather than stamps
    // brings them back to these, so that an event's flags never change what stays held.
    std::uint64_t flagsAfter = 0;
    std::u16string text;                     // keyboard events: Unicode string, may be empty
    std::int32_t scrollLines = 0;            // scroll events: line delta, positive is up

    bool operator==(const InputEvent&) const = default;
};

class EventPoster {
public:
    virtual ~EventPoster() = default;
    // Creates the event and posts it at the HID level. False when the event could not be created.
    virtual bool post(const InputEvent& event) = 0;
};

}  // namespace brisko::platform
