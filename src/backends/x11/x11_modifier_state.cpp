#include "backends/x11/x11_modifier_state.h"

#include <xcb/xcb_keysyms.h>

#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_key_table.h"

namespace brisko::platform::x11 {
namespace {

constexpr int modifierBits = 8;  // Shift, Lock, Control, Mod1 .. Mod5
constexpr int firstMappedBit = 3;

// Keysym columns of a keycode that may name a modifier key: both levels of both groups.
constexpr int keysymColumns = 4;

EventFlags flagsOfKey(xcb_key_symbols_t* symbols, xcb_keycode_t code) {
    EventFlags flags = 0;
    for (int column = 0; column < keysymColumns; ++column) {
        const xcb_keysym_t sym = xcb_key_symbols_get_keysym(symbols, code, column);
        for (const ModifierKeys& group : modifierKeys()) {
            if (sym != XCB_NO_SYMBOL && (sym == group.left || sym == group.right)) flags |= group.flag;
        }
    }
    return flags;
}

}  // namespace

EventFlags flagsOfModifierState(xcb_connection_t* connection, std::uint16_t state) {
    EventFlags flags = 0;
    if (state & XCB_MOD_MASK_SHIFT) flags |= flag::shift;
    if (state & XCB_MOD_MASK_LOCK) flags |= flag::capsLock;
    if (state & XCB_MOD_MASK_CONTROL) flags |= flag::control;
    if ((state >> firstMappedBit) == 0) return flags;
    XcbReply<xcb_get_modifier_mapping_reply_t> map(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection);
    if (map && symbols) {
        const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(map.get());
        const int perBit = map->keycodes_per_modifier;
        for (int bit = firstMappedBit; bit < modifierBits; ++bit) {
            if (!(state & (1u << bit))) continue;
            for (int i = 0; i < perBit; ++i) {
                if (codes[bit * perBit + i] != 0) flags |= flagsOfKey(symbols, codes[bit * perBit + i]);
            }
        }
    }
    if (symbols) xcb_key_symbols_free(symbols);
    return flags;
}

}  // namespace brisko::platform::x11
