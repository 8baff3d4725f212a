#include "ownui/capture_exclusion.h"

#include <algorithm>
#include <set>

#include "cli/process_state.h"
#include "ownui/live_inventory.h"

namespace brisko {

std::vector<OwnerIdentity> briskoCandidates(const platform::ShareableContent& content) {
    std::vector<OwnerIdentity> candidates;
    candidates.reserve(content.applications.size());
    for (const platform::CaptureApplication& app : content.applications) {
        OwnerIdentity candidate{app.processID, std::nullopt, executableName(app.processID)};
        if (!app.bundleIdentifier.empty()) candidate.bundleIdentifier = app.bundleIdentifier;
        candidates.push_back(std::move(candidate));
    }
    return candidates;
}

std::optional<platform::CaptureDisplay> mainSCDisplay(const platform::ShareableContent& content) {
    if (content.displays.empty()) return std::nullopt;
    const std::uint32_t mainID = processState().services.capture.mainDisplayID();
    const auto main = std::find_if(content.displays.begin(), content.displays.end(),
                                   [&](const platform::CaptureDisplay& d) { return d.displayID == mainID; });
    return main != content.displays.end() ? *main : content.displays.front();
}

std::vector<std::size_t> applicationsWithPids(const platform::ShareableContent& content,
                                              const std::vector<std::int32_t>& pids) {
    const std::set<std::int32_t> listed(pids.begin(), pids.end());
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < content.applications.size(); ++i) {
        if (listed.contains(content.applications[i].processID)) positions.push_back(i);
    }
    return positions;
}

platform::CaptureFilter briskoExcludingFilter(const platform::CaptureDisplay& display,
                                              const platform::ShareableContent& content) {
    platform::CaptureFilter filter{display, {}};
    for (const std::size_t i : applicationsWithPids(content, briskoExcludedPids(briskoCandidates(content)))) {
        filter.excludedPids.push_back(content.applications[i].processID);
    }
    std::sort(filter.excludedPids.begin(), filter.excludedPids.end());
    return filter;
}

}  // namespace brisko
