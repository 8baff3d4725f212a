#include "input/input_commands.h"
#include "input/keyboard_actions.h"
#include "ownui/refusal.h"

// The one-shot keyboard commands: nothing is parsed or posted while the host holds the keyboard.

namespace brisko {

void runType(const std::string& text) {
    refuseIfBriskoFrontmost();
    typeText(text);
}

void runKey(const std::string& combo) {
    refuseIfBriskoFrontmost();
    pressCombo(combo);
}

}  // namespace brisko
