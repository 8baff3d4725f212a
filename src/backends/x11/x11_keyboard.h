#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xcb_keysyms.h>

#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_key_table.h"

namespace brisko::platform::x11 {

// The server's keyboard as the event poster needs it: which keycode types a keysym, and spare
// keycodes bound to keysyms that the keymap lacks (accented letters, CJK, emoji).
//
// A client decodes a key press with the keymap it fetches after the server announces a change,
// and it fetches when it gets to the announcement, which may be after the press was posted. A
// bound spare therefore stays bound, and is reused for the same keysym, until it is needed for
// another keysym (least recently used first) or the keyboard restores the keymap, when it is
// destroyed or the process exits; and neither happens sooner than settleTime after the spare's
// last press, so that clients a little behind still decode that press with its keysym.
class X11Keyboard {
public:
    static constexpr std::chrono::milliseconds settleTime{100};

    explicit X11Keyboard(X11Connection& connection) : connection_(connection) {}
    ~X11Keyboard();
    X11Keyboard(const X11Keyboard&) = delete;
    X11Keyboard& operator=(const X11Keyboard&) = delete;

    struct Key {
        xcb_keycode_t code = 0;
        bool shifted = false;  // the keysym is the key's second (shift) level
    };
    // The key that types sym: a keymap key with sym at its plain or shift level, else a spare
    // keycode bound to sym. Absent when the keymap is unreadable or has no spare keycode.
    std::optional<Key> keyFor(xcb_keysym_t sym);
    // Every keycode of the keymap with sym at its plain or shift level.
    std::vector<xcb_keycode_t> keycodesOf(xcb_keysym_t sym);
    // The keycodes of each group of modifierKeys(), in that order: asked for before every event,
    // so looked up once.
    struct ModifierKeycodes {
        std::vector<xcb_keycode_t> left;
        std::vector<xcb_keycode_t> right;
    };
    const std::array<ModifierKeycodes, modifierGroupCount>& modifierKeycodes();
    // Gives every bound spare keycode its own keysyms back.
    void restoreKeymap();

private:
    using Clock = std::chrono::steady_clock;
    struct Spare {
        xcb_keycode_t code = 0;
        xcb_keysym_t bound = 0;  // 0: not bound
        Clock::time_point lastUse{};
    };

    xcb_key_symbols_t* symbols();
    std::optional<xcb_keycode_t> bindSpare(xcb_keysym_t sym);
    void findSpares();
    void setKeysym(xcb_keycode_t code, xcb_keysym_t sym);

    X11Connection& connection_;
    xcb_key_symbols_t* symbols_ = nullptr;
    std::optional<std::vector<Spare>> spares_;  // found on first need
    std::optional<std::array<ModifierKeycodes, modifierGroupCount>> modifierKeycodes_;
};

}  // namespace brisko::platform::x11
