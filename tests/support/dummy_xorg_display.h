#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

namespace brisko::testing {

// A private Xorg server with the dummy video driver, for what Xvfb cannot show: RandR outputs
// (DUMMY0, DUMMY1, ...) that a test sets with xrandr, and a screen that changes size. Modes
// 1440x900, 1280x1024 and 1024x768; it starts in the first given, its screen may grow to
// virtualSize (default: the largest given). Runs on a free display number while the object lives.
class DummyXorgDisplay {
public:
    explicit DummyXorgDisplay(const std::vector<std::string>& modes,
                              std::optional<std::pair<int, int>> virtualSize = std::nullopt);
    ~DummyXorgDisplay();

    const std::string& name() const { return name_; }
    // xrandr with the arguments, on this display.
    ProgramResult xrandr(const std::vector<std::string>& args) const;

private:
    std::string config_;
    std::unique_ptr<Process> server_;
    std::string name_;
};

}  // namespace brisko::testing
