// window_client: a small X client of the project's own that plays the other applications on a
// display for the tests, the demo and the benchmarks. It maps windows with the properties the
// guard reads, paints them, reports the input they receive, and takes part in the clipboard.
// Built twice: as window_client, and as brisko-mac-menubar, named like the host's menu-bar
// process. It reads commands on standard input, answers each with one line, and reports input
// on its windows as it comes; it exits at the end of its input.
//
//   map NAME X Y W H [options]  -> mapped NAME ID     options: see window_request.h; once mapped
//   unmap NAME                  -> unmapped NAME
//   focus NAME                  -> focused NAME       takes the keyboard focus, raising nothing
//   claim NAME                  -> claimed NAME       sets _NET_WM_PID now (see nopid)
//   paint NAME RRGGBB           -> painted NAME       once the server has painted it
//   sync                        -> synced             after every event the server sent before
//   state                       -> state KEYS STATE X Y   keycodes held down (joined by ',' or
//                                  "none"), the pointer's modifiers and buttons, its position
//   find KEYSYM                 -> found KEYCODES     keycodes bound to the keysym (hex) now
//   saver on|off                -> saver done         activates or resets the screen saver
//   wallpaper RRGGBB            -> wallpaper done     the root's background, published as
//                                  _XROOTPMAP_ID; it lasts while the client does
//   background RRGGBB           -> background done    the root's own background, published nowhere
//   warp X Y                    -> warped
//   own-clipboard [silent|targets-only] TARGET=TEXT ...  -> owning   TEXT has no "=", TIMESTAMP=N
//                                  gives a 32-bit number; a silent owner answers no request, a
//                                  targets-only one only those for TARGETS
//   disown                      -> disowned
//   clipboard-owner             -> owner ID           0 when nobody owns the clipboard
//   await-clipboard-owner ID    -> owner NEW          once another window than ID owns it
//   ask-clipboard TARGET        -> answer TYPE        the type the owner labels its answer with
// Unprompted, where W is the window's name, X Y root coordinates and STATE the event's modifiers
// and buttons joined by '+' ("none"):
//   motion W X Y STATE, press W BUTTON X Y STATE, release W BUTTON X Y STATE,
//   keypress W KEYCODE KEYSYM STATE TEXT (U+XXXX, or "-" when the key types nothing),
//   keyrelease W KEYCODE KEYSYM STATE
// A command it cannot carry out is answered with "error REASON".
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "clipboard_peer.h"
#include "input_report.h"
#include "window_request.h"

namespace window_client {
namespace {

void say(const std::string& line) {
    const std::string whole = line + "\n";
    if (::write(STDOUT_FILENO, whole.data(), whole.size()) < 0) std::exit(1);
}

std::uint32_t color(const std::string& hex) { return static_cast<std::uint32_t>(std::stoul(hex, nullptr, 16)); }

class Client {
public:
    explicit Client(xcb_connection_t* connection)
        : connection_(connection),
          screen_(xcb_setup_roots_iterator(xcb_get_setup(connection)).data),
          report_(connection, [this](xcb_window_t w) { return nameOf(w); }),
          clipboard_(connection, screen_->root) {}

    int fd() const { return xcb_get_file_descriptor(connection_); }

