#include "play/play_clock.h"

#include <algorithm>
#include <cmath>

#include "cli/process_state.h"

namespace brisko {

double monotonicMs() { return processState().services.clock.monotonicMs(); }

void sleepMs(double ms) {
    if (!(ms > 0)) return;
    // Rounding up keeps every sleep moving the clock, so a wait always reaches its target.
    processState().services.clock.sleepMicroseconds(static_cast<unsigned long long>(std::ceil(ms * 1000.0)));
}

double playWaitMs(double startMs, std::int64_t t, double nowMs) {
    return std::max(0.0, static_cast<double>(t) + startMs - nowMs);
}

std::vector<double> playWaits(const PlayBlock& block, const std::vector<double>& clock) {
    std::vector<double> waits;
    waits.reserve(block.lines.size() + 1);
    for (std::size_t i = 0; i < block.lines.size(); ++i) {
        waits.push_back(playWaitMs(clock.front(), block.lines[i].t, clock[i + 1]));
    }
    waits.push_back(playWaitMs(clock.front(), block.durationMs, clock.back()));
    return waits;
}

bool waitUntil(double targetMs, const IsStopped& isStopped) {
    if (isStopped()) return false;
    while (true) {
        const double remaining = targetMs - monotonicMs();
        if (remaining <= 0) return true;
        sleepMs(std::min(remaining, stopPollSliceMs));
        if (isStopped()) return false;
    }
}

}  // namespace brisko
