#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

namespace brisko::testing {

// A private X server on a free display number, started by the constructor (which returns once the
// server accepts connections) and asked to end by the destructor. It never resets when its last
// client leaves, so that nothing changes between two programs the tests run; a test of what a
// reset does gives "-reset".
class XServer {
public:
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;
    ~XServer();

    // ":N", for DISPLAY.
    const std::string& name() const { return name_; }

protected:
    XServer() = default;
    // Starts the server, which writes its display number on standard output (-displayfd 1) once it
    // accepts connections; false when it did not in time.
    bool start(const std::string& program, std::vector<std::string> args, std::chrono::milliseconds timeout = 10s);

private:
    std::string name_;
    std::unique_ptr<Process> server_;
};

// Xvfb with XTEST, Composite, DAMAGE and RANDR.
class XvfbDisplay : public XServer {
public:
    // extraArgs go to Xvfb after the others (for example "-extension", "XTEST" to leave XTEST out).
    explicit XvfbDisplay(int width = 1440, int height = 900, const std::vector<std::string>& extraArgs = {});

    int width() const { return width_; }
    int height() const { return height_; }

private:
    int width_;
    int height_;
};

// Xorg with the dummy video driver, for what Xvfb cannot show: RandR outputs (DUMMY0, ...) set with
// xrandr, a screen that changes size. Modes 1440x900, 1280x1024, 1024x768, starting in the first
// given; virtualSize bounds the screen.
class DummyXorgDisplay : public XServer {
public:
    explicit DummyXorgDisplay(const std::vector<std::string>& modes, std::optional<std::pair<int, int>> virtualSize = {});
    ~DummyXorgDisplay();

    ProgramResult xrandr(const std::vector<std::string>& args) const;

private:
    std::string config_;
};

// The test program's display, started on first use and shared by all its suites; DISPLAY names it
// from then on. Run with BRISKO_TEST_WINDOW_MANAGER=openbox, it is managed by that window manager.
const XvfbDisplay& testDisplay();
// Whether a window manager manages the test display (BRISKO_TEST_WINDOW_MANAGER).
bool testDisplayManaged();

}  // namespace brisko::testing
