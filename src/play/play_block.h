#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "play/line_source.h"

namespace brisko {

// One timed line of a block: its offset from the block's start and the raw command it runs.
struct PlayLine {
    std::int64_t t = 0;
    std::vector<std::string> argv;  // the command word, then its arguments; never empty

    bool operator==(const PlayLine&) const = default;
};

// A parsed block: offsets never decrease, every word is a raw command, the last offset is within
// the duration, and the duration and line count are within the process limits.
struct PlayBlock {
    std::string id;
    std::int64_t durationMs = 0;
    std::vector<PlayLine> lines;

    bool operator==(const PlayBlock&) const = default;
};

// Why a block was refused. The id is absent only when the header had no token at all.
class PlayRefusal : public std::runtime_error {
public:
    PlayRefusal(std::optional<std::string> blockId, const std::string& why)
        : std::runtime_error(why), id(std::move(blockId)), reason(why) {}

    std::optional<std::string> id;
    std::string reason;
};

// Splits at U+0020 only; runs of spaces are one separator and give no empty tokens.
std::vector<std::string> splitAtSpaces(std::string_view line);

// A non-negative decimal integer of ASCII digits (leading zeros allowed) that fits in 64 bits.
std::optional<std::int64_t> parseMs(std::string_view text);

struct PlayHeader {
    std::string id;
    std::int64_t durationMs = 0;
    std::int64_t count = 0;
};

// The tokens of a header line after "play": id, duration and line count. Throws PlayRefusal.
PlayHeader parsePlayHeader(const std::vector<std::string>& tokens);

// Parses the body lines of a block whose header was accepted. Throws PlayRefusal.
PlayBlock parsePlayBlock(const std::string& id, std::int64_t durationMs, const std::vector<std::string>& lines);

// Checks the header, reads exactly its count of body lines from next, then parses them.
// Throws PlayRefusal.
PlayBlock readPlayBlock(const std::vector<std::string>& header, const LineSource& next);

}  // namespace brisko
