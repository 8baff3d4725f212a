#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/window_server.h"

namespace brisko {

// What the window server and the process table say now. Each call asks afresh, except
// pidIsBrisko, whose answers are kept for the life of the process.

// On-screen windows, frontmost first; empty when the list is unavailable. The first time windows
// are left out for want of a known owner, says so on standard error: the guard cannot see them.
std::vector<platform::ScreenWindow> onScreenWindows();

// The windows as the keyboard rule reads them, with the window keys go to now in front where the
// platform can tell (keyboardOrder).
std::vector<platform::ScreenWindow> keyboardWindows(const std::vector<platform::ScreenWindow>& windows);

// The last path component of the process's executable file, invalid UTF-8 read as U+FFFD; absent
// when it cannot be read.
std::optional<std::string> executableName(std::int32_t pid);

// Whether the process is the host. The first answer for a pid, positive or negative, is kept in
// briskoOwnerCache and returned from then on without asking the system again.
bool pidIsBrisko(std::int32_t pid);

}  // namespace brisko
