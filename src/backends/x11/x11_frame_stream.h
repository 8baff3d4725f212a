#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <xcb/xcb.h>

#include "capture/exclusion_plan.h"
#include "platform/screen_capture.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_frame_composer.h"

namespace brisko::platform::x11 {

// A frame stream of one display of an X server. Its thread sleeps until the server reports a
// change (DAMAGE on the root and on every top-level window, changes of the window tree, of the
// properties that say which process owns a window, of the cursor's shape, or a moved pointer), then composes a frame at most at the configured pace and
// hands it to the output, reading from the server only where the root's damage says it drew; a
// still screen costs a look at the pointer now and then. A frame is
// composed and delivered on the same thread, so none ever waits in a queue. The stream has its
// own connection, whose events only it reads.
class X11FrameStream final : public FrameStream {
public:
    // display: where the display lies on the screen; absent when it has gone. When the display
    // changes its size or place later, the frames follow it.
    X11FrameStream(std::uint32_t displayID, std::optional<PixelRect> display, const CaptureFilter& filter,
                   const FrameStreamConfiguration& configuration);
    ~X11FrameStream() override;

    std::optional<std::string> addOutput(FrameStreamOutput& output) override;
    std::optional<std::string> startCapture() override;
    std::optional<std::string> updateFilter(const CaptureFilter& filter) override;
    void stop() override;

private:
    void watchChanges(xcb_connection_t* connection);
    std::uint32_t trackWindow(xcb_connection_t* connection, xcb_window_t window);
    void watchProperties(xcb_connection_t* connection, xcb_window_t window);
    void run();
    // Reads every event the server has sent; true when one of them means the picture may differ.
    bool handleEvents(xcb_connection_t* connection);
    enum class Followed { same, moved, refused };
    Followed followDisplay(xcb_connection_t* connection);
    bool pointerMoved(xcb_connection_t* connection);
    void noteDrawn(const PixelRect& area);
    std::optional<std::vector<PixelRect>> takeDamage(xcb_connection_t* connection);
    void wake();

    const std::uint32_t displayID_;
    std::optional<PixelRect> display_;
    const FrameStreamConfiguration configuration_;
    FrameStreamOutput* output_ = nullptr;
    X11Connection connection_;
    std::unique_ptr<FrameComposer> composer_;
    std::uint8_t damageEvent_ = 0;
    std::uint8_t xfixesEvent_ = 0;
    std::uint8_t randrEvent_ = 0;
    std::vector<xcb_atom_t> ownershipAtoms_;  // properties whose change may change a window's owner
    bool displayMoved_ = false;  // the screen or a monitor changed: where is the display now?
    bool damage_ = false;
    std::uint32_t rootDamage_ = XCB_NONE;
    std::vector<PixelRect> drawn_;        // where the root's damage reported since the last frame
    std::vector<std::uint32_t> damaged_;  // other damage objects that reported since then

    std::mutex filterLock_;
    std::set<std::int32_t> excludedPids_;
    std::atomic<bool> filterChanged_{false};
    std::atomic<bool> stopping_{false};
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    std::thread thread_;
};

}  // namespace brisko::platform::x11
