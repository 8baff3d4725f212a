#include "backends/x11/x11_keyboard.h"

#include <algorithm>
#include <cstdlib>
#include <thread>

namespace brisko::platform::x11 {
namespace {

// A one-shot process ends with exit(), which does not unwind to the backend's destructor; the
// keyboard with bound spares is restored from an exit handler then. Cleared when it is destroyed.
X11Keyboard* keyboardToRestoreAtExit = nullptr;

void restoreAtExit() {
    if (keyboardToRestoreAtExit) keyboardToRestoreAtExit->restoreKeymap();
}

void restoreThisAtExit(X11Keyboard* keyboard) {
    static const bool registered = std::atexit(restoreAtExit) == 0;
    if (registered) keyboardToRestoreAtExit = keyboard;
}

// Columns of a keycode's core keysym list that xcb-keysyms reads: two levels of two groups, and
// the extra columns some keymaps carry.
constexpr int keysymColumns = 8;

}  // namespace

X11Keyboard::~X11Keyboard() {
    restoreKeymap();
    if (keyboardToRestoreAtExit == this) keyboardToRestoreAtExit = nullptr;
    if (symbols_) xcb_key_symbols_free(symbols_);
}

xcb_key_symbols_t* X11Keyboard::symbols() {
    if (!symbols_) {
        xcb_connection_t* connection = connection_.get();
        if (connection) symbols_ = xcb_key_symbols_alloc(connection);
    }
    return symbols_;
}

std::vector<xcb_keycode_t> X11Keyboard::keycodesOf(xcb_keysym_t sym) {
    std::vector<xcb_keycode_t> codes;
    xcb_key_symbols_t* table = symbols();
    if (!table) return codes;
    XcbReply<xcb_keycode_t> found(xcb_key_symbols_get_keycode(table, sym));
    for (const xcb_keycode_t* code = found.get(); code && *code != XCB_NO_SYMBOL; ++code) {
        if (xcb_key_symbols_get_keysym(table, *code, 0) == sym ||
            xcb_key_symbols_get_keysym(table, *code, 1) == sym) {
            codes.push_back(*code);
        }
    }
    return codes;
}

const std::array<X11Keyboard::ModifierKeycodes, modifierGroupCount>& X11Keyboard::modifierKeycodes() {
    if (!modifierKeycodes_) {
        modifierKeycodes_.emplace();
        for (std::size_t i = 0; i < modifierGroupCount; ++i) {
            (*modifierKeycodes_)[i] = {keycodesOf(modifierKeys()[i].left), keycodesOf(modifierKeys()[i].right)};
        }
    }
    return *modifierKeycodes_;
}

std::optional<X11Keyboard::Key> X11Keyboard::keyFor(xcb_keysym_t sym) {
    if (spares_) {
        for (Spare& spare : *spares_) {
            if (spare.bound == sym) {
                spare.lastUse = Clock::now();
                return Key{spare.code, false};
            }
        }
    }
    std::optional<Key> shifted;
    for (const xcb_keycode_t code : keycodesOf(sym)) {
        if (xcb_key_symbols_get_keysym(symbols_, code, 0) == sym) return Key{code, false};
        if (!shifted) shifted = Key{code, true};
    }
    if (shifted) return shifted;
    if (const auto code = bindSpare(sym)) return Key{*code, false};
    return std::nullopt;
}

void X11Keyboard::findSpares() {
    spares_.emplace();
    xcb_key_symbols_t* table = symbols();
    if (!table) return;
    const xcb_setup_t* setup = xcb_get_setup(connection_.get());
    for (int code = setup->min_keycode; code <= setup->max_keycode; ++code) {
        bool empty = true;
        for (int column = 0; column < keysymColumns && empty; ++column) {
            empty = xcb_key_symbols_get_keysym(table, static_cast<xcb_keycode_t>(code), column) == XCB_NO_SYMBOL;
        }
        if (empty) spares_->push_back({static_cast<xcb_keycode_t>(code), 0, {}});
    }
}

std::optional<xcb_keycode_t> X11Keyboard::bindSpare(xcb_keysym_t sym) {
    if (!spares_) findSpares();
    if (spares_->empty()) return std::nullopt;
    // Unbound spares were never used, so they go first; then the one used longest ago.
    Spare& spare = *std::min_element(spares_->begin(), spares_->end(),
                                     [](const Spare& a, const Spare& b) { return a.lastUse < b.lastUse; });
    if (spare.bound != 0) std::this_thread::sleep_until(spare.lastUse + settleTime);
    setKeysym(spare.code, sym);
    // The change must be in force before the key that uses it is pressed.
    connection_.sync();
    spare.bound = sym;
    spare.lastUse = Clock::now();
    restoreThisAtExit(this);
    return spare.code;
}

void X11Keyboard::setKeysym(xcb_keycode_t code, xcb_keysym_t sym) {
    xcb_connection_t* connection = connection_.get();
    if (!connection) return;
    // The same keysym at both levels, so that it types whether or not shift is held. A spare
    // had no keysyms at all, so binding NoSymbol restores it.
    const xcb_keysym_t levels[2] = {sym, sym};
    xcb_change_keyboard_mapping(connection, 1, code, 2, levels);
}

void X11Keyboard::restoreKeymap() {
    if (!spares_) return;
    Clock::time_point lastUse{};
    for (const Spare& spare : *spares_) {
        if (spare.bound != 0) lastUse = std::max(lastUse, spare.lastUse);
    }
    if (lastUse == Clock::time_point{}) return;
    std::this_thread::sleep_until(lastUse + settleTime);
    for (Spare& spare : *spares_) {
        if (spare.bound == 0) continue;
        setKeysym(spare.code, XCB_NO_SYMBOL);
        spare = {spare.code, 0, {}};
    }
    connection_.sync();
}

}  // namespace brisko::platform::x11
