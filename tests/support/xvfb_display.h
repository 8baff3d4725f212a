#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/process.h"

namespace brisko::testing {

// A private Xvfb server on a free display number, started by the constructor (which returns once
// the server accepts connections) and stopped by the destructor. It never resets when its last
// client leaves, so that nothing changes between two programs the tests run; a test of what a
// reset does gives "-reset".
class XvfbDisplay {
public:
    // extraArgs go to Xvfb after the others (for example "-extension", "XTEST" to leave XTEST out).
    explicit XvfbDisplay(int width = 1440, int height = 900, const std::vector<std::string>& extraArgs = {});
    ~XvfbDisplay();
    XvfbDisplay(const XvfbDisplay&) = delete;
    XvfbDisplay& operator=(const XvfbDisplay&) = delete;

    // ":N", for DISPLAY.
    const std::string& name() const { return name_; }
    int width() const { return width_; }
    int height() const { return height_; }

private:
    std::string name_;
    int width_;
    int height_;
    std::unique_ptr<Process> server_;
};

// The test program's display, started on first use and shared by all its suites; DISPLAY names it
// from then on. Run with BRISKO_TEST_WINDOW_MANAGER=openbox, it is managed by that window manager.
const XvfbDisplay& testDisplay();
// Whether a window manager manages the test display (BRISKO_TEST_WINDOW_MANAGER).
bool testDisplayManaged();

}  // namespace brisko::testing
