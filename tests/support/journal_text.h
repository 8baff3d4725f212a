#pragma once

#include <string>
#include <vector>

#include "fake/fake_platform.h"

namespace brisko::testing {

// One short line per journal entry, for comparing whole sequences: "keydown 4", "flags 55 cmd",
// "leftdown 10,20", "move 1,2", "pause 5000", ... Held modifiers are named after the entry.
std::string journalText(const fake::Happening& happening);
std::vector<std::string> journalText(const std::vector<fake::Happening>& happenings);
// The events alone, without the pauses.
std::vector<std::string> eventText(const fake::Journal& journal);

}  // namespace brisko::testing
