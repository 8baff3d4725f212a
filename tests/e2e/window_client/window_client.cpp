// A small X client for the end-to-end tests: maps the windows it is told to on standard input and
// reports on standard output when they are mapped and every button and key event they receive.
//
//   map NAME X Y W H [options]  ->  mapped NAME ID        (options: see parseTestWindowSpec)
//   unmap NAME                  ->  unmapped NAME
//   paint NAME RRGGBB           ->  painted NAME          (once the server has painted it)
//   sync                        ->  synced                (after every event the server sent before)
//   press|release NAME BUTTON ROOT_X ROOT_Y, keypress|keyrelease NAME KEYCODE   (unprompted)
//
// It exits at the end of its input. Built twice: as window_client and as brisko-mac-menubar.
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "support/test_window.h"

namespace {

void say(const std::string& line) {
    const std::string whole = line + "\n";
    if (::write(1, whole.data(), whole.size()) < 0) std::exit(1);
}

class Client {
public:
    Client() : connection_(xcb_connect(nullptr, &screenNumber_)) {
        if (xcb_connection_has_error(connection_)) {
            say("error cannot open display");
            std::exit(1);
        }
        auto it = xcb_setup_roots_iterator(xcb_get_setup(connection_));
        for (int i = 0; i < screenNumber_; ++i) xcb_screen_next(&it);
        screen_ = it.data;
    }
    ~Client() { xcb_disconnect(connection_); }

    int fd() const { return xcb_get_file_descriptor(connection_); }

    void command(const std::string& line) {
        std::istringstream in(line);
        std::vector<std::string> words;
        for (std::string w; in >> w;) words.push_back(w);
        if (words.empty()) return;
        if (words[0] == "map" && words.size() >= 6) {
            const auto spec = brisko::testing::parseTestWindowSpec({words.begin() + 2, words.end()});
            const xcb_window_t w = brisko::testing::createTestWindow(connection_, screen_, spec);
            names_[w] = words[1];
            ids_[words[1]] = w;
        } else if (words[0] == "unmap" && words.size() == 2 && ids_.contains(words[1])) {
            xcb_unmap_window(connection_, ids_[words[1]]);
        } else if (words[0] == "paint" && words.size() == 3 && ids_.contains(words[1])) {
            brisko::testing::paintTestWindow(connection_, ids_[words[1]],
                                             static_cast<std::uint32_t>(std::stoul(words[2], nullptr, 16)));
            std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
            say("painted " + words[1]);
        } else if (words[0] == "sync") {
            std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
            drainEvents();
            say("synced");
        } else {
            say("error unknown command: " + line);
        }
        xcb_flush(connection_);
    }

    void drainEvents() {
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection_)) {
            report(event);
            std::free(event);
        }
        if (xcb_connection_has_error(connection_)) std::exit(1);
    }

private:
    std::string nameOf(xcb_window_t w) const {
        const auto it = names_.find(w);
        return it == names_.end() ? std::to_string(w) : it->second;
    }

    void report(const xcb_generic_event_t* event) {
        switch (event->response_type & 0x7f) {
            case XCB_BUTTON_PRESS:
            case XCB_BUTTON_RELEASE: {
                const auto* e = reinterpret_cast<const xcb_button_press_event_t*>(event);
                const bool press = (event->response_type & 0x7f) == XCB_BUTTON_PRESS;
                say(std::string(press ? "press " : "release ") + nameOf(e->event) + " " + std::to_string(e->detail) +
                    " " + std::to_string(e->root_x) + " " + std::to_string(e->root_y));
                break;
            }
            case XCB_KEY_PRESS:
            case XCB_KEY_RELEASE: {
                const auto* e = reinterpret_cast<const xcb_key_press_event_t*>(event);
                const bool press = (event->response_type & 0x7f) == XCB_KEY_PRESS;
                say(std::string(press ? "keypress " : "keyrelease ") + nameOf(e->event) + " " +
                    std::to_string(e->detail));
                break;
            }
            case XCB_MAP_NOTIFY: {
                const auto* e = reinterpret_cast<const xcb_map_notify_event_t*>(event);
                if (e->event == e->window && names_.contains(e->window)) {
                    say("mapped " + nameOf(e->window) + " " + std::to_string(e->window));
                }
                break;
            }
            case XCB_UNMAP_NOTIFY: {
                const auto* e = reinterpret_cast<const xcb_unmap_notify_event_t*>(event);
                if (e->event == e->window && names_.contains(e->window)) say("unmapped " + nameOf(e->window));
                break;
            }
            default: break;
        }
    }

    int screenNumber_ = 0;
    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
    std::map<xcb_window_t, std::string> names_;
    std::map<std::string, xcb_window_t> ids_;
};

}  // namespace

int main() {
    Client client;
    std::string pending;
    for (;;) {
        client.drainEvents();
        pollfd fds[2] = {{0, POLLIN, 0}, {client.fd(), POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) continue;
        if (fds[0].revents & (POLLIN | POLLHUP)) {
            char buffer[4096];
            const ssize_t got = ::read(0, buffer, sizeof buffer);
            if (got <= 0) return 0;
            pending.append(buffer, static_cast<std::size_t>(got));
            for (auto end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
                const std::string line = pending.substr(0, end);
                pending.erase(0, end + 1);
                try {
                    client.command(line);
                } catch (const std::exception& e) {
                    say(std::string("error ") + e.what());
                }
            }
        }
    }
}
