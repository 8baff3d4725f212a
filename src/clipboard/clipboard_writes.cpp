#include "cli/process_state.h"
#include "clipboard/clipboard_commands.h"

// The clipboard writes. Like the system's own clipboard tools, they do not report a failed write.

namespace brisko {

void clearClipboardTransient() {
    platform::Pasteboard& pasteboard = processState().services.pasteboard;
    pasteboard.clearContents();
    // Clipboard managers skip changes marked transient, so the cleared state is not recorded.
    pasteboard.setData("org.nspasteboard.TransientType", {});
}

void setClipboard(const std::string& text) {
    platform::Pasteboard& pasteboard = processState().services.pasteboard;
    pasteboard.clearContents();
    pasteboard.setPlainText(text);
}

}  // namespace brisko
