#include "cli/not_built_yet.h"
#include "input/input_commands.h"

namespace brisko {

void runMove(const std::vector<std::string>&) { notBuiltYet("move"); }
void runClick(const std::vector<std::string>&) { notBuiltYet("click"); }
void runDoubleClick(const std::vector<std::string>&) { notBuiltYet("doubleclick"); }
void runDrag(const std::vector<std::string>&) { notBuiltYet("drag"); }
void runType(const std::string&) { notBuiltYet("type"); }
void runKey(const std::string&) { notBuiltYet("key"); }
// No raw command word is known until the raw commands exist.
bool runRawInputCommand(const std::string&, const std::vector<std::string>&) { return false; }

}  // namespace brisko
