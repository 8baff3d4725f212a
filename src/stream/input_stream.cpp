#include "stream/input_stream.h"

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "input/input_commands.h"
#include "play/player.h"
#include "stream/serial_queue.h"

namespace brisko {
namespace {

using Tokens = std::vector<std::string>;

void handleStop(const std::string& line, const Tokens& tokens) {
    if (tokens.size() == 2 && processState().playControl.requestStop(tokens[1])) return;
    warn("input-stream: nothing to stop for line '" + line + "'");
}

// The block is registered before its run is queued and leaves the registry only after its answer,
// so a stop read at any moment in between finds it.
void queueBlock(WorkQueue& player, PlayBlock block) {
    PlayControl& control = processState().playControl;
    control.begin(block.id);
    player.async([&control, block = std::move(block)] {
        runBlock(block, [&] { return control.isStopped(block.id); });
        control.finish(block.id);
    });
}

void readBlock(WorkQueue& player, const Tokens& header, const LineSource& next) {
    std::optional<PlayBlock> block;
    try {
        block = readPlayBlock(header, next);
    } catch (const PlayRefusal& refusal) {
        // Answered from the queue, so that it follows the answers of the work queued before it.
        player.async([refusal] { answerRefusal(refusal); });
        return;
    } catch (const std::exception& error) {
        warn(std::string("input-stream: play: ") + error.what());
        return;
    }
    queueBlock(player, std::move(*block));
}

void queueCommand(WorkQueue& player, std::string line, Tokens tokens) {
    player.async([line = std::move(line), tokens = std::move(tokens)] {
        try {
            if (!runRawInputCommand(tokens.front(), Tokens(tokens.begin() + 1, tokens.end()))) {
                warn("input-stream: ignoring unknown command in line '" + line + "'");
            }
        } catch (const std::exception& error) {
            warn("input-stream: ignoring line '" + line + "': " + error.what());
        }
    });
}

}  // namespace

void serveInputStream(std::istream& in, WorkQueue& player) {
    const LineSource next = linesOf(in);
    while (std::optional<std::string> line = next()) {
        Tokens tokens = splitAtSpaces(*line);
        if (tokens.empty()) continue;
        if (tokens.front() == "stop") {
            handleStop(*line, tokens);
        } else if (tokens.front() == "play") {
            readBlock(player, Tokens(tokens.begin() + 1, tokens.end()), next);
        } else {
            queueCommand(player, std::move(*line), std::move(tokens));
        }
    }
    processState().playControl.stopAll();
    player.sync();
}

void runInputStream() {
    ProcessState& state = processState();
    state.services.signals.ignoreBrokenPipe();
    state.services.signals.exitZeroOnTerminate();
    writeStdoutLine(state.inputStreamReady);
    state.postPacingMicroseconds = 0;
    {
        SerialQueue player;
        serveInputStream(state.services.streams.in(), player);
    }
    exitProcess(0);
}

}  // namespace brisko
