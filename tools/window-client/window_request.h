#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <xcb/xcb.h>

namespace window_client {

// A window as a test wants it on screen: geometry and the properties the guard reads.
struct WindowRequest {
    int x = 0;
    int y = 0;
    int width = 100;
    int height = 100;
    int border = 0;
    std::string type;                // the _NET_WM_WINDOW_TYPE suffix in lower case (dock, popup_menu, ...)
    bool above = false;              // _NET_WM_STATE_ABOVE
    std::optional<double> opacity;   // _NET_WM_WINDOW_OPACITY, 0 to 1
    std::string wmClass;             // the class part of WM_CLASS
    std::string applicationId;       // _GTK_APPLICATION_ID
    bool noInput = false;            // an empty SHAPE input region: clicks go through
    bool overrideRedirect = false;   // placed by itself, never managed by a window manager
    bool decorated = false;          // a window manager may frame it with a title and borders
    bool claimsPid = true;           // _NET_WM_PID names the client's process
    bool focus = false;              // takes the keyboard focus once mapped
    std::uint32_t color = 0xffffff;  // the background, 0xRRGGBB
    std::optional<std::pair<int, int>> shape;  // covers only its top-left W x H (SHAPE bounding region)
    std::optional<std::uint8_t> alpha;         // 32 bits deep, the colour this opaque (hexadecimal)
};

// "X Y W H [type=T] [above] [opacity=F] [class=C] [appid=A] [noinput] [override] [decorated]
// [nopid] [focus] [border=N] [color=RRGGBB] [shape=W,H] [alpha=AA]". Throws std::invalid_argument on
// anything else.
WindowRequest parseWindowRequest(const std::vector<std::string>& words);

// Creates the window with its properties, selects the input and structure events it reports,
// and maps it. The caller waits for the map. Its place and size are the user's (USPosition,
// USSize), which window managers keep, and it asks for no decoration unless decorated.
xcb_window_t createWindow(xcb_connection_t* connection, const xcb_screen_t* screen, const WindowRequest& request);

// Sets the window's _NET_WM_PID to the client's process.
void claimPid(xcb_connection_t* connection, xcb_window_t window);

// Gives the window a new background colour (0xRRGGBB) and has the server paint it.
void paintWindow(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color);

xcb_atom_t atomNamed(xcb_connection_t* connection, const std::string& name);

// Waits until the server has handled every request sent before.
void roundTrip(xcb_connection_t* connection);

}  // namespace window_client
