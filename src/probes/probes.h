#pragma once

namespace brisko {

// check: "screen={0|1} input={0|1}"; with prompt the system first shows its permission prompts.
void printCheck(bool prompt);
// check-flags: the modifier flags the HID state holds, and whether none is held.
void printFlags();
// geometry: the main display in points and in pixels; dies when the pixel mode cannot be read.
void printGeometry();
// session: one JSON line about the login session and the display's sleep.
void printSession();

}  // namespace brisko
