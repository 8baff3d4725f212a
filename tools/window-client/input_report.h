#pragma once

#include <functional>
#include <optional>
#include <string>

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

namespace window_client {

// Describes the input events that reach the client's windows, one line each, with key events
// decoded through the server's keymap as a toolkit reads it.
class InputReport {
public:
    using WindowName = std::function<std::string(xcb_window_t)>;

    InputReport(xcb_connection_t* connection, WindowName name);
    ~InputReport();
    InputReport(const InputReport&) = delete;
    InputReport& operator=(const InputReport&) = delete;

    // The line for a pointer or key event; absent for other events (a change of the keymap is
    // taken in here).
    std::optional<std::string> describe(const xcb_generic_event_t* event);
    // "state KEYS STATE X Y": the keycodes held down, the pointer's modifiers, buttons and position.
    std::string heldState(xcb_window_t root);
    // "found KEYCODES": the keycodes whose keysyms in the keymap now include the keysym.
    std::string keycodesOf(xcb_keysym_t keysym);

private:
    void loadKeymap();

    xcb_connection_t* connection_;
    WindowName name_;
    xcb_key_symbols_t* symbols_ = nullptr;
};

}  // namespace window_client
