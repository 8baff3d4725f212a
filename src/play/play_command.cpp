#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "play/play_commands.h"
#include "play/player.h"

namespace brisko {

void runPlayCommand() {
    std::istream& in = processState().services.streams.in();
    const std::optional<std::string> header = readInputLine(in);
    if (!header) die("play: no block on stdin");
    std::vector<std::string> tokens = splitAtSpaces(*header);
    if (tokens.empty() || tokens.front() != "play") die("play: expected a `play` header, got '" + *header + "'");
    tokens.erase(tokens.begin());
    if (!runPlay(tokens, linesOf(in))) exitProcess(2);
}

}  // namespace brisko
