#include <gtest/gtest.h>

#include "e2e/support/backend_under_test.h"
#include "e2e/support/recording_window.h"
#include "support/xvfb_display.h"
#include "input/key_vocabulary.h"

namespace brisko::e2e {
namespace {

namespace type = platform::event_type;
using platform::InputEvent;

InputEvent flagsChanged(KeyCode code, EventFlags flags) {
    InputEvent e;
    e.type = type::flagsChanged;
    e.keyCode = code;
    e.flags = flags;
    return e;
}

InputEvent keyEvent(std::uint32_t eventType, KeyCode code) {
    InputEvent e;
    e.type = eventType;
    e.keyCode = code;
    return e;
}

class X11SystemProbe : public ::testing::Test {
protected:
    platform::SystemProbe& probe() { return backend->services().probe; }
    void post(const InputEvent& e) { ASSERT_TRUE(backend->services().events.post(e)); }

    testing::XvfbDisplay server;
    std::unique_ptr<platform::Backend> backend = backendOn(server.name());
};

TEST_F(X11SystemProbe, ReportsTheServersScreenAndPermissions) {
    EXPECT_TRUE(probe().screenCaptureAllowed());
    EXPECT_TRUE(probe().postEventAllowed());
    EXPECT_EQ(probe().mainDisplayBounds(), (platform::Rect{0, 0, 1440, 900}));
    const auto pixels = probe().mainDisplayPixelSize();
    ASSERT_TRUE(pixels);
    EXPECT_EQ(pixels->width, 1440);
    EXPECT_EQ(pixels->height, 900);
    EXPECT_FALSE(probe().displayAsleep());  // Xvfb has no display power management
}

TEST_F(X11SystemProbe, TheSessionIsLockedWhileTheScreenSaverIsActive) {
    RecordingWindow window(server.name(), {{0, 0, 10, 10}});
    using Values = std::map<std::string, double>;
    EXPECT_EQ(probe().sessionValues(), (Values{{"CGSSessionScreenIsLocked", 0}, {"kCGSSessionOnConsoleKey", 1}}));
    window.ask("saver on", "saver");
    EXPECT_EQ(probe().sessionValues(), (Values{{"CGSSessionScreenIsLocked", 1}, {"kCGSSessionOnConsoleKey", 1}}));
    window.ask("saver off", "saver");
    EXPECT_EQ(probe().sessionValues(), (Values{{"CGSSessionScreenIsLocked", 0}, {"kCGSSessionOnConsoleKey", 1}}));
}

TEST_F(X11SystemProbe, HidFlagsAreTheModifiersHeldOnTheServer) {
    EXPECT_EQ(probe().hidFlags(), 0u);
    const EventFlags cases[] = {
        flag::shift,
        flag::control,
        flag::alternate,
        flag::command,
        flag::command | flag::shift | flag::alternate | flag::control,
        0,
    };
    for (const EventFlags flags : cases) {
        post(flagsChanged(56, flags));
        EXPECT_EQ(probe().hidFlags(), flags) << std::hex << flags;
    }
    // Caps lock is a lock: one press turns it on, the next off.
    post(keyEvent(type::keyDown, 57));
    post(keyEvent(type::keyUp, 57));
    EXPECT_EQ(probe().hidFlags(), flag::capsLock);
    post(keyEvent(type::keyDown, 57));
    post(keyEvent(type::keyUp, 57));
    EXPECT_EQ(probe().hidFlags(), 0u);
}

TEST(X11SystemProbeWithoutXtest, InputIsNotAllowedButCaptureIs) {
    testing::XvfbDisplay server(1440, 900, {"-extension", "XTEST"});
    const auto backend = backendOn(server.name());
    EXPECT_FALSE(backend->services().probe.postEventAllowed());
    EXPECT_TRUE(backend->services().probe.screenCaptureAllowed());
}

TEST(X11SystemProbeWithoutServer, ReportsNothingAvailable) {
    const auto backend = backendOn(":32765");
    platform::SystemProbe& probe = backend->services().probe;
    EXPECT_FALSE(probe.screenCaptureAllowed());
    EXPECT_FALSE(probe.postEventAllowed());
    EXPECT_EQ(probe.hidFlags(), 0u);
    EXPECT_FALSE(probe.mainDisplayPixelSize());
    EXPECT_FALSE(probe.sessionValues());
    EXPECT_FALSE(probe.displayAsleep());
}

}  // namespace
}  // namespace brisko::e2e
