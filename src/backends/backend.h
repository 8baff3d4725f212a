#pragma once

#include <memory>

#include "platform/services.h"

namespace brisko::platform {

// The backend of the platform the program is built for: defined once per platform
// (src/backends/x11, src/backends/macos).
std::unique_ptr<Backend> makeBackend();

}  // namespace brisko::platform
