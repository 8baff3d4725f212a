// recording_window: maps X windows of the given geometry and reports, one line each on standard
// output, the input they receive. The end-to-end tests drive it through standard input.
//
//   recording_window X,Y,WIDTH,HEIGHT [X,Y,WIDTH,HEIGHT ...]
//
// Output lines (W is the window's index in the arguments, X Y are root coordinates, STATE is the
// event's modifier and button state as names joined by '+', or "none"):
//   ready                                   every window is mapped and window 0 has the focus
//   motion W X Y STATE
//   press W BUTTON X Y STATE                release W BUTTON X Y STATE
//   keypress W KEYCODE KEYSYM STATE TEXT    TEXT is U+XXXX, or "-" when the key types nothing
//   keyrelease W KEYCODE KEYSYM STATE
// Input lines:
//   sync    reports every event the server sent before this line, then "synced"
//   state   "state KEYS STATE X Y": the keycodes held down (joined by ',' or "none"), the
//           pointer's modifier and button state and its position
//   find KEYSYM          "found KEYCODES": the keycodes whose keysyms include KEYSYM (hex), in the
//                        server's keymap now, joined by ',' or "none"
//   saver on|off         activates or resets the screen saver, then "saver done"
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <X11/keysym.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xproto.h>

namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeDeleter>;

struct Window {
    xcb_window_t id = 0;
    bool exposed = false;
};

struct Recorder {
    xcb_connection_t* connection = nullptr;
    xcb_screen_t* screen = nullptr;
    xcb_key_symbols_t* symbols = nullptr;
    std::vector<Window> windows;
};

