#include "play/line_source.h"

namespace brisko {

std::optional<std::string> readInputLine(std::istream& in) {
    std::string line;
    if (!std::getline(in, line)) return std::nullopt;
    const bool endedByLineFeed = !in.eof();
    if (endedByLineFeed && !line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

LineSource linesOf(std::istream& in) {
    return [&in] { return readInputLine(in); };
}

}  // namespace brisko
