#pragma once

#include <optional>
#include <vector>

#include "ownui/owner_identity.h"
#include "platform/screen_capture.h"

namespace brisko {

// One candidate per application of the content, in its order; an empty bundle identifier counts
// as none. Every executable name is looked up afresh (briskoOwnerCache is not used).
std::vector<OwnerIdentity> briskoCandidates(const platform::ShareableContent& content);

// The content's display with the main display's id, else its first display; absent when it
// lists none.
std::optional<platform::CaptureDisplay> mainSCDisplay(const platform::ShareableContent& content);

// The positions in content.applications of every application whose pid is listed, in content
// order: what a filter that leaves those pids out selects.
std::vector<std::size_t> applicationsWithPids(const platform::ShareableContent& content,
                                              const std::vector<std::int32_t>& pids);

// The display with every application of the content whose pid is a host pid left out. The
// selection is made over the applications in content order, so an application listed twice is
// excluded twice; excludedPids holds the selected applications' pids in ascending order.
platform::CaptureFilter briskoExcludingFilter(const platform::CaptureDisplay& display,
                                              const platform::ShareableContent& content);

}  // namespace brisko