    void command(const std::vector<std::string>& w) {
        const std::string verb = w.empty() ? "" : w[0];
        if (verb == "map" && w.size() >= 6) {
            map(w[1], parseWindowRequest({w.begin() + 2, w.end()}));
        } else if (verb == "unmap" && w.size() == 2) {
            const xcb_window_t id = windowNamed(w[1]);
            const xcb_window_t frame = topLevelOf(id);
            xcb_unmap_window(connection_, id);
            awaitEvent([&](const xcb_generic_event_t* e) {
                return (e->response_type & 0x7F) == XCB_UNMAP_NOTIFY &&
                       reinterpret_cast<const xcb_unmap_notify_event_t*>(e)->window == id;
            });
            awaitViewable(frame, false);
            say("unmapped " + w[1]);
        } else if (verb == "focus" && w.size() == 2) {
            xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_POINTER_ROOT, windowNamed(w[1]), XCB_CURRENT_TIME);
            roundTrip(connection_);
            say("focused " + w[1]);
        } else if (verb == "claim" && w.size() == 2) {
            claimPid(connection_, windowNamed(w[1]));
            roundTrip(connection_);
            say("claimed " + w[1]);
        } else if (verb == "paint" && w.size() == 3) {
            paintWindow(connection_, windowNamed(w[1]), color(w[2]));
            roundTrip(connection_);
            say("painted " + w[1]);
        } else if (verb == "sync" && w.size() == 1) {
            sync();
            say("synced");
        } else if (verb == "state" && w.size() == 1) {
            sync();
            say(report_.heldState(screen_->root));
        } else if (verb == "find" && w.size() == 2) {
            say(report_.keycodesOf(static_cast<xcb_keysym_t>(std::stoul(w[1], nullptr, 16))));
        } else if (verb == "saver" && w.size() == 2 && (w[1] == "on" || w[1] == "off")) {
            xcb_force_screen_saver(connection_, w[1] == "on" ? XCB_SCREEN_SAVER_ACTIVE : XCB_SCREEN_SAVER_RESET);
            roundTrip(connection_);
            say("saver done");
        } else if (verb == "wallpaper" && w.size() == 2) {
            setWallpaper(color(w[1]));
            say("wallpaper done");
        } else if (verb == "background" && w.size() == 2) {
            const std::uint32_t rgb = color(w[1]);
            xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXEL, &rgb);
            xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
            xcb_delete_property(connection_, screen_->root, atomNamed(connection_, "_XROOTPMAP_ID"));
            roundTrip(connection_);
            say("background done");
        } else if (verb == "warp" && w.size() == 3) {
            xcb_warp_pointer(connection_, XCB_NONE, screen_->root, 0, 0, 0, 0,
                             static_cast<std::int16_t>(std::stoi(w[1])), static_cast<std::int16_t>(std::stoi(w[2])));
            roundTrip(connection_);
            say("warped");
        } else if (verb == "own-clipboard") {
            ownClipboard(w);
        } else if (verb == "disown" && w.size() == 1) {
            clipboard_.disown();
            say("disowned");
        } else if (verb == "clipboard-owner" && w.size() == 1) {
            say("owner " + std::to_string(clipboard_.owner()));
        } else if (verb == "await-clipboard-owner" && w.size() == 2) {
            const auto was = static_cast<xcb_window_t>(std::stoul(w[1]));
            if (clipboard_.owner() == was) {
                // An announcement may be older than the owner just read: the owner is asked again.
                awaitEvent([&](const xcb_generic_event_t* e) {
                    return clipboard_.ownerChangedFrom(was, e) && clipboard_.owner() != was;
                });
            }
            say("owner " + std::to_string(clipboard_.owner()));
        } else if (verb == "ask-clipboard" && w.size() == 2) {
            clipboard_.ask(w[1]);
            std::string type;
            awaitEvent([&](const xcb_generic_event_t* e) {
                if ((e->response_type & 0x7F) != XCB_SELECTION_NOTIFY) return false;
                type = clipboard_.answerType(e);
                return true;
            });
            say("answer " + type);
        } else {
            throw std::invalid_argument("unknown command");
        }
        xcb_flush(connection_);
    }

    // Reports the events the client has been sent so far.
    void drain() {
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) dispatch(event);
        xcb_flush(connection_);  // the answers to clipboard requests
        if (xcb_connection_has_error(connection_)) std::exit(1);
    }

