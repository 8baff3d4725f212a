#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/window_server.h"

namespace brisko {

// What the window server and the process table say now. Each call asks afresh, except
// pidIsBrisko, whose answers are kept for the life of the process.

// On-screen windows, frontmost first; empty when the list is unavailable.
std::vector<platform::ScreenWindow> onScreenWindows();

// The last path component of the process's executable file, invalid UTF-8 read as U+FFFD; absent
// when it cannot be read.
std::optional<std::string> executableName(std::int32_t pid);

// Whether the process is the host. The first answer for a pid, positive or negative, is kept in
// briskoOwnerCache and returned from then on without asking the system again.
bool pidIsBrisko(std::int32_t pid);

}  // namespace brisko
