#pragma once

#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_screen_capture.h"
#include "platform/x11/x11_window_server.h"
#include "support/window_client_process.h"
#include "support/xvfb_display.h"

namespace brisko::testing {

// One Xvfb for the test suite (DISPLAY points at it), the backend's services over a fresh
// connection for each test, and a connection of the test's own for doing what a window manager
// or another client would.
class X11Server : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        display_ = new XvfbDisplay();
        ::setenv("DISPLAY", display_->name().c_str(), 1);
    }
    static void TearDownTestSuite() {
        delete display_;
        display_ = nullptr;
    }

    void SetUp() override {
        own = xcb_connect(display_->name().c_str(), nullptr);
        ASSERT_FALSE(xcb_connection_has_error(own));
        screen = xcb_setup_roots_iterator(xcb_get_setup(own)).data;
    }
    void TearDown() override {
        clients_.clear();
        xcb_disconnect(own);
    }

    WindowClientProcess& startClient(const std::string& program = windowClientPath()) {
        clients_.push_back(std::make_unique<WindowClientProcess>(program, display_->name()));
        return *clients_.back();
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

    static XvfbDisplay& display() { return *display_; }

    xcb_connection_t* own = nullptr;
    const xcb_screen_t* screen = nullptr;
    platform::x11::X11Connection connection;
    platform::x11::X11WindowServer windows{connection};
    platform::x11::X11ScreenCapture capture{connection, windows};

private:
    static inline XvfbDisplay* display_ = nullptr;
    std::vector<std::unique_ptr<WindowClientProcess>> clients_;
};

}  // namespace brisko::testing
