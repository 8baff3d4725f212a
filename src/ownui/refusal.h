#pragma once

#include "platform/geometry.h"

namespace brisko {

// The live guard, called before the first event of a press is posted. Each call takes a fresh
// window list and tests owners with pidIsBrisko; it throws InputCommandError with a message for
// the agent when the press must not be delivered, and has no other effect than filling
// briskoOwnerCache.

// A press at the point would land on a host window.
void refuseIfOnBrisko(platform::Point point);
// A host pop-up menu is open, or the host's window is the frontmost normal window.
void refuseIfBriskoFrontmost();

}  // namespace brisko