void emit(const std::string& line) {
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

std::string stateNames(std::uint16_t state) {
    static const std::pair<std::uint16_t, const char*> names[] = {
        {XCB_MOD_MASK_SHIFT, "shift"},     {XCB_MOD_MASK_LOCK, "lock"},      {XCB_MOD_MASK_CONTROL, "ctrl"},
        {XCB_MOD_MASK_1, "alt"},           {XCB_MOD_MASK_2, "mod2"},         {XCB_MOD_MASK_3, "mod3"},
        {XCB_MOD_MASK_4, "super"},         {XCB_MOD_MASK_5, "mod5"},         {XCB_BUTTON_MASK_1, "button1"},
        {XCB_BUTTON_MASK_2, "button2"},    {XCB_BUTTON_MASK_3, "button3"},   {XCB_BUTTON_MASK_4, "button4"},
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

int windowIndex(const Recorder& r, xcb_window_t id) {
    for (std::size_t i = 0; i < r.windows.size(); ++i) {
        if (r.windows[i].id == id) return static_cast<int>(i);
    }
    return -1;
}

std::string number(long value) { return std::to_string(value); }

void loadKeymap(Recorder& r) {
    if (r.symbols) xcb_key_symbols_free(r.symbols);
    r.symbols = xcb_key_symbols_alloc(r.connection);
    // xcb-keysyms asks for the keymap now and reads the answer on first use: read it now.
    xcb_key_symbols_get_keysym(r.symbols, xcb_get_setup(r.connection)->min_keycode, 0);
}

void report(Recorder& r, xcb_generic_event_t* event) {
    switch (event->response_type & 0x7F) {
        case XCB_EXPOSE: {
            const auto* e = reinterpret_cast<xcb_expose_event_t*>(event);
            const int w = windowIndex(r, e->window);
            if (w >= 0) r.windows[static_cast<std::size_t>(w)].exposed = true;
            break;
        }
        case XCB_MOTION_NOTIFY: {
            const auto* e = reinterpret_cast<xcb_motion_notify_event_t*>(event);
            emit("motion " + number(windowIndex(r, e->event)) + " " + number(e->root_x) + " " + number(e->root_y) +
                 " " + stateNames(e->state));
            break;
        }
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE: {
            const auto* e = reinterpret_cast<xcb_button_press_event_t*>(event);
            const bool press = (event->response_type & 0x7F) == XCB_BUTTON_PRESS;
            emit(std::string(press ? "press " : "release ") + number(windowIndex(r, e->event)) + " " +
                 number(e->detail) + " " + number(e->root_x) + " " + number(e->root_y) + " " + stateNames(e->state));
            break;
        }
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE: {
            const auto* e = reinterpret_cast<xcb_key_press_event_t*>(event);
            const bool press = (event->response_type & 0x7F) == XCB_KEY_PRESS;
            // The shift level when shift is held and the key has one, as Xlib reads a keymap.
            xcb_keysym_t sym = xcb_key_symbols_get_keysym(r.symbols, e->detail, 0);
            if (e->state & XCB_MOD_MASK_SHIFT) {
                const xcb_keysym_t shifted = xcb_key_symbols_get_keysym(r.symbols, e->detail, 1);
                if (shifted != XCB_NO_SYMBOL) sym = shifted;
            }
            char symText[16];
            std::snprintf(symText, sizeof symText, "0x%x", sym);
            std::string line = std::string(press ? "keypress " : "keyrelease ") + number(windowIndex(r, e->event)) +
                               " " + number(e->detail) + " " + symText + " " + stateNames(e->state);
            if (press) {
                const std::uint32_t character = characterOf(sym);
                char text[16] = "-";
                if (character) std::snprintf(text, sizeof text, "U+%04X", character);
                line += std::string(" ") + text;
            }
            emit(line);
            break;
        }
        case XCB_MAPPING_NOTIFY:
            // Fetched afresh at once, as toolkits do. (xcb_refresh_keyboard_mapping would keep an
            // older request's answer when a second change comes before it is read.)
            if (reinterpret_cast<xcb_mapping_notify_event_t*>(event)->request == XCB_MAPPING_KEYBOARD) {
                loadKeymap(r);
            }
            break;
        default:
            break;
    }
}

void drainQueued(Recorder& r) {
    while (xcb_generic_event_t* event = xcb_poll_for_queued_event(r.connection)) {
        report(r, event);
        std::free(event);
    }
}

void sync(Recorder& r) {
    // The server sends every event it generated before it answers this request.
    Reply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(r.connection, xcb_get_input_focus(r.connection), nullptr));
    drainQueued(r);
}

void reportState(Recorder& r) {
    sync(r);
    Reply<xcb_query_keymap_reply_t> keymap(
        xcb_query_keymap_reply(r.connection, xcb_query_keymap(r.connection), nullptr));
    Reply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(r.connection, xcb_query_pointer(r.connection, r.screen->root), nullptr));
    if (!keymap || !pointer) std::exit(1);
    std::string keys;
    for (int code = 0; code < 256; ++code) {
        if (!((keymap->keys[code / 8] >> (code % 8)) & 1)) continue;
        if (!keys.empty()) keys += ',';
        keys += number(code);
    }
    emit("state " + (keys.empty() ? std::string("none") : keys) + " " + stateNames(pointer->mask) + " " +
         number(pointer->root_x) + " " + number(pointer->root_y));
}

void reportKeycodesOf(Recorder& r, const std::string& hex) {
    loadKeymap(r);  // the keymap as the server holds it now
    const auto sym = static_cast<xcb_keysym_t>(std::strtoul(hex.c_str(), nullptr, 16));
    std::string codes;
    if (sym != XCB_NO_SYMBOL) {
        Reply<xcb_keycode_t> found(xcb_key_symbols_get_keycode(r.symbols, sym));
        for (const xcb_keycode_t* code = found.get(); code && *code != XCB_NO_SYMBOL; ++code) {
            if (!codes.empty()) codes += ',';
            codes += number(*code);
        }
    }
    emit("found " + (codes.empty() ? std::string("none") : codes));
}

void setScreenSaver(Recorder& r, bool on) {
    xcb_force_screen_saver(r.connection, on ? XCB_SCREEN_SAVER_ACTIVE : XCB_SCREEN_SAVER_RESET);
    sync(r);
    emit("saver done");
}

bool parseGeometry(const char* text, int out[4]) {
    return std::sscanf(text, "%d,%d,%d,%d", &out[0], &out[1], &out[2], &out[3]) == 4 && out[2] > 0 && out[3] > 0;
}

void mapWindows(Recorder& r, int count, char** geometries) {
    // Distinct backgrounds, so that a screenshot tells the windows apart.
    static const std::uint32_t colors[] = {0xffffff, 0x3060c0, 0xc04030, 0x30a050, 0xe0c020};
    for (int i = 0; i < count; ++i) {
        int g[4];
        if (!parseGeometry(geometries[i], g)) {
            std::fprintf(stderr, "recording_window: bad geometry '%s' (want X,Y,WIDTH,HEIGHT)\n", geometries[i]);
            std::exit(2);
        }
        const xcb_window_t id = xcb_generate_id(r.connection);
        const std::uint32_t values[] = {
            colors[static_cast<std::size_t>(i) % std::size(colors)],
            1,  // override-redirect: a window manager, if any, leaves the geometry alone
            XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION,
        };
        xcb_create_window(r.connection, XCB_COPY_FROM_PARENT, id, r.screen->root, static_cast<std::int16_t>(g[0]),
                          static_cast<std::int16_t>(g[1]), static_cast<std::uint16_t>(g[2]),
                          static_cast<std::uint16_t>(g[3]), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, r.screen->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
        xcb_map_window(r.connection, id);
        r.windows.push_back({id, false});
    }
    xcb_flush(r.connection);
    auto allExposed = [&] {
        for (const Window& w : r.windows) {
            if (!w.exposed) return false;
        }
        return true;
    };
    while (!allExposed()) {
        xcb_generic_event_t* event = xcb_wait_for_event(r.connection);
        if (!event) std::exit(1);
        report(r, event);
        std::free(event);
    }
    xcb_set_input_focus(r.connection, XCB_INPUT_FOCUS_POINTER_ROOT, r.windows.front().id, XCB_CURRENT_TIME);
    sync(r);
    emit("ready");
}

// Handles the input lines; false at end of input.
bool readCommands(Recorder& r, std::string& pending) {
    char buffer[256];
    const ssize_t n = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (n <= 0) return false;
    pending.append(buffer, static_cast<std::size_t>(n));
    for (std::size_t end; (end = pending.find('\n')) != std::string::npos;) {
        const std::string line = pending.substr(0, end);
        pending.erase(0, end + 1);
        if (line == "sync") {
            sync(r);
            emit("synced");
        } else if (line == "state") {
            reportState(r);
        } else if (line.starts_with("find ")) {
            reportKeycodesOf(r, line.substr(5));
        } else if (line == "saver on" || line == "saver off") {
            setScreenSaver(r, line == "saver on");
        } else {
            std::fprintf(stderr, "recording_window: unknown command '%s'\n", line.c_str());
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: recording_window X,Y,WIDTH,HEIGHT [X,Y,WIDTH,HEIGHT ...]\n");
        return 2;
    }
    Recorder r;
    int screenNumber = 0;
    r.connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(r.connection)) {
        std::fprintf(stderr, "recording_window: cannot open the display\n");
        return 1;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(r.connection));
    for (int i = 0; i < screenNumber; ++i) xcb_screen_next(&screens);
    r.screen = screens.data;
    loadKeymap(r);
    mapWindows(r, argc - 1, argv + 1);

    std::string pending;
    pollfd fds[2] = {{STDIN_FILENO, POLLIN, 0}, {xcb_get_file_descriptor(r.connection), POLLIN, 0}};
    for (;;) {
        if (::poll(fds, 2, -1) < 0) continue;
        if (fds[1].revents) {
            while (xcb_generic_event_t* event = xcb_poll_for_event(r.connection)) {
                report(r, event);
                std::free(event);
            }
            if (xcb_connection_has_error(r.connection)) return 1;
        }
        if (fds[0].revents && !readCommands(r, pending)) break;
    }
    xcb_key_symbols_free(r.symbols);
    xcb_disconnect(r.connection);
    return 0;
}
