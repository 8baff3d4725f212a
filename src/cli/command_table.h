#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace brisko {

// One command row: its word, which argument counts it takes, the usage line written on any other
// count (empty when every count is taken) and its action on the arguments after the word.
struct CommandRow {
    std::string_view word;
    bool (*acceptsCount)(std::size_t count);
    std::string_view usage;
    void (*action)(const std::vector<std::string>& rest);
};

// The rows in matching order.
const std::vector<CommandRow>& commandTable();

// Written when there is no command word.
extern const std::string_view usageText;

}  // namespace brisko
