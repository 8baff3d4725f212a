#include <istream>
#include <string>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "ownui/own_ui_case.h"
#include "ownui/own_ui_commands.h"

namespace brisko {

void runOwnUiCheck() {
    platform::ProcessStreams& streams = processState().services.streams;
    std::istream& in = streams.in();
    std::ostream& out = streams.bufferedOut();
    std::string line;
    // getline also yields a last line that has no line feed.
    while (std::getline(in, line)) {
        if (!in.eof() && !line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        const CaseOutcome outcome = evaluateOwnUiCase(line);
        if (const auto* failure = std::get_if<CaseFailure>(&outcome)) die(failure->message);
        // Buffered on purpose: answers reach a pipe when the buffer fills or the process ends.
        out << std::get<CaseAnswer>(outcome).line << '\n';
    }
}

}  // namespace brisko
