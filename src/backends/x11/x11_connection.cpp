#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {

X11Connection::~X11Connection() {
    if (connection_) xcb_disconnect(connection_);
}

void X11Connection::open() {
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    // xcb never returns null: a failed connection is an object in the error state.
    if (xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        return;
    }
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && screens.rem > 0; ++i) xcb_screen_next(&screens);
    if (screens.rem == 0) {
        xcb_disconnect(connection);
        return;
    }
    screen_ = screens.data;
    connection_ = connection;
}

xcb_connection_t* X11Connection::get() {
    std::call_once(opened_, [this] { open(); });
    if (!connection_ || xcb_connection_has_error(connection_)) return nullptr;
    return connection_;
}

bool X11Connection::hasExtension(xcb_extension_t& extension) {
    xcb_connection_t* connection = get();
    if (!connection) return false;
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, &extension);
    return data && data->present;
}

bool X11Connection::sync() {
    xcb_connection_t* connection = get();
    if (!connection) return false;
    // Any request with a reply will do: the server answers requests in order.
    XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    return reply != nullptr;
}

}  // namespace brisko::platform::x11
