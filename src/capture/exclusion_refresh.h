#pragma once

#include <cstdint>
#include <vector>

#include "platform/screen_capture.h"

namespace brisko {

// Keeps the host's windows out of a running stream: each tick works out afresh which processes
// belong to the host, and replaces the stream's filter only when that set of pids changed.
class ExclusionRefresh {
public:
    ExclusionRefresh(platform::FrameStream& stream, std::uint32_t displayID, std::vector<std::int32_t> excluded)
        : stream_(stream), displayID_(displayID), lastExcluded_(std::move(excluded)) {}

    // One refresh. Without content, or without the stream's display in it, nothing happens; a
    // failed update is reported and the stream goes on with its previous filter.
    void tick();

    const std::vector<std::int32_t>& lastExcluded() const { return lastExcluded_; }

private:
    platform::FrameStream& stream_;
    const std::uint32_t displayID_;
    std::vector<std::int32_t> lastExcluded_;
};

}  // namespace brisko
