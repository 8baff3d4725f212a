#include "capture/frame_pacer.h"

#include <algorithm>

namespace brisko {

FramePacer::FramePacer(double minimumIntervalMs, double minimumGapMs, std::optional<double> idlePollMs)
    : minimumIntervalMs_(minimumIntervalMs), minimumGapMs_(minimumGapMs), idlePollMs_(idlePollMs) {}

FramePacer::Decision FramePacer::decide(double nowMs) const {
    if (!changed_) return {false, idlePollMs_};
    double due = nowMs;
    if (lastShownMs_) due = std::max(due, *lastShownMs_ + minimumIntervalMs_);
    if (lastTakenMs_) due = std::max(due, *lastTakenMs_ + minimumGapMs_);
    if (nowMs >= due) return {true, std::nullopt};
    return {false, due - nowMs};
}

void FramePacer::frameTaken(double nowMs) {
    shownBeforeMs_ = lastShownMs_;
    lastShownMs_ = nowMs;
    lastTakenMs_ = nowMs;
    changed_ = false;
}

}  // namespace brisko
