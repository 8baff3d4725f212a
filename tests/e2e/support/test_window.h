#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::testing {

// A window as the tests want it on screen: geometry and the properties the guard reads.
struct TestWindowSpec {
    int x = 0;
    int y = 0;
    int width = 100;
    int height = 100;
    int border = 0;
    std::string type;  // the _NET_WM_WINDOW_TYPE suffix in lower case (dock, popup_menu, ...); none when empty
    bool above = false;                // _NET_WM_STATE_ABOVE
    std::optional<double> opacity;     // _NET_WM_WINDOW_OPACITY, 0 to 1
    std::string wmClass;               // the class part of WM_CLASS
    std::string applicationId;         // _GTK_APPLICATION_ID
    bool noInput = false;              // an empty SHAPE input region
    bool overrideRedirect = false;
    std::uint32_t color = 0xffffff;    // the background, 0xRRGGBB
    std::optional<std::pair<int, int>> shape;  // covers only its top-left W x H (SHAPE bounding region)
    std::optional<std::uint8_t> alpha;         // 32 bits deep, the colour this opaque
};

// "X Y W H [type=T] [above] [opacity=F] [class=C] [appid=A] [noinput] [override] [border=N]
// [color=RRGGBB] [shape=W,H] [alpha=AA]".
// Throws std::invalid_argument on anything else.
TestWindowSpec parseTestWindowSpec(const std::vector<std::string>& words);

// Creates the window with its properties, selects pointer and key events on it, and maps it.
// The caller flushes and waits for the map if it needs to.
xcb_window_t createTestWindow(xcb_connection_t* connection, const xcb_screen_t* screen, const TestWindowSpec& spec);

// Sets a property the way window managers and toolkits do.
void setAtomListProperty(xcb_connection_t* connection, xcb_window_t window, const std::string& property,
                         const std::vector<std::string>& atoms);
// Gives the window a new background colour (0xRRGGBB) and has the server paint it at once.
void paintTestWindow(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color);

xcb_atom_t atomNamed(xcb_connection_t* connection, const std::string& name);

}  // namespace brisko::testing
