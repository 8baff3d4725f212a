#pragma once

#include "platform/geometry.h"

namespace brisko {

// The live guard: throws InputCommandError with the refusal when a press must not be delivered.
void refuseIfOnBrisko(platform::Point point);
void refuseIfBriskoFrontmost();

}  // namespace brisko
