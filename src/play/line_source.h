#pragma once

#include <functional>
#include <istream>
#include <optional>
#include <string>

namespace brisko {

// Yields the next input line without its terminator, or nothing at end of input.
using LineSource = std::function<std::optional<std::string>()>;

// One line up to a line feed; the "\n" or "\r\n" that ends it is dropped. A last line without a
// line feed is still a line. Nothing at end of input.
std::optional<std::string> readInputLine(std::istream& in);

// The lines of the stream, one per call.
LineSource linesOf(std::istream& in);

}  // namespace brisko
