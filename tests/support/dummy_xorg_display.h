#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

namespace brisko::testing {

// A private Xorg server with the dummy video driver, for what Xvfb cannot show: RandR outputs
// (DUMMY0, DUMMY1, ...) whose modes and places a test sets with xrandr, as on a desk with several
// monitors, and a screen that changes size. It offers the modes 1440x900, 1280x1024 and 1024x768,
// starts in the first of those it is given, and its screen may grow up to virtualSize (default:
// the largest mode given). Started by the constructor on a free display number, stopped by the
// destructor.
class DummyXorgDisplay {
public:
    explicit DummyXorgDisplay(const std::vector<std::string>& modes,
                              std::optional<std::pair<int, int>> virtualSize = std::nullopt);
    ~DummyXorgDisplay();
    DummyXorgDisplay(const DummyXorgDisplay&) = delete;
    DummyXorgDisplay& operator=(const DummyXorgDisplay&) = delete;

    const std::string& name() const { return name_; }
    // xrandr with the arguments, on this display.
    ProgramResult xrandr(const std::vector<std::string>& args) const;

private:
    std::string config_;
    std::unique_ptr<Process> server_;
    std::string name_;
};

}  // namespace brisko::testing
