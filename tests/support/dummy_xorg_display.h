#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

namespace brisko::testing {

// A private Xorg server on a free display number while the object lives, with the dummy video
// driver for what Xvfb cannot show: RandR outputs (DUMMY0, ...) set with xrandr, a screen that changes
// size. Modes 1440x900, 1280x1024, 1024x768, starting in the first given; virtualSize bounds the screen.
class DummyXorgDisplay {
public:
    explicit DummyXorgDisplay(const std::vector<std::string>& modes, std::optional<std::pair<int, int>> virtualSize = {});
    ~DummyXorgDisplay();

    const std::string& name() const { return name_; }
    ProgramResult xrandr(const std::vector<std::string>& args) const;

private:
    std::string config_;
    std::unique_ptr<Process> server_;
    std::string name_;
};

}  // namespace brisko::testing
