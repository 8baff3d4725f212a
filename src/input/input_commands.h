#pragma once

#include <string>
#include <vector>

namespace brisko {

// The one-shot pointer and keyboard commands, each given the arguments after its word.
void runMove(const std::vector<std::string>& rest);
void runClick(const std::vector<std::string>& rest);
void runDoubleClick(const std::vector<std::string>& rest);
void runDrag(const std::vector<std::string>& rest);
void runType(const std::string& text);
void runKey(const std::string& combo);

// Runs one raw input command; false, doing nothing, when the word is not one of them.
bool runRawInputCommand(const std::string& word, const std::vector<std::string>& arguments);

}  // namespace brisko
