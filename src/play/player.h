#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "play/line_source.h"
#include "play/play_block.h"
#include "play/play_clock.h"

namespace brisko {

// How a played block ended.
enum class PlayEnd { finished, cancelled };

struct PlayResult {
    std::int64_t raised = 0;  // lines whose command raised an error
    PlayEnd end = PlayEnd::finished;

    bool operator==(const PlayResult&) const = default;
};

// Runs each line at its offset from one start reading of the clock and lasts the block's
// duration. A stop is checked while waiting and right before each command; a stopped block runs
// the release plan of what its commands pressed. A finished block releases nothing.
PlayResult playBlock(const PlayBlock& block, const IsStopped& isStopped);

// Plays the block and writes its answer line, "played {id} ok|cancelled {raised}".
void runBlock(const PlayBlock& block, const IsStopped& isStopped);

// The diagnostic of a refused block, and its answer line when it has an id.
void answerRefusal(const PlayRefusal& refusal);

// Reads one block after its header tokens and plays it to the end, answering it; false when it
// was refused or could not be read.
bool runPlay(const std::vector<std::string>& header, const LineSource& next);

}  // namespace brisko
