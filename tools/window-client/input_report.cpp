#include "input_report.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include <X11/keysym.h>

namespace window_client {
namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeDeleter>;

std::string stateNames(std::uint16_t state) {
    static const std::pair<std::uint16_t, const char*> names[] = {
        {XCB_MOD_MASK_SHIFT, "shift"},  {XCB_MOD_MASK_LOCK, "lock"},    {XCB_MOD_MASK_CONTROL, "ctrl"},
        {XCB_MOD_MASK_1, "alt"},        {XCB_MOD_MASK_2, "mod2"},       {XCB_MOD_MASK_3, "mod3"},
        {XCB_MOD_MASK_4, "super"},      {XCB_MOD_MASK_5, "mod5"},       {XCB_BUTTON_MASK_1, "button1"},
        {XCB_BUTTON_MASK_2, "button2"}, {XCB_BUTTON_MASK_3, "button3"}, {XCB_BUTTON_MASK_4, "button4"},
        {XCB_BUTTON_MASK_5, "button5"},
    };
    std::string out;
    for (const auto& [mask, name] : names) {
        if (!(state & mask)) continue;
        if (!out.empty()) out += '+';
        out += name;
    }
    return out.empty() ? "none" : out;
}

// The character a keysym types, as a code point; 0 when it types none.
std::uint32_t characterOf(xcb_keysym_t sym) {
    if ((sym >= 0x20 && sym <= 0x7E) || (sym >= 0xA0 && sym <= 0xFF)) return sym;
    if (sym >= 0x01000100 && sym <= 0x0110FFFF) return sym - 0x01000000;
    switch (sym) {
        case XK_Return: return '\n';
        case XK_Tab: return '\t';
        case XK_BackSpace: return '\b';
        default: return 0;
    }
}

std::string hex(const char* format, std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

InputReport::InputReport(xcb_connection_t* connection, WindowName name)
    : connection_(connection), name_(std::move(name)) {
    loadKeymap();
}

InputReport::~InputReport() { xcb_key_symbols_free(symbols_); }

void InputReport::loadKeymap() {
    if (symbols_) xcb_key_symbols_free(symbols_);
    symbols_ = xcb_key_symbols_alloc(connection_);
    // xcb-keysyms asks for the keymap now and reads the answer on first use: read it now.
    xcb_key_symbols_get_keysym(symbols_, xcb_get_setup(connection_)->min_keycode, 0);
}

std::optional<std::string> InputReport::describe(const xcb_generic_event_t* event) {
    const std::uint8_t type = event->response_type & 0x7F;
    switch (type) {
        case XCB_MOTION_NOTIFY: {
            const auto* e = reinterpret_cast<const xcb_motion_notify_event_t*>(event);
            return "motion " + name_(e->event) + " " + std::to_string(e->root_x) + " " + std::to_string(e->root_y) +
                   " " + stateNames(e->state);
        }
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE: {
            const auto* e = reinterpret_cast<const xcb_button_press_event_t*>(event);
            return std::string(type == XCB_BUTTON_PRESS ? "press " : "release ") + name_(e->event) + " " +
                   std::to_string(e->detail) + " " + std::to_string(e->root_x) + " " + std::to_string(e->root_y) +
                   " " + stateNames(e->state);
        }
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE: {
            const auto* e = reinterpret_cast<const xcb_key_press_event_t*>(event);
            // The shift level when shift is held and the key has one, as Xlib reads a keymap.
            xcb_keysym_t sym = xcb_key_symbols_get_keysym(symbols_, e->detail, 0);
            if (e->state & XCB_MOD_MASK_SHIFT) {
                const xcb_keysym_t shifted = xcb_key_symbols_get_keysym(symbols_, e->detail, 1);
                if (shifted != XCB_NO_SYMBOL) sym = shifted;
            }
            std::string line = std::string(type == XCB_KEY_PRESS ? "keypress " : "keyrelease ") + name_(e->event) +
                               " " + std::to_string(e->detail) + " " + hex("0x%x", sym) + " " + stateNames(e->state);
            if (type == XCB_KEY_PRESS) {
                const std::uint32_t character = characterOf(sym);
                line += character ? hex(" U+%04X", character) : " -";
            }
            return line;
        }
        case XCB_MAPPING_NOTIFY:
            // Fetched afresh at once, as toolkits do. (xcb_refresh_keyboard_mapping would keep an
            // older request's answer when a second change comes before it is read.)
            if (reinterpret_cast<const xcb_mapping_notify_event_t*>(event)->request == XCB_MAPPING_KEYBOARD) {
                loadKeymap();
            }
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

std::string InputReport::heldState(xcb_window_t root) {
    Reply<xcb_query_keymap_reply_t> keymap(xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
    Reply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root), nullptr));
    if (!keymap || !pointer) return "error the server did not answer";
    std::string keys;
    for (int code = 0; code < 256; ++code) {
        if (!((keymap->keys[code / 8] >> (code % 8)) & 1)) continue;
        if (!keys.empty()) keys += ',';
        keys += std::to_string(code);
    }
    return "state " + (keys.empty() ? std::string("none") : keys) + " " + stateNames(pointer->mask) + " " +
           std::to_string(pointer->root_x) + " " + std::to_string(pointer->root_y);
}

std::string InputReport::keycodesOf(xcb_keysym_t keysym) {
    loadKeymap();  // the keymap as the server holds it now
    std::string codes;
    if (keysym != XCB_NO_SYMBOL) {
        Reply<xcb_keycode_t> found(xcb_key_symbols_get_keycode(symbols_, keysym));
        for (const xcb_keycode_t* code = found.get(); code && *code != XCB_NO_SYMBOL; ++code) {
            if (!codes.empty()) codes += ',';
            codes += std::to_string(*code);
        }
    }
    return "found " + (codes.empty() ? std::string("none") : codes);
}

}  // namespace window_client