private:
    std::string nameOf(xcb_window_t w) const {
        const auto it = names_.find(w);
        return it == names_.end() ? std::to_string(w) : it->second;
    }

    xcb_window_t windowNamed(const std::string& name) const {
        const auto it = ids_.find(name);
        if (it == ids_.end()) throw std::invalid_argument("no window " + name);
        return it->second;
    }

    void dispatch(xcb_generic_event_t* event) {
        if (!clipboard_.handle(event)) {
            if (const auto line = report_.describe(event)) say(*line);
        }
        std::free(event);
    }

    void sync() {
        roundTrip(connection_);
        while (xcb_generic_event_t* event = xcb_poll_for_queued_event(connection_)) dispatch(event);
    }

    // Handles events until one satisfies the predicate; the others are reported as they come.
    void awaitEvent(const std::function<bool(const xcb_generic_event_t*)>& found) {
        xcb_flush(connection_);
        for (;;) {
            xcb_generic_event_t* event = xcb_wait_for_event(connection_);
            if (!event) std::exit(1);
            if (found(event)) {
                std::free(event);
                return;
            }
            dispatch(event);
        }
    }

    void map(const std::string& name, const WindowRequest& request) {
        const xcb_window_t id = createWindow(connection_, screen_, request);
        names_[id] = name;
        ids_[name] = id;
        awaitEvent([&](const xcb_generic_event_t* e) {
            return (e->response_type & 0x7F) == XCB_MAP_NOTIFY &&
                   reinterpret_cast<const xcb_map_notify_event_t*>(e)->window == id;
        });
        awaitViewable(id, true);
        if (request.focus) {
            xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_POINTER_ROOT, id, XCB_CURRENT_TIME);
            roundTrip(connection_);
        }
        say("mapped " + name + " " + std::to_string(id));
    }

    // The window's top-level: itself, or the frame a window manager put it in.
    xcb_window_t topLevelOf(xcb_window_t w) {
        for (;;) {
            xcb_query_tree_reply_t* tree = xcb_query_tree_reply(connection_, xcb_query_tree(connection_, w), nullptr);
            const xcb_window_t parent = tree ? tree->parent : screen_->root;
            std::free(tree);
            if (parent == screen_->root) return w;
            w = parent;
        }
    }

    // A window manager shows and hides its frame a moment after the client maps or unmaps its
    // window: waits (up to 2 s) until the window is on the screen, or gone from it.
    void awaitViewable(xcb_window_t w, bool viewable) {
        for (int tries = 0; tries < 1000; ++tries) {
            xcb_get_window_attributes_reply_t* attributes =
                xcb_get_window_attributes_reply(connection_, xcb_get_window_attributes(connection_, w), nullptr);
            const bool now = attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
            std::free(attributes);
            if (now == viewable) return;
            ::usleep(2000);
        }
    }

    void setWallpaper(std::uint32_t rgb) {
        if (wallpaper_ == XCB_NONE) {
            wallpaper_ = xcb_generate_id(connection_);
            xcb_create_pixmap(connection_, screen_->root_depth, wallpaper_, screen_->root, screen_->width_in_pixels,
                              screen_->height_in_pixels);
        }
        const xcb_gcontext_t gc = xcb_generate_id(connection_);
        xcb_create_gc(connection_, gc, wallpaper_, XCB_GC_FOREGROUND, &rgb);
        const xcb_rectangle_t all{0, 0, screen_->width_in_pixels, screen_->height_in_pixels};
        xcb_poly_fill_rectangle(connection_, wallpaper_, gc, 1, &all);
        xcb_free_gc(connection_, gc);
        xcb_change_window_attributes(connection_, screen_->root, XCB_CW_BACK_PIXMAP, &wallpaper_);
        xcb_clear_area(connection_, 0, screen_->root, 0, 0, 0, 0);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen_->root, atomNamed(connection_, "_XROOTPMAP_ID"),
                            XCB_ATOM_PIXMAP, 32, 1, &wallpaper_);
        roundTrip(connection_);
    }

    void ownClipboard(const std::vector<std::string>& w) {
        using Answers = ClipboardPeer::Answers;
        const std::string how = w.size() > 1 ? w[1] : "";
        const Answers answers = how == "silent" ? Answers::none : how == "targets-only" ? Answers::targetsOnly : Answers::all;
        ClipboardPeer::Targets targets;
        for (std::size_t i = answers == Answers::all ? 1 : 2; i < w.size(); ++i) {
            const std::size_t eq = w[i].rfind('=');
            if (eq == std::string::npos) throw std::invalid_argument("expected TARGET=TEXT, got " + w[i]);
            targets.emplace_back(w[i].substr(0, eq), w[i].substr(eq + 1));
        }
        if (!clipboard_.own(std::move(targets), answers)) throw std::runtime_error("did not get the clipboard");
        say("owning");
    }

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_;
    InputReport report_;
    ClipboardPeer clipboard_;
    std::map<xcb_window_t, std::string> names_;
    std::map<std::string, xcb_window_t> ids_;
    xcb_pixmap_t wallpaper_ = XCB_NONE;
};

std::vector<std::string> words(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> out;
    for (std::string w; in >> w;) out.push_back(w);
    return out;
}

}  // namespace
}  // namespace window_client

int main() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        window_client::say("error cannot open the display");
        return 1;
    }
    window_client::Client client(connection);
    std::string pending;
    for (;;) {
        client.drain();
        pollfd fds[2] = {{STDIN_FILENO, POLLIN, 0}, {client.fd(), POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0 || !(fds[0].revents & (POLLIN | POLLHUP))) continue;
        char buffer[4096];
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got <= 0) break;
        pending.append(buffer, static_cast<std::size_t>(got));
        for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            const std::string line = pending.substr(0, end);
            pending.erase(0, end + 1);
            try {
                client.command(window_client::words(line));
            } catch (const std::exception& e) {
                window_client::say("error " + line + ": " + e.what());
            }
        }
    }
    xcb_disconnect(connection);
    return 0;
}
