#include "window_request.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>
#include <vector>

#include <xcb/shape.h>

namespace window_client {
namespace {

std::string upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

int number(const std::string& text) {
    std::size_t used = 0;
    const int value = std::stoi(text, &used);
    if (used != text.size()) throw std::invalid_argument("not a number: " + text);
    return value;
}

void setProperty(xcb_connection_t* c, xcb_window_t w, xcb_atom_t property, xcb_atom_t type, std::uint8_t format,
                 std::uint32_t length, const void* data) {
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, w, property, type, format, length, data);
}

void setAtomProperty(xcb_connection_t* c, xcb_window_t w, const std::string& property, const std::string& value) {
    const xcb_atom_t atom = atomNamed(c, value);
    setProperty(c, w, atomNamed(c, property), XCB_ATOM_ATOM, 32, 1, &atom);
}

}  // namespace

xcb_atom_t atomNamed(xcb_connection_t* connection, const std::string& name) {
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr);
    if (!reply) throw std::runtime_error("cannot intern " + name);
    const xcb_atom_t atom = reply->atom;
    std::free(reply);
    return atom;
}

void roundTrip(xcb_connection_t* connection) {
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

WindowRequest parseWindowRequest(const std::vector<std::string>& words) {
    if (words.size() < 4) throw std::invalid_argument("expected X Y W H");
    WindowRequest request;
    request.x = number(words[0]);
    request.y = number(words[1]);
    request.width = number(words[2]);
    request.height = number(words[3]);
    for (std::size_t i = 4; i < words.size(); ++i) {
        const std::string& word = words[i];
        const auto eq = word.find('=');
        const std::string key = word.substr(0, eq);
        const std::string value = eq == std::string::npos ? "" : word.substr(eq + 1);
        if (key == "type") request.type = value;
        else if (key == "above") request.above = true;
        else if (key == "opacity") request.opacity = std::stod(value);
        else if (key == "class") request.wmClass = value;
        else if (key == "appid") request.applicationId = value;
        else if (key == "noinput") request.noInput = true;
        else if (key == "override") request.overrideRedirect = true;
        else if (key == "decorated") request.decorated = true;
        else if (key == "nopid") request.claimsPid = false;
        else if (key == "focus") request.focus = true;
        else if (key == "border") request.border = number(value);
        else if (key == "color") request.color = static_cast<std::uint32_t>(std::stoul(value, nullptr, 16));
        else if (key == "shape") {
            request.shape = {{number(value.substr(0, value.find(','))), number(value.substr(value.find(',') + 1))}};
        }
        else if (key == "alpha") request.alpha = static_cast<std::uint8_t>(std::stoul(value, nullptr, 16));
        else throw std::invalid_argument("unknown window option: " + word);
    }
    return request;
}

namespace {

// A 32-bit TrueColor visual, its colormap and the pixel of the colour with that alpha
// (premultiplied, as translucent pixels are kept).
struct Translucent {
    xcb_visualid_t visual = 0;
    xcb_colormap_t colormap = XCB_NONE;
    std::uint32_t pixel = 0;
};

Translucent translucent(xcb_connection_t* c, const xcb_screen_t* screen, std::uint32_t color, std::uint32_t alpha) {
    Translucent t;
    for (auto d = xcb_screen_allowed_depths_iterator(screen); d.rem && t.visual == 0; xcb_depth_next(&d)) {
        for (auto v = xcb_depth_visuals_iterator(d.data); v.rem && d.data->depth == 32; xcb_visualtype_next(&v)) {
            if (v.data->_class == XCB_VISUAL_CLASS_TRUE_COLOR) t.visual = v.data->visual_id;
        }
    }
    t.colormap = xcb_generate_id(c);
    xcb_create_colormap(c, XCB_COLORMAP_ALLOC_NONE, t.colormap, screen->root, t.visual);
    t.pixel = alpha << 24;
    for (int shift = 0; shift < 24; shift += 8) t.pixel |= ((color >> shift & 0xff) * alpha / 255) << shift;
    return t;
}

}  // namespace

xcb_window_t createWindow(xcb_connection_t* c, const xcb_screen_t* screen, const WindowRequest& request) {
    const xcb_window_t w = xcb_generate_id(c);
    const Translucent glass = request.alpha ? translucent(c, screen, request.color, *request.alpha) : Translucent{};
    const std::uint32_t events = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                 XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                 XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    // The tests' servers are 24-bit TrueColor: a pixel value is its 0xRRGGBB colour. A window of
    // another depth needs its own border and colormap.
    const std::uint32_t mask = XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK |
                               (request.alpha ? XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP : 0u);
    const std::uint32_t override = request.overrideRedirect ? 1u : 0u;
    const std::vector<std::uint32_t> values = request.alpha
                                                  ? std::vector{glass.pixel, 0u, override, events, glass.colormap}
                                                  : std::vector{request.color, override, events};
    xcb_create_window(c, request.alpha ? 32 : XCB_COPY_FROM_PARENT, w, screen->root,
                      static_cast<std::int16_t>(request.x), static_cast<std::int16_t>(request.y),
                      static_cast<std::uint16_t>(request.width),
                      static_cast<std::uint16_t>(request.height), static_cast<std::uint16_t>(request.border),
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, request.alpha ? glass.visual : screen->root_visual, mask,
                      values.data());
    if (request.shape) {
        const xcb_rectangle_t kept{0, 0, static_cast<std::uint16_t>(request.shape->first),
                                   static_cast<std::uint16_t>(request.shape->second)};
        xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED, w, 0, 0, 1, &kept);
    }
    if (!request.type.empty()) {
        setAtomProperty(c, w, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_" + upper(request.type));
    }
    if (request.above) setAtomProperty(c, w, "_NET_WM_STATE", "_NET_WM_STATE_ABOVE");
    if (request.opacity) {
        const auto value = static_cast<std::uint32_t>(std::llround(*request.opacity * 0xffffffffu));
        setProperty(c, w, atomNamed(c, "_NET_WM_WINDOW_OPACITY"), XCB_ATOM_CARDINAL, 32, 1, &value);
    }
    if (!request.wmClass.empty()) {
        const std::string both = "instance" + std::string(1, '\0') + request.wmClass + std::string(1, '\0');
        setProperty(c, w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(both.size()), both.data());
    }
    if (!request.applicationId.empty()) {
        setProperty(c, w, atomNamed(c, "_GTK_APPLICATION_ID"), atomNamed(c, "UTF8_STRING"), 8,
                    static_cast<std::uint32_t>(request.applicationId.size()), request.applicationId.data());
    }
    // WM_NORMAL_HINTS: flags USPosition | USSize, then the (obsolete) place and size fields.
    const std::uint32_t sizeHints[18] = {1 | 2, std::uint32_t(request.x), std::uint32_t(request.y),
                                         std::uint32_t(request.width), std::uint32_t(request.height)};
    setProperty(c, w, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18, sizeHints);
    if (!request.decorated) {
        const std::uint32_t motifHints[5] = {2, 0, 0, 0, 0};  // flags: decorations; decorations: none
        const xcb_atom_t atom = atomNamed(c, "_MOTIF_WM_HINTS");
        setProperty(c, w, atom, atom, 32, 5, motifHints);
    }
    if (request.claimsPid) claimPid(c, w);
    if (request.noInput) {
        xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, w, 0, 0, 0, nullptr);
    }
    xcb_map_window(c, w);
    return w;
}

void claimPid(xcb_connection_t* connection, xcb_window_t window) {
    const auto pid = static_cast<std::uint32_t>(::getpid());
    setProperty(connection, window, atomNamed(connection, "_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &pid);
}

void paintWindow(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color) {
    xcb_change_window_attributes(connection, window, XCB_CW_BACK_PIXEL, &color);
    xcb_clear_area(connection, 0, window, 0, 0, 0, 0);
}

}  // namespace window_client
