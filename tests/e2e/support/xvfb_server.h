#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace brisko::e2e {

// A virtual X server of the test's own on a free display number, 1440 x 900 at 24 bits. Ready to
// accept connections once constructed; stopped on destruction.
class XvfbServer {
public:
    static constexpr int width = 1440;
    static constexpr int height = 900;

    // extraArgs go to Xvfb as they are (for example "-extension", "XTEST" to leave XTEST out).
    explicit XvfbServer(const std::vector<std::string>& extraArgs = {});
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    // The display name for DISPLAY, ":N".
    const std::string& display() const { return display_; }

private:
    pid_t pid_ = -1;
    std::string display_;
};

}  // namespace brisko::e2e
