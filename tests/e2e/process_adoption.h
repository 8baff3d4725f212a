#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace brisko::testing {

// Makes this process the reaper of its orphaned descendants: processes that detach themselves
// (xclip, the program's clipboard owners) become its children, to be found and awaited.
void adoptOrphans();

// This process's children that are still running, those of the executable `exe` only when given.
std::vector<pid_t> runningChildren(const std::string& exe = {});

// The child's exit status once it has exited; absent when it still runs after `timeout`.
std::optional<int> awaitExit(pid_t child, std::chrono::milliseconds timeout);

// Waits for every child to exit and kills those that do not; returns the ones it had to kill.
std::vector<pid_t> reapChildren(std::chrono::milliseconds timeout);

}  // namespace brisko::testing
