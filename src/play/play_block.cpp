#include "play/play_block.h"

#include <limits>

#include "cli/process_state.h"
#include "input/input_commands.h"

namespace brisko {
namespace {

[[noreturn]] void refuseLine(const std::string& id, std::size_t number, const std::string& what) {
    throw PlayRefusal(id, "line " + std::to_string(number) + ": " + what);
}

}  // namespace

std::vector<std::string> splitAtSpaces(std::string_view line) {
    std::vector<std::string> tokens;
    std::size_t at = 0;
    while (at < line.size()) {
        const std::size_t start = line.find_first_not_of(' ', at);
        if (start == std::string_view::npos) break;
        const std::size_t end = std::min(line.find(' ', start), line.size());
        tokens.emplace_back(line.substr(start, end - start));
        at = end;
    }
    return tokens;
}

std::optional<std::int64_t> parseMs(std::string_view text) {
    if (text.empty()) return std::nullopt;
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        const int digit = c - '0';
        if (value > (largest - digit) / 10) return std::nullopt;
        value = value * 10 + digit;
    }
    return value;
}

PlayHeader parsePlayHeader(const std::vector<std::string>& tokens) {
    const ProcessState& state = processState();
    if (tokens.size() == 3) {
        const auto durationMs = parseMs(tokens[1]);
        const auto count = parseMs(tokens[2]);
        if (durationMs && count && *count <= state.maxPlayLines && *durationMs <= state.maxPlayDurationMs) {
            return {tokens[0], *durationMs, *count};
        }
    }
    std::optional<std::string> id;
    if (!tokens.empty()) id = tokens[0];
    throw PlayRefusal(id, "malformed header (usage: play <id> <durationMs \u2264 " +
                              std::to_string(state.maxPlayDurationMs) + "> <n \u2264 " +
                              std::to_string(state.maxPlayLines) + ">)");
}

PlayBlock parsePlayBlock(const std::string& id, std::int64_t durationMs, const std::vector<std::string>& lines) {
    PlayBlock block{id, durationMs, {}};
    block.lines.reserve(lines.size());
    std::int64_t previous = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t number = i + 1;
        std::vector<std::string> tokens = splitAtSpaces(lines[i]);
        const auto t = tokens.empty() ? std::nullopt : parseMs(tokens[0]);
        if (!t) refuseLine(id, number, "expected a non-negative integer t, got '" + lines[i] + "'");
        if (tokens.size() == 1) refuseLine(id, number, "no command after t in '" + lines[i] + "'");
        if (!isRawInputCommand(tokens[1])) refuseLine(id, number, "unknown raw command '" + tokens[1] + "'");
        if (*t < previous) {
            refuseLine(id, number,
                       "t " + std::to_string(*t) + " goes backwards after " + std::to_string(previous));
        }
        tokens.erase(tokens.begin());
        block.lines.push_back({*t, std::move(tokens)});
        previous = *t;
    }
    const std::int64_t last = block.lines.empty() ? 0 : block.lines.back().t;
    if (last > durationMs) {
        throw PlayRefusal(id, "durationMs " + std::to_string(durationMs) + " ends before the last line's t " +
                                  std::to_string(last));
    }
    return block;
}

PlayBlock readPlayBlock(const std::vector<std::string>& header, const LineSource& next) {
    const PlayHeader parsed = parsePlayHeader(header);
    std::vector<std::string> lines;
    while (static_cast<std::int64_t>(lines.size()) < parsed.count) {
        std::optional<std::string> line = next();
        if (!line) {
            throw PlayRefusal(parsed.id, "the block ended after " + std::to_string(lines.size()) + " of " +
                                             std::to_string(parsed.count) + " lines");
        }
        lines.push_back(std::move(*line));
    }
    return parsePlayBlock(parsed.id, parsed.durationMs, lines);
}

}  // namespace brisko
