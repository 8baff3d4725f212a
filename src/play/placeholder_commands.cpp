#include "cli/not_built_yet.h"
#include "play/play_commands.h"

namespace brisko {

void runPlay() { notBuiltYet("play"); }
void runPlayCheck() { notBuiltYet("play-check"); }

}  // namespace brisko
