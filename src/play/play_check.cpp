#include <cmath>
#include <exception>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "cli/compact_json.h"
#include "cli/diagnostics.h"
#include "cli/number_text.h"
#include "cli/process_state.h"
#include "play/lift_argvs.h"
#include "play/play_clock.h"
#include "play/play_commands.h"

namespace brisko {
namespace {

constexpr std::string_view clockPrefix = "clock ";
constexpr std::string_view ranPrefix = "ran ";

// A number as the platform's writer puts it: integral values without a fraction.
nlohmann::json jsonNumber(double value) {
    constexpr double integerLimit = 9223372036854775808.0;  // 2^63
    if (std::trunc(value) == value && std::fabs(value) < integerLimit) {
        return static_cast<std::int64_t>(value);
    }
    return value;
}

nlohmann::json planOf(const PlayBlock& block) {
    nlohmann::json lines = nlohmann::json::array();
    for (const PlayLine& line : block.lines) lines.push_back({{"t", line.t}, {"argv", line.argv}});
    return {{"id", block.id}, {"durationMs", block.durationMs}, {"lines", lines}};
}

// The waits for a "clock " line; dies when the readings do not fit the block.
std::vector<double> waitsFor(const PlayBlock& block, const std::string& line) {
    std::vector<double> readings;
    const std::vector<std::string> tokens = splitAtSpaces(line);
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        if (const auto reading = parseDoubleSaturating(tokens[i])) readings.push_back(*reading);
    }
    const std::size_t needed = block.lines.size() + 2;
    if (readings.size() != needed) {
        die("play-check: a clock needs " + std::to_string(needed) + " readings, got " +
            std::to_string(readings.size()));
    }
    return playWaits(block, readings);
}

// The release plan for a "ran " line; dies when k is not a line count of the block.
std::vector<Argv> liftFor(const PlayBlock& block, const std::string& line) {
    const auto k = parseInteger(std::string_view(line).substr(ranPrefix.size()), 10);
    const auto lines = static_cast<long long>(block.lines.size());
    if (!k || *k < 0 || *k > lines) {
        die("play-check: `ran <k>` needs 0 \u2264 k \u2264 " + std::to_string(lines) + ", got '" + line + "'");
    }
    std::vector<Argv> ran;
    for (long long i = 0; i < *k; ++i) ran.push_back(block.lines[static_cast<std::size_t>(i)].argv);
    return liftArgvs(ran);
}

// Reads the option lines to the end of input into the plan. The last of each kind wins, so only
// that one is judged: an earlier one, good or bad, has been replaced.
void addOptions(nlohmann::json& plan, const PlayBlock& block, std::istream& in) {
    std::optional<std::string> clock, ran;
    while (std::optional<std::string> line = readInputLine(in)) {
        if (line->starts_with(clockPrefix)) clock = std::move(line);
        else if (line->starts_with(ranPrefix)) ran = std::move(line);
    }
    if (clock) {
        nlohmann::json waits = nlohmann::json::array();
        for (const double wait : waitsFor(block, *clock)) {
            if (!std::isfinite(wait)) die("play-check: could not encode the plan");
            waits.push_back(jsonNumber(wait));
        }
        plan["waits"] = waits;
    }
    if (ran) plan["lift"] = liftFor(block, *ran);
}

}  // namespace

void runPlayCheck() {
    std::istream& in = processState().services.streams.in();
    const std::optional<std::string> header = readInputLine(in);
    if (!header) die("play-check: no block");
    std::vector<std::string> tokens = splitAtSpaces(*header);
    if (tokens.empty() || tokens.front() != "play") {
        die("play-check: expected a `play` header, got '" + *header + "'");
    }
    tokens.erase(tokens.begin());
    nlohmann::json plan;
    try {
        const PlayBlock block = readPlayBlock(tokens, linesOf(in));
        plan = planOf(block);
        addOptions(plan, block, in);
    } catch (const PlayRefusal& refusal) {
        plan = {{"refused", refusal.reason}};
        if (refusal.id) plan["id"] = *refusal.id;
    } catch (const std::exception& error) {
        die(std::string("play-check: ") + error.what());
    }
    writeStdoutLine(compactJson(plan));
}

}  // namespace brisko
