#pragma once

#include <optional>
#include <string_view>

#include "input/key_vocabulary.h"
#include "platform/geometry.h"

// The raw commands post at most one press or release each; what must outlive one command (held
// modifier flags, buttons whose press was refused) lives in the process state. Their rows and
// runner are declared with the other command entry points in input/input_commands.h.

namespace brisko {

// Sets heldFlags from a flags argument ("cmd,shift", "none"); no argument leaves them as they are.
void adoptHeldFlags(std::optional<std::string_view> flags);
// One pointer motion holding "none", "left", "right" or "middle". Throws InputCommandError for
// any other name.
void rawMove(platform::Point point, std::string_view held);
// One press or release of the named button with click state 1.
void rawButton(platform::Point point, std::string_view name, bool down);
// One key press or release. For a modifier key it is a flags-changed event whose flags become
// heldFlags; any other key leaves heldFlags alone.
void postRawKey(KeyCode code, EventFlags flags, bool down);

}  // namespace brisko
