#include "capture/frame_pacer.h"

namespace brisko {

FramePacer::FramePacer(double minimumIntervalMs, std::optional<double> idlePollMs)
    : minimumIntervalMs_(minimumIntervalMs), idlePollMs_(idlePollMs) {}

FramePacer::Decision FramePacer::decide(double nowMs) const {
    if (!changed_) return {false, idlePollMs_};
    if (!lastFrameMs_) return {true, std::nullopt};
    const double due = *lastFrameMs_ + minimumIntervalMs_;
    if (nowMs >= due) return {true, std::nullopt};
    return {false, due - nowMs};
}

void FramePacer::frameTaken(double nowMs) {
    lastFrameMs_ = nowMs;
    changed_ = false;
}

}  // namespace brisko
