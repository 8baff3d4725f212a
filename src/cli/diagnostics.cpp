#include "cli/diagnostics.h"

#include <cstdlib>
#include <thread>

#include "cli/process_state.h"

namespace brisko {

std::string diagnosticLine(std::string_view message) {
    std::string line;
    line.reserve(programPrefix.size() + message.size() + 1);
    line.append(programPrefix).append(message).push_back('\n');
    return line;
}

void warn(std::string_view message) { processState().services.streams.writeErr(diagnosticLine(message)); }

void die(std::string_view message) {
    warn(message);
    exitProcess(2);
}

void exitProcess(int status) {
    const ProcessState& state = processState();
    platform::ProcessStreams& streams = state.services.streams;
    if (std::this_thread::get_id() != state.mainThread) {
        // The main thread still runs and uses what the static destructors of a normal exit would
        // tear down, so the process ends as from a signal handler, once buffered output is out.
        streams.bufferedOut().flush();
        streams.exitImmediately(status);
    }
    streams.exit(status);
    std::abort();  // not reached: exit does not return
}

void writeStdoutLine(std::string_view text) {
    std::string line;
    line.reserve(text.size() + 1);
    line.append(text).push_back('\n');
    processState().services.streams.writeOut(line);
}

}  // namespace brisko
