#include "ownui/refusal.h"

#include <string>

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "ownui/guard_rules.h"
#include "ownui/live_inventory.h"
#include "ownui/truncation.h"

namespace brisko {

void refuseIfOnBrisko(platform::Point point) {
    const auto window = briskoWindowAt(point, onScreenWindows(), pidIsBrisko);
    if (!window) return;
    throw InputCommandError("refused a press at (" + std::to_string(truncatedSaturating(point.x)) + "," +
                            std::to_string(truncatedSaturating(point.y)) + ") on window " +
                            std::to_string(window->windowID) + ": " + processState().briskoOwnUiRefusal);
}

void refuseIfBriskoFrontmost() {
    // An open host menu is named even when a host panel is frontmost too: it is where keys go.
    switch (briskoKeyboardHold(keyboardWindows(onScreenWindows()), pidIsBrisko)) {
        case BriskoKeyboardHold::menu:
            throw InputCommandError("refused a key press: " + processState().briskoMenuOpenRefusal);
        case BriskoKeyboardHold::brisko:
            throw InputCommandError("refused a key press while Brisko is frontmost: " +
                                    processState().briskoOwnUiRefusal);
        case BriskoKeyboardHold::other: return;
    }
}

}  // namespace brisko
