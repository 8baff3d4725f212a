#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "input/key_vocabulary.h"
#include "platform/event_poster.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_keyboard.h"

namespace brisko::platform::x11 {

// Posts the program's events as XTEST input. Before each event the modifier keys held on the
// server are brought to the event's flags, so that a click stamped with shift is a shift-click;
// after it the poster waits until the server has handled it, so that a process that exits right
// after its last event has delivered them all.
class X11EventPoster final : public EventPoster {
public:
    explicit X11EventPoster(X11Connection& connection) : connection_(connection), keyboard_(connection) {}
    bool post(const InputEvent& event) override;

private:
    using KeyState = std::array<std::uint8_t, 32>;  // one bit per keycode

    void postPointer(const InputEvent& event);
    void postScroll(const InputEvent& event);
    void postKey(const InputEvent& event);
    void postFlagsChanged(const InputEvent& event);
    void typeText(const std::u16string& text, EventFlags flags);
    // Presses and releases modifier keys until exactly the modifiers of flags are held. A group
    // that must be pressed uses the preferred key when it is one of the group's, else its left
    // key; the key except is left alone (it is the event's own key).
    void holdModifiers(EventFlags flags, xcb_keysym_t preferred = 0, xcb_keycode_t except = 0);
    KeyState keysDown();
    void fakeInput(std::uint8_t eventType, std::uint8_t detail);

    X11Connection& connection_;
    X11Keyboard keyboard_;
};

}  // namespace brisko::platform::x11
