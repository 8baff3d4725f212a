#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "input/key_vocabulary.h"
#include "platform/event_poster.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_keyboard.h"

namespace brisko::platform::x11 {

// Posts the program's events as XTEST input. X has no modifier flags on an event, only modifier
// keys held on the server, so the keys are brought to the event's flags for the moment of the
// event and then back to its flagsAfter: a click stamped with shift is a shift-click, and leaves
// shift as it found it. After each event the poster waits until the server has handled it, so
// that a process that exits right after its last event has delivered them all.
class X11EventPoster final : public EventPoster {
public:
    explicit X11EventPoster(X11Connection& connection) : connection_(connection), keyboard_(connection) {}
    // False, with nothing posted, when XTEST is missing or the event's key has no keysym on the
    // server.
    bool post(const InputEvent& event) override;

private:
    using KeyState = std::array<std::uint8_t, 32>;  // one bit per keycode

    void postPointer(const InputEvent& event, KeyState& keys);
    // Returns once the pointer is at (x, y) with the buttons of the mask down (or up).
    void awaitPointer(std::int16_t x, std::int16_t y, std::uint16_t mask, bool down);
    void postScroll(const InputEvent& event, KeyState& keys);
    // The key that types the key code's keysym; absent when the code has none on the server.
    std::optional<X11Keyboard::Key> keyFor(KeyCode code);
    void postKey(const InputEvent& event, X11Keyboard::Key key, KeyState& keys);
    void typeText(const std::u16string& text, EventFlags flags, KeyState& keys);
    // Presses and releases modifier keys until exactly the modifiers of flags are held. A group
    // that must be pressed uses the preferred key when it is one of the group's, else its left
    // key; the key except is left alone (it is the event's own key).
    void holdModifiers(KeyState& keys, EventFlags flags, xcb_keysym_t preferred = 0, xcb_keycode_t except = 0);
    KeyState keysDown();
    // Presses or releases the key, and records it in keys.
    void sendKey(KeyState& keys, xcb_keycode_t code, bool down);
    void fakeInput(std::uint8_t eventType, std::uint8_t detail);

    X11Connection& connection_;
    X11Keyboard keyboard_;
};

}  // namespace brisko::platform::x11
