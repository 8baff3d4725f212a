#include "ownui/owner_identity.h"

#include "cli/process_state.h"

namespace brisko {

bool isBriskoOwner(const std::optional<std::string>& bundleIdentifier,
                   const std::optional<std::string>& executableName) {
    const ProcessState& state = processState();
    if (bundleIdentifier == state.briskoBundleIdentifier) return true;
    return executableName && state.briskoShellExecutableNames.contains(*executableName);
}

std::vector<std::int32_t> briskoExcludedPids(const std::vector<OwnerIdentity>& candidates) {
    std::vector<std::int32_t> pids;
    for (const OwnerIdentity& candidate : candidates) {
        if (isBriskoOwner(candidate.bundleIdentifier, candidate.executableName)) pids.push_back(candidate.pid);
    }
    return pids;
}

}  // namespace brisko
