#include <string_view>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "clipboard/clipboard_commands.h"

namespace brisko {

void printClipboardAccess() {
    // The platform's access behaviour numbers: 2 always allow, 1 ask; default, always deny and
    // anything newer read as "default".
    const std::int64_t behavior = processState().services.pasteboard.accessBehavior();
    const std::string_view access = behavior == 2 ? "allow" : behavior == 1 ? "ask" : "default";
    writeStdoutLine(std::string("{\"access\":\"").append(access).append("\"}"));
}

}  // namespace brisko
