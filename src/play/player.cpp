#include "play/player.h"

#include <exception>

#include "cli/diagnostics.h"
#include "input/input_commands.h"
#include "play/lift_argvs.h"

namespace brisko {
namespace {

std::string joined(const Argv& argv) {
    std::string text;
    for (const std::string& part : argv) {
        if (!text.empty()) text += ' ';
        text += part;
    }
    return text;
}

// Runs one command of the block; false when it raised, which is reported on standard error.
bool runArgv(const std::string& id, const Argv& argv) {
    try {
        runRawInputCommand(argv.front(), Argv(argv.begin() + 1, argv.end()));
        return true;
    } catch (const std::exception& error) {
        warn("play " + id + ": line '" + joined(argv) + "': " + error.what());
        return false;
    }
}

PlayResult cancel(const std::string& id, const std::vector<Argv>& ran, std::int64_t raised) {
    for (const Argv& lift : liftArgvs(ran)) runArgv(id, lift);
    return {raised, PlayEnd::cancelled};
}

}  // namespace

PlayResult playBlock(const PlayBlock& block, const IsStopped& isStopped) {
    const double startMs = monotonicMs();
    std::int64_t raised = 0;
    std::vector<Argv> ran;
    for (const PlayLine& line : block.lines) {
        // The second check honours a stop that arrives just as the wait ends.
        if (!waitUntil(startMs + static_cast<double>(line.t), isStopped) || isStopped()) {
            return cancel(block.id, ran, raised);
        }
        if (runArgv(block.id, line.argv)) {
            ran.push_back(line.argv);
        } else {
            ++raised;
        }
    }
    if (!waitUntil(startMs + static_cast<double>(block.durationMs), isStopped)) {
        return cancel(block.id, ran, raised);
    }
    return {raised, PlayEnd::finished};
}

void runBlock(const PlayBlock& block, const IsStopped& isStopped) {
    const PlayResult result = playBlock(block, isStopped);
    const char* ending = result.end == PlayEnd::finished ? " ok " : " cancelled ";
    writeStdoutLine("played " + block.id + ending + std::to_string(result.raised));
}

void answerRefusal(const PlayRefusal& refusal) {
    warn("play: refused " + refusal.id.value_or("a block with no id") + ": " + refusal.reason);
    if (refusal.id) writeStdoutLine("played " + *refusal.id + " refused " + refusal.reason);
}

bool runPlay(const std::vector<std::string>& header, const LineSource& next) {
    PlayBlock block;
    try {
        block = readPlayBlock(header, next);
    } catch (const PlayRefusal& refusal) {
        answerRefusal(refusal);
        return false;
    } catch (const std::exception& error) {
        warn(std::string("play: ") + error.what());
        return false;
    }
    runBlock(block, [] { return false; });
    return true;
}

}  // namespace brisko
