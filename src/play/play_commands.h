#pragma once

namespace brisko {

// `play`: reads one block from standard input and plays it; no stop is possible.
void runPlayCommand();
// `play-check`: prints the plan of one block from standard input as one JSON line.
void runPlayCheck();

}  // namespace brisko
