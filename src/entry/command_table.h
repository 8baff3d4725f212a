#pragma once

#include <string_view>
#include <vector>

#include "cli/command_row.h"

namespace brisko {

// Every command, in matching order: the one-shot commands, then the raw input commands.
const std::vector<CommandRow>& commandTable();

// Written when there is no command word.
extern const std::string_view usageText;

}  // namespace brisko
