#pragma once

#include <cstdlib>
#include <memory>
#include <string>

#include "platform/services.h"

namespace brisko::e2e {

// The X backend of the program, in the test's own process, connected to the given display.
// The backend connects lazily, so DISPLAY set here is the one it opens.
inline std::unique_ptr<platform::Backend> backendOn(const std::string& display) {
    ::setenv("DISPLAY", display.c_str(), 1);
    return platform::makeBackend();
}

}  // namespace brisko::e2e
