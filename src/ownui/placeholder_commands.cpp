#include "cli/not_built_yet.h"
#include "ownui/own_ui_commands.h"
#include "ownui/refusal.h"

namespace brisko {

void runOwnUiCheck() { notBuiltYet("own-ui-check"); }
void printOwnUi(std::optional<platform::Point>) { notBuiltYet("own-ui"); }
void refuseIfOnBrisko(platform::Point) { notBuiltYet("the own-UI guard"); }
void refuseIfBriskoFrontmost() { notBuiltYet("the own-UI guard"); }

}  // namespace brisko
