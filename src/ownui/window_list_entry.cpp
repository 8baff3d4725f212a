#include "ownui/window_list_entry.h"

namespace brisko {

std::optional<platform::ScreenWindow> screenWindowOf(const WindowListEntry& entry) {
    using platform::exactly;
    const std::optional<std::int32_t> pid = entry.ownerPID ? exactly<std::int32_t>(*entry.ownerPID) : std::nullopt;
    if (!pid || !entry.bounds) return std::nullopt;
    platform::ScreenWindow window;
    window.ownerPID = *pid;
    window.bounds = *entry.bounds;
    if (entry.number) window.windowID = exactly<std::uint32_t>(*entry.number).value_or(0);
    if (entry.alpha) window.alpha = platform::asDouble(*entry.alpha);
    if (entry.layer) window.layer = exactly<std::int64_t>(*entry.layer).value_or(0);
    return window;
}

}  // namespace brisko
