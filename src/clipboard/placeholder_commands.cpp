#include "cli/not_built_yet.h"
#include "clipboard/clipboard_commands.h"

namespace brisko {

void printClipboard(const std::vector<std::string>&) { notBuiltYet("get-clipboard"); }
void clearClipboardTransient() { notBuiltYet("clear-clipboard"); }
void printClipboardAccess() { notBuiltYet("clipboard-access"); }
void setClipboard(const std::string&) { notBuiltYet("set-clipboard"); }

}  // namespace brisko
