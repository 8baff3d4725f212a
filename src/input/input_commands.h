#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/command_row.h"

namespace brisko {

// The one-shot pointer and keyboard commands, each given the arguments after its word.
void runMove(const std::vector<std::string>& rest);
void runClick(const std::vector<std::string>& rest);
void runDoubleClick(const std::vector<std::string>& rest);
void runDrag(const std::vector<std::string>& rest);
void runType(const std::string& text);
void runKey(const std::string& combo);

// The raw input commands: one press or release each, also run by play blocks and input-stream.
const std::vector<CommandRow>& rawCommandRows();
bool isRawInputCommand(std::string_view word);
// Runs one raw input command; false, doing nothing, when the word is not one of them. A wrong
// argument count raises the row's usage line.
bool runRawInputCommand(const std::string& word, const std::vector<std::string>& arguments);

}  // namespace brisko
