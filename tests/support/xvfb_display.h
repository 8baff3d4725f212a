#pragma once

#include <string>
#include <sys/types.h>

namespace brisko::testing {

// A private Xvfb server on a free display number, started by the constructor (which returns once
// the server accepts connections) and stopped by the destructor.
class XvfbDisplay {
public:
    explicit XvfbDisplay(int width = 1440, int height = 900);
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
    pid_t pid_ = -1;
};

}  // namespace brisko::testing
