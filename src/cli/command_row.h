#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace brisko {

// One command: its word, which argument counts it takes, the usage line for any other count and
// its action on the arguments after the word.
struct CommandRow {
    std::string_view word;
    bool (*acceptsCount)(std::size_t count);
    std::string_view usage;  // "usage: …", without the program prefix
    void (*action)(const std::vector<std::string>& rest);
};

// Argument counts a row takes.
inline bool anyCount(std::size_t) { return true; }
template <std::size_t least, std::size_t most>
bool between(std::size_t n) {
    return n >= least && n <= most;
}

// The row of the word (matched exactly); null when no row has it.
inline const CommandRow* findCommand(const std::vector<CommandRow>& rows, std::string_view word) {
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const CommandRow& r) { return r.word == word; });
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace brisko
