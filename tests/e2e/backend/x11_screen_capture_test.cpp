#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>

#include <sys/uio.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include "backend/x11_server_fixture.h"
#include "support/test_window.h"

namespace brisko::testing {
namespace {

class X11ScreenCaptureTest : public X11Server {};

TEST_F(X11ScreenCaptureTest, TheScreenIsTheMainDisplayWithItsSizeInPoints) {
    const auto result = capture.shareableContent();
    ASSERT_TRUE(result.content);
    EXPECT_EQ(result.error, std::nullopt);
    ASSERT_EQ(result.content->displays.size(), 1u);
    EXPECT_EQ(result.content->displays[0].width, display().width());
    EXPECT_EQ(result.content->displays[0].height, display().height());
    EXPECT_NE(result.content->displays[0].displayID, 0u);
    EXPECT_EQ(capture.mainDisplayID(), result.content->displays[0].displayID);
}

TEST_F(X11ScreenCaptureTest, ApplicationsAreTheOwnersOfTopLevelWindowsOnceEach) {
    auto& host = startClient();
    host.map("panel", "0 0 100 100 appid=com.brisko.desktop");
    host.map("menu", "0 0 100 100 type=popup_menu appid=com.brisko.desktop");
    auto& offscreen = startClient();  // windows that are not on screen count too
    offscreen.map("main", "0 0 100 100 class=Offscreen");
    offscreen.unmap("main");
    auto& menubar = startClient(menubarClientPath());
    menubar.map("bar", "0 0 100 20");

    const auto result = capture.shareableContent();
    ASSERT_TRUE(result.content);
    std::map<std::int32_t, std::vector<std::string>> byPid;
    for (const auto& app : result.content->applications) byPid[app.processID].push_back(app.bundleIdentifier);
    EXPECT_EQ(byPid[host.pid()], std::vector<std::string>{"com.brisko.desktop"});
    EXPECT_EQ(byPid[offscreen.pid()], std::vector<std::string>{"Offscreen"});
    EXPECT_EQ(byPid[menubar.pid()], std::vector<std::string>{""});
}

TEST_F(X11ScreenCaptureTest, RandrMonitorsAreTheDisplaysAndThePrimaryIsTheMain) {
    // Sent raw: the generated SetMonitor request of this libxcb fails on the client side with a
    // request-length error that closes the connection.
    const auto defineMonitor = [&](const std::string& name, int x, int width, bool primary) {
        struct {
            xcb_randr_set_monitor_request_t header;
            xcb_randr_monitor_info_t info;
        } request{};
        request.header.major_opcode = xcb_get_extension_data(own, &xcb_randr_id)->major_opcode;
        request.header.minor_opcode = XCB_RANDR_SET_MONITOR;
        request.header.length = sizeof request / 4;
        request.header.window = screen->root;
        request.info.name = atomNamed(own, name);
        request.info.primary = primary ? 1 : 0;
        request.info.x = static_cast<std::int16_t>(x);
        request.info.width = static_cast<std::uint16_t>(width);
        request.info.height = static_cast<std::uint16_t>(display().height());
        request.info.width_in_millimeters = 300;
        request.info.height_in_millimeters = 300;
        static const xcb_protocol_request_t protocol{1, &xcb_randr_id, XCB_RANDR_SET_MONITOR, 0};
        iovec parts[3];  // xcb_send_request may use the two entries before the first
        parts[2] = {&request, sizeof request};
        const unsigned sequence = xcb_send_request(own, XCB_REQUEST_CHECKED | XCB_REQUEST_RAW, parts + 2, &protocol);
        EXPECT_EQ(xcb_request_check(own, xcb_void_cookie_t{sequence}), nullptr);
        return request.info.name;
    };
    std::free(xcb_randr_query_version_reply(own, xcb_randr_query_version(own, 1, 5), nullptr));
    const xcb_atom_t left = defineMonitor("TEST-LEFT", 0, 640, false);
    const xcb_atom_t right = defineMonitor("TEST-RIGHT", 640, 800, true);
    std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));

    const auto result = capture.shareableContent();
    ASSERT_TRUE(result.content);
    std::map<std::uint32_t, long long> widths;
    for (const auto& d : result.content->displays) widths[d.displayID] = d.width;
    EXPECT_EQ(widths[left], 640);
    EXPECT_EQ(widths[right], 800);
    EXPECT_EQ(capture.mainDisplayID(), right);

    xcb_randr_delete_monitor(own, screen->root, left);
    xcb_randr_delete_monitor(own, screen->root, right);
    std::free(xcb_get_input_focus_reply(own, xcb_get_input_focus(own), nullptr));
}

TEST(X11ScreenCaptureWithoutDisplay, ContentIsAbsentWithTheReason) {
    const char* previous = std::getenv("DISPLAY");
    const std::string saved = previous ? previous : "";
    ::setenv("DISPLAY", ":1999", 1);  // no server there
    platform::x11::X11Connection connection;
    platform::x11::X11WindowServer windows{connection};
    platform::x11::X11ScreenCapture capture{connection, windows};
    const auto result = capture.shareableContent();
    EXPECT_EQ(result.content, std::nullopt);
    EXPECT_EQ(result.error, "cannot connect to X display :1999");
    EXPECT_TRUE(windows.onScreenWindows().empty());
    EXPECT_EQ(windows.bundleIdentifier(1), std::nullopt);
    if (previous) ::setenv("DISPLAY", saved.c_str(), 1); else ::unsetenv("DISPLAY");
}

}  // namespace
}  // namespace brisko::testing
