#include "input/event_posting.h"

#include "cli/diagnostics.h"
#include "cli/process_state.h"

namespace brisko {

platform::InputEvent mouseEvent(std::uint32_t type, platform::Point point, std::uint32_t button) {
    platform::InputEvent event;
    event.type = type;
    event.point = point;
    event.button = button;
    event.flags = processState().heldFlags;
    return event;
}

void post(const platform::InputEvent& event) {
    ProcessState& state = processState();
    platform::InputEvent posted = event;
    posted.flagsAfter = state.modifierKeysDown;
    if (!state.source.post(posted)) die("failed to create CGEvent");
    if (state.postPacingMicroseconds != 0) state.services.clock.sleepMicroseconds(state.postPacingMicroseconds);
}

}  // namespace brisko
