#pragma once

#include <optional>

namespace brisko {

// When a capture source without a frame clock of its own takes its next frame. A frame is taken
// only when something changed since the last one. Frames that show something new are at least
// the minimum interval apart; a change inside the interval waits for its end, together with every
// other change that comes meanwhile, while the first change after a still spell is taken at once.
// A frame that showed nothing new (a window mapped a moment before its client draws it) does not
// hold the next one back beyond the minimum gap, so that the drawing is not left waiting.
class FramePacer {
public:
    struct Decision {
        bool takeFrame = false;
        // Otherwise, how long to wait before asking again unless a change comes first; absent:
        // until a change comes.
        std::optional<double> waitMs;
        bool operator==(const Decision&) const = default;
    };

    // minimumGapMs: between any two frames, which bounds the frames a source that keeps redrawing
    // the same pixels can cause. idlePollMs: while nothing is known to have changed, how often to
    // look for changes that announce themselves to no one (absent: never).
    FramePacer(double minimumIntervalMs, double minimumGapMs, std::optional<double> idlePollMs);

    void noteChange() { changed_ = true; }
    Decision decide(double nowMs) const;
    // The frame is being taken at nowMs: changes from here on belong to the next frame.
    void frameTaken(double nowMs);
    // The frame taken last turned out to show nothing new.
    void frameShowedNothingNew() { lastShownMs_ = shownBeforeMs_; }

private:
    double minimumIntervalMs_;
    double minimumGapMs_;
    std::optional<double> idlePollMs_;
    std::optional<double> lastTakenMs_;
    std::optional<double> lastShownMs_;
    std::optional<double> shownBeforeMs_;
    bool changed_ = true;
};

}  // namespace brisko
