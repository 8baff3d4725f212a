#pragma once

#include <optional>

namespace brisko {

// When a capture source without a frame clock of its own takes its next frame. A frame is taken
// only when something changed since the last one, and never sooner than the minimum interval
// after it; a change inside the interval waits for its end, together with every other change
// that comes meanwhile. The first frame is taken at once.
class FramePacer {
public:
    struct Decision {
        bool takeFrame = false;
        // Otherwise, how long to wait before asking again unless a change comes first; absent:
        // until a change comes.
        std::optional<double> waitMs;
        bool operator==(const Decision&) const = default;
    };

    // idlePollMs: while nothing is known to have changed, how often to look for changes that
    // announce themselves to no one (absent: never).
    FramePacer(double minimumIntervalMs, std::optional<double> idlePollMs);

    void noteChange() { changed_ = true; }
    Decision decide(double nowMs) const;
    // The frame is being taken at nowMs: changes from here on belong to the next frame.
    void frameTaken(double nowMs);

private:
    double minimumIntervalMs_;
    std::optional<double> idlePollMs_;
    std::optional<double> lastFrameMs_;
    bool changed_ = true;
};

}  // namespace brisko
