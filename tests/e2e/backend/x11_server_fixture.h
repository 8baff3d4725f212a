#pragma once

#include <optional>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_screen_capture.h"
#include "backends/x11/x11_window_server.h"
#include "support/x11_display_test.h"

namespace brisko::testing {

// The backend's services over a fresh connection for each test, and a connection of the test's
// own for doing what a window manager or another client would.
class X11Server : public X11DisplayTest {
protected:
    void SetUp() override {
        own = xcb_connect(display().name().c_str(), nullptr);
        ASSERT_FALSE(xcb_connection_has_error(own));
        screen = xcb_setup_roots_iterator(xcb_get_setup(own)).data;
    }
    void TearDown() override {
        X11DisplayTest::TearDown();
        xcb_disconnect(own);
    }

    // The inventory restricted to the given windows, in its order.
    std::vector<platform::ScreenWindow> listed(const std::set<xcb_window_t>& ids) {
        std::vector<platform::ScreenWindow> mine;
        for (const auto& w : windows.onScreenWindows()) {
            if (ids.contains(w.windowID)) mine.push_back(w);
        }
        return mine;
    }

    std::optional<platform::ScreenWindow> listedWindow(xcb_window_t id) {
        const auto mine = listed({id});
        if (mine.empty()) return std::nullopt;
        return mine.front();
    }

    xcb_connection_t* own = nullptr;
    const xcb_screen_t* screen = nullptr;
    platform::x11::X11Connection connection;
    platform::x11::X11WindowServer windows{connection};
    platform::x11::X11ScreenCapture capture{connection, windows};
};

}  // namespace brisko::testing
