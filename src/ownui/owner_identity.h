#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brisko {

// One process as a candidate host.
struct OwnerIdentity {
    std::int32_t pid = 0;
    std::optional<std::string> bundleIdentifier;
    std::optional<std::string> executableName;  // last path component of the executable file
};

// The host is recognised by its exact bundle identifier, or by the exact name of its menu-bar
// executable. No prefix or case-folded match counts: a look-alike must not be trusted as the host.
bool isBriskoOwner(const std::optional<std::string>& bundleIdentifier,
                   const std::optional<std::string>& executableName);

// The pids of the host candidates, in input order, duplicates kept.
std::vector<std::int32_t> briskoExcludedPids(const std::vector<OwnerIdentity>& candidates);

}  // namespace brisko
