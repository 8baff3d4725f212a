#include "clipboard_peers.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>

#include "support/run_program.h"

namespace brisko::testing {
namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> owned(T* p) {
    return {p, &std::free};
}

struct Connection {
    explicit Connection(const std::string& display) : c(xcb_connect(display.c_str(), nullptr)) {
        if (xcb_connection_has_error(c)) throw std::runtime_error("cannot connect to " + display);
        root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    }
    ~Connection() { xcb_disconnect(c); }

    xcb_atom_t atom(const std::string& name) const {
        const auto reply = owned(xcb_intern_atom_reply(
            c, xcb_intern_atom(c, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }

    xcb_window_t newWindow() const {
        const xcb_window_t w = xcb_generate_id(c);
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(c, 0, w, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                          XCB_CW_EVENT_MASK, &mask);
        return w;
    }

    xcb_connection_t* c;
    xcb_window_t root;
};

std::string atomName(xcb_connection_t* c, xcb_atom_t atom) {
    const auto reply = owned(xcb_get_atom_name_reply(c, xcb_get_atom_name(c, atom), nullptr));
    if (!reply) return {};
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

void answer(const Connection& x, const xcb_selection_request_event_t& request,
            const TestClipboardOwner::Targets& targets) {
    const std::string wanted = atomName(x.c, request.target);
    xcb_atom_t property = XCB_ATOM_NONE;
    if (wanted == "TARGETS") {
        std::vector<xcb_atom_t> list{x.atom("TARGETS")};
        for (const auto& [name, value] : targets) list.push_back(x.atom(name));
        xcb_change_property(x.c, XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_ATOM, 32,
                            static_cast<std::uint32_t>(list.size()), list.data());
        property = request.property;
    }
    for (const auto& [name, value] : targets) {
        if (name != wanted) continue;
        if (name == "TIMESTAMP") {
            xcb_change_property(x.c, XCB_PROP_MODE_REPLACE, request.requestor, request.property, XCB_ATOM_INTEGER, 32,
                                1, value.data());
        } else {
            xcb_change_property(x.c, XCB_PROP_MODE_REPLACE, request.requestor, request.property, request.target, 8,
                                static_cast<std::uint32_t>(value.size()), value.data());
        }
        property = request.property;
    }
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = property;
    std::array<char, 32> wire{};
    std::memcpy(wire.data(), &notify, sizeof notify);
    xcb_send_event(x.c, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT, wire.data());
    xcb_flush(x.c);
}

[[noreturn]] void serveClipboard(const std::string& display, const TestClipboardOwner::Targets& targets, bool silent,
                                 int ready) {
    const Connection x(display);
    const xcb_window_t window = x.newWindow();
    const xcb_atom_t clipboard = x.atom("CLIPBOARD");
    xcb_set_selection_owner(x.c, window, clipboard, XCB_CURRENT_TIME);
    const auto owner = owned(xcb_get_selection_owner_reply(x.c, xcb_get_selection_owner(x.c, clipboard), nullptr));
    const char ok = owner && owner->owner == window ? 1 : 0;
    if (::write(ready, &ok, 1) != 1 || ok == 0) ::_exit(1);
    ::close(ready);
    while (xcb_generic_event_t* event = xcb_wait_for_event(x.c)) {
        const auto e = owned(event);
        const auto type = e->response_type & 0x7f;
        if (type == XCB_SELECTION_CLEAR) ::_exit(0);
        if (type == XCB_SELECTION_REQUEST && !silent) {
            answer(x, *reinterpret_cast<const xcb_selection_request_event_t*>(e.get()), targets);
        }
    }
    ::_exit(0);
}

// runProgram does not search PATH.
const std::string& xclipPath() {
    static const std::string path = [] {
        const char* const searched = std::getenv("PATH");
        std::string dirs = searched ? searched : "/usr/bin:/bin";
        for (std::size_t at = 0; at <= dirs.size();) {
            const std::size_t end = std::min(dirs.find(':', at), dirs.size());
            const std::string candidate = dirs.substr(at, end - at) + "/xclip";
            if (::access(candidate.c_str(), X_OK) == 0) return candidate;
            at = end + 1;
        }
        throw std::runtime_error("xclip is not installed");
    }();
    return path;
}

}  // namespace

xcb_window_t clipboardOwner(const std::string& display) {
    const Connection x(display);
    const auto reply =
        owned(xcb_get_selection_owner_reply(x.c, xcb_get_selection_owner(x.c, x.atom("CLIPBOARD")), nullptr));
    return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

void xclipSet(const std::string& display, const std::string& target, const std::string& data) {
    const xcb_window_t before = clipboardOwner(display);
    // xclip stays behind to serve the clipboard, holding on to the streams it was given: it gets
    // none, and reads the data from a file.
    char path[] = "/tmp/brisko-xclip-XXXXXX";
    const int file = ::mkstemp(path);
    if (file < 0) throw std::runtime_error("mkstemp failed");
    const bool written = ::write(file, data.data(), data.size()) == static_cast<ssize_t>(data.size());
    ::close(file);
    const auto result = runProgram(
        "/bin/sh", {"-c", "exec \"$0\" -selection clipboard -t \"$1\" -i \"$2\" </dev/null >/dev/null 2>&1", xclipPath(),
                    target, path},
        "", {{"DISPLAY", display}});
    ::unlink(path);
    if (!written || result.status != 0) throw std::runtime_error("xclip -i failed");
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (clipboardOwner(display) == before) {
        if (std::chrono::steady_clock::now() > giveUp) throw std::runtime_error("xclip did not take the clipboard");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

std::string xclipGet(const std::string& display, const std::string& target) {
    const auto result = runProgram(xclipPath(), {"-selection", "clipboard", "-t", target, "-o"}, "", {{"DISPLAY", display}});
    if (result.status != 0) throw std::runtime_error("xclip -o failed: " + result.err);
    return result.out;
}

std::string answerType(const std::string& display, const std::string& target) {
    const Connection x(display);
    const xcb_window_t window = x.newWindow();
    const xcb_atom_t property = x.atom("ANSWER");
    xcb_convert_selection(x.c, window, x.atom("CLIPBOARD"), x.atom(target), property, XCB_CURRENT_TIME);
    xcb_flush(x.c);
    while (xcb_generic_event_t* event = xcb_wait_for_event(x.c)) {
        const auto e = owned(event);
        if ((e->response_type & 0x7f) != XCB_SELECTION_NOTIFY) continue;
        const auto& notify = *reinterpret_cast<const xcb_selection_notify_event_t*>(e.get());
        if (notify.property == XCB_ATOM_NONE) return {};
        const auto reply =
            owned(xcb_get_property_reply(x.c, xcb_get_property(x.c, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
                                         nullptr));
        return reply ? atomName(x.c, reply->type) : std::string();
    }
    return {};
}

TestClipboardOwner::TestClipboardOwner(const std::string& display, Targets targets, bool silent) {
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    pid_ = ::fork();
    if (pid_ == 0) {
        ::close(ready[0]);
        serveClipboard(display, targets, silent, ready[1]);
    }
    ::close(ready[1]);
    char ok = 0;
    const bool owning = ::read(ready[0], &ok, 1) == 1 && ok == 1;
    ::close(ready[0]);
    if (!owning) throw std::runtime_error("the test owner did not take the clipboard");
}

TestClipboardOwner::~TestClipboardOwner() {
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, nullptr, 0);
}

IdleClient::IdleClient(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {}

IdleClient::~IdleClient() { xcb_disconnect(connection_); }

std::string timestampValue(std::uint32_t time) {
    std::string bytes(sizeof time, '\0');
    std::memcpy(bytes.data(), &time, sizeof time);
    return bytes;
}

}  // namespace brisko::testing
