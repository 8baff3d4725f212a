#include "ownui/live_inventory.h"

#include <string_view>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "cli/unicode_text.h"
#include "ownui/guard_rules.h"
#include "ownui/owner_identity.h"

namespace brisko {
namespace {

// The text after the final "/", trailing slashes ignored; "/" alone stays "/".
std::string lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    if (path.size() <= 1) return std::string(path);
    const std::size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

}  // namespace

std::vector<platform::ScreenWindow> onScreenWindows() {
    ProcessState& state = processState();
    std::vector<platform::ScreenWindow> windows = state.services.windows.onScreenWindows();
    if (const std::optional<std::string> why = state.services.windows.ownerlessWindows();
        why && !state.ownerlessWindowsReported) {
        state.ownerlessWindowsReported = true;
        warn("windows whose owner is unknown are not guarded: " + *why);
    }
    return windows;
}

std::vector<platform::ScreenWindow> keyboardWindows(const std::vector<platform::ScreenWindow>& windows) {
    return keyboardOrder(windows, processState().services.windows.keyboardFocusWindow());
}

std::optional<std::string> executableName(std::int32_t pid) {
    const std::optional<std::string> path = processState().services.windows.executablePath(pid);
    if (!path) return std::nullopt;
    // A path is bytes; the name compared with the host's is text.
    return lastPathComponent(repairUtf8(*path));
}

bool pidIsBrisko(std::int32_t pid) {
    auto& cache = processState().briskoOwnerCache;
    if (const auto known = cache.find(pid); known != cache.end()) return known->second;
    const std::optional<std::string> bundle = processState().services.windows.bundleIdentifier(pid);
    const bool brisko = isBriskoOwner(bundle, executableName(pid));
    cache.emplace(pid, brisko);
    return brisko;
}

}  // namespace brisko
