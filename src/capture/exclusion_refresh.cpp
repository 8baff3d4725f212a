#include "capture/exclusion_refresh.h"

#include <algorithm>
#include <optional>
#include <string>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "ownui/capture_exclusion.h"

namespace brisko {

void ExclusionRefresh::tick() {
    const platform::ShareableContentResult listed = processState().services.capture.shareableContent();
    if (!listed.content) return;
    const std::vector<platform::CaptureDisplay>& displays = listed.content->displays;
    const auto display = std::find_if(displays.begin(), displays.end(),
                                      [&](const platform::CaptureDisplay& d) { return d.displayID == displayID_; });
    if (display == displays.end()) return;
    platform::CaptureFilter filter = briskoExcludingFilter(*display, *listed.content);
    if (filter.excludedPids == lastExcluded_) return;
    // The new list is kept even when the update fails: the next tick compares with it.
    lastExcluded_ = filter.excludedPids;
    if (const std::optional<std::string> error = stream_.updateFilter(filter)) {
        warn("capture-stream: could not re-exclude Brisko's windows: " + *error);
    }
}

}  // namespace brisko
