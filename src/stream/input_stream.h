#pragma once

#include <istream>

#include "stream/work_queue.h"

namespace brisko {

// `input-stream`: ignores SIGPIPE, exits with 0 on SIGTERM, writes the banner, turns pacing off,
// serves standard input with a player queue of its own and exits with 0 at its end.
[[noreturn]] void runInputStream();

// Reads the stream's lines until end of input: stop requests are handled at once, blocks are read
// and parsed here, and every other piece of work goes to the player in arrival order. At the end
// every accepted block is stopped and the player is waited for.
void serveInputStream(std::istream& in, WorkQueue& player);

}  // namespace brisko
