#include "platform/x11/x11_connection.h"

#include <cstdlib>

namespace brisko::platform::x11 {
namespace {

std::string displayName() {
    const char* name = std::getenv("DISPLAY");
    return name && *name ? name : "(DISPLAY not set)";
}

}  // namespace

X11Connection::~X11Connection() {
    if (connection_) xcb_disconnect(connection_);
}

void X11Connection::open() {
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return;
    }
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && it.rem; ++i) xcb_screen_next(&it);
    if (!it.rem) {
        xcb_disconnect(connection);
        return;
    }
    connection_ = connection;
    screen_ = it.data;
    root_ = it.data->root;
}

xcb_connection_t* X11Connection::get() {
    std::call_once(opened_, [this] { open(); });
    if (!connection_ || xcb_connection_has_error(connection_)) return nullptr;
    return connection_;
}

std::string X11Connection::failure() const {
    if (connection_) return "the connection to X display " + displayName() + " broke";
    return "cannot open X display " + displayName();
}

}  // namespace brisko::platform::x11
