#pragma once

#include <memory>

#include "platform/services.h"

namespace brisko::platform {

// The backend of the platform the program is built for: defined once per platform
// (src/backends/x11, src/backends/macos).
std::unique_ptr<Backend> makeBackend();

// Some work must outlive the command that asked for it (on X, serving the clipboard), so the
// backend starts the program itself in a mode of its own for it. When this process is one of
// those, does that work and ends the process; returns at once otherwise. Called first thing.
void runBackendProcessIfStartedAsOne(int argc, char** argv);

}  // namespace brisko::platform
