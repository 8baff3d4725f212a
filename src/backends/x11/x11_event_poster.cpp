#include "backends/x11/x11_event_poster.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <thread>

#include <xcb/xtest.h>

#include "backends/x11/x11_key_table.h"
#include "backends/x11/x11_monitors.h"
#include "cli/unicode_text.h"

namespace brisko::platform::x11 {
namespace {

namespace type = event_type;

// X button numbers of the program's buttons 0 left, 1 right, 2 middle; further buttons follow
// the wheel's four buttons (X button 8 is the program's button 3).
std::uint8_t xButton(std::uint32_t button) {
    constexpr std::uint8_t named[] = {1, 3, 2};
    return button < 3 ? named[button] : static_cast<std::uint8_t>(std::min<std::uint32_t>(button + 5, 255));
}

// The state bit of X buttons 1 to 5; none for the others.
std::uint16_t buttonMask(std::uint8_t button) {
    return button >= 1 && button <= 5 ? static_cast<std::uint16_t>(XCB_BUTTON_MASK_1 << (button - 1)) : 0;
}

constexpr std::uint8_t wheelUpButton = 4;
constexpr std::uint8_t wheelDownButton = 5;

std::int16_t coordinate(double value) {
    constexpr double low = std::numeric_limits<std::int16_t>::min();
    constexpr double high = std::numeric_limits<std::int16_t>::max();
    if (!(value >= low)) return static_cast<std::int16_t>(low);  // NaN too
    return static_cast<std::int16_t>(std::lround(std::min(value, high)));
}

bool isDown(const std::array<std::uint8_t, 32>& keys, xcb_keycode_t code) {
    return (keys[code / 8] >> (code % 8)) & 1;
}

}  // namespace

bool X11EventPoster::post(const InputEvent& event) {
    if (!connection_.get() || !connection_.hasExtension(xcb_test_id)) return false;
    KeyState keys = keysDown();
    xcb_keycode_t ownKey = 0;  // a key the event presses that is also a modifier key
    switch (event.type) {
        case type::mouseMoved:
        case type::leftMouseDragged:
        case type::rightMouseDragged:
        case type::otherMouseDragged:
        case type::leftMouseDown:
        case type::leftMouseUp:
        case type::rightMouseDown:
        case type::rightMouseUp:
        case type::otherMouseDown:
        case type::otherMouseUp:
            postPointer(event, keys);
            break;
        case type::scrollWheel:
            postScroll(event, keys);
            break;
        case type::keyDown:
        case type::keyUp:
            // An X key press carries one keysym, so a whole text is typed on its key-down event,
            // and its key-up has nothing left to post.
            if (!event.text.empty()) {
                if (event.type == type::keyDown) typeText(event.text, event.flags, keys);
                break;
            }
            if (const auto key = keyFor(event.keyCode)) {
                postKey(event, *key, keys);
                ownKey = key->code;
                break;
            }
            return false;
        case type::flagsChanged:
            holdModifiers(keys, event.flags, keysymForKeyCode(event.keyCode).value_or(0));
            break;
        default:
            break;
    }
    holdModifiers(keys, event.flagsAfter, 0, ownKey);
    return connection_.sync();
}

void X11EventPoster::postPointer(const InputEvent& event, KeyState& keys) {
    xcb_connection_t* connection = connection_.get();
    // Asked now, answered while the modifiers are brought to the flags.
    const xcb_query_pointer_cookie_t where = xcb_query_pointer(connection, connection_.root());
    holdModifiers(keys, event.flags);
    // X delivers a button event where the pointer is, so the pointer goes to the event's point
    // first; a pointer already there is not moved, as a motion to its own place is still reported.
    XcbReply<xcb_query_pointer_reply_t> pointer(xcb_query_pointer_reply(connection, where, nullptr));
    // Points count from the main display's corner.
    const Rect main = mainDisplayBounds(connection, connection_.screen());
    const std::int16_t x = coordinate(event.point.x + main.x);
    const std::int16_t y = coordinate(event.point.y + main.y);
    if (!pointer || !pointer->same_screen || pointer->root_x != x || pointer->root_y != y) {
        xcb_test_fake_input(connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, connection_.root(), x, y, XCB_NONE);
    }
    const std::uint8_t button = xButton(event.button);
    std::optional<bool> down;  // what the button becomes
    switch (event.type) {
        case type::leftMouseDown:
        case type::rightMouseDown:
        case type::otherMouseDown:
            fakeInput(XCB_BUTTON_PRESS, button);
            down = true;
            break;
        case type::leftMouseUp:
        case type::rightMouseUp:
        case type::otherMouseUp:
            fakeInput(XCB_BUTTON_RELEASE, button);
            down = false;
            break;
        default:
            break;
    }
    awaitPointer(x, y, down ? buttonMask(button) : 0, down.value_or(false));
}

void X11EventPoster::awaitPointer(std::int16_t x, std::int16_t y, std::uint16_t mask, bool down) {
    // A window manager that takes presses with a synchronous grab (to focus the window clicked)
    // freezes the pointer until it lets the press go on. Events sent meanwhile wait in the
    // server's queue and come out of it garbled (a click seen as a drag, a press lost), so the
    // next event waits until the server has acted on this one, for a moment at most.
    xcb_connection_t* connection = connection_.get();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(250);
    for (;;) {
        const XcbReply<xcb_query_pointer_reply_t> pointer(
            xcb_query_pointer_reply(connection, xcb_query_pointer(connection, connection_.root()), nullptr));
        if (!pointer || !pointer->same_screen) return;
        if (pointer->root_x == x && pointer->root_y == y && ((pointer->mask & mask) != 0) == down) return;
        if (std::chrono::steady_clock::now() > deadline) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void X11EventPoster::postScroll(const InputEvent& event, KeyState& keys) {
    holdModifiers(keys, event.flags);
    if (event.scrollLines == 0) return;
    // One scroll event is one click of the wheel, whatever its line count.
    const std::uint8_t button = event.scrollLines > 0 ? wheelUpButton : wheelDownButton;
    fakeInput(XCB_BUTTON_PRESS, button);
    fakeInput(XCB_BUTTON_RELEASE, button);
}

std::optional<X11Keyboard::Key> X11EventPoster::keyFor(KeyCode code) {
    const auto sym = keysymForKeyCode(code);
    return sym ? keyboard_.keyFor(*sym) : std::nullopt;
}

void X11EventPoster::postKey(const InputEvent& event, X11Keyboard::Key key, KeyState& keys) {
    // A keysym at the key's shift level (the keypad's digits while num lock is off) needs shift
    // for the moment of the event.
    holdModifiers(keys, event.flags | (key.shifted ? flag::shift : 0), 0, key.code);
    sendKey(keys, key.code, event.type == type::keyDown);
}

void X11EventPoster::typeText(const std::u16string& text, EventFlags flags, KeyState& keys) {
    for (const char32_t character : scalarsOfUtf16(text)) {
        const auto key = keyboard_.keyFor(keysymForCharacter(character));
        if (!key) continue;
        // The character arrives as itself: shift only where its key needs it.
        holdModifiers(keys, (flags & ~flag::shift) | (key->shifted ? flag::shift : 0));
        sendKey(keys, key->code, true);
        sendKey(keys, key->code, false);
    }
}

void X11EventPoster::holdModifiers(KeyState& keys, EventFlags flags, xcb_keysym_t preferred, xcb_keycode_t except) {
    for (std::size_t i = 0; i < modifierGroupCount; ++i) {
        const ModifierKeys& group = modifierKeys()[i];
        const X11Keyboard::ModifierKeycodes& codes = keyboard_.modifierKeycodes()[i];
        const bool wanted = (flags & group.flag) != 0;
        bool held = false;
        for (const auto* side : {&codes.left, &codes.right}) {
            for (const xcb_keycode_t code : *side) {
                if (code == except || !isDown(keys, code)) continue;
                held = true;
                if (!wanted) sendKey(keys, code, false);
            }
        }
        if (!wanted || held) continue;
        const bool right = (preferred == group.right && !codes.right.empty()) || codes.left.empty();
        const std::vector<xcb_keycode_t>& side = right ? codes.right : codes.left;
        if (!side.empty() && side.front() != except) sendKey(keys, side.front(), true);
    }
}

X11EventPoster::KeyState X11EventPoster::keysDown() {
    KeyState keys{};
    xcb_connection_t* connection = connection_.get();
    if (!connection) return keys;
    XcbReply<xcb_query_keymap_reply_t> reply(xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr));
    if (reply) std::copy(std::begin(reply->keys), std::end(reply->keys), keys.begin());
    return keys;
}

void X11EventPoster::sendKey(KeyState& keys, xcb_keycode_t code, bool down) {
    fakeInput(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, code);
    const auto bit = static_cast<std::uint8_t>(1u << (code % 8));
    keys[code / 8] = static_cast<std::uint8_t>(down ? keys[code / 8] | bit : keys[code / 8] & ~bit);
}

void X11EventPoster::fakeInput(std::uint8_t eventType, std::uint8_t detail) {
    xcb_test_fake_input(connection_.get(), eventType, detail, XCB_CURRENT_TIME, XCB_NONE, 0, 0, XCB_NONE);
}

}  // namespace brisko::platform::x11
