#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "play/play_block.h"

namespace brisko {

// The player checks for a stop at least this often while it waits.
inline constexpr double stopPollSliceMs = 5.0;

using IsStopped = std::function<bool()>;

// Now on the monotonic clock, in milliseconds.
double monotonicMs();
// Sleeps the calling thread for ms (rounded up to whole microseconds); nothing unless ms > 0.
void sleepMs(double ms);
// How long to wait from nowMs until offset t of a block that started at startMs; never negative.
double playWaitMs(double startMs, std::int64_t t, double nowMs);
// The waits the player would compute for these clock readings: reading 0 is the start, reading i
// is taken just before line i, the last one before the final wait. One wait per line, then the
// final wait. The clock must hold the number of lines plus 2 readings.
std::vector<double> playWaits(const PlayBlock& block, const std::vector<double>& clock);
// Waits in slices until targetMs; true when it was reached, false when a stop was seen first.
bool waitUntil(double targetMs, const IsStopped& isStopped);

}  // namespace brisko
