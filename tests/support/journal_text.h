#pragma once

#include <string>
#include <vector>

#include "fake/fake_platform.h"

namespace brisko::testing {

// One short line per journal entry, for comparing whole sequences: "move 1,2", "leftdown 10,20 #1",
// "otherup 5,6 b2 #2" (a button other than the type's own, a click state), "keydown 4 cmd",
// "keyup \"é\"" (typed text), "flags 55 cmd,shift" (the held modifiers last), "scroll -3",
// "pause 5000". Every entry, and the events alone.
std::vector<std::string> journalText(const fake::Journal& journal);
std::vector<std::string> eventText(const fake::Journal& journal);

}  // namespace brisko::testing
