#include "cli/hidden_commands.h"

#include <nlohmann/json.hpp>

#include "cli/diagnostics.h"
#include "input/key_vocabulary.h"
#include "input/type_plan.h"
#include "input/unicode_text.h"

namespace brisko {
namespace {

// Compact JSON with non-ASCII characters as UTF-8 and "/" escaped, as the platform writer does.
std::string compactJson(const nlohmann::json& value) {
    const std::string dumped = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    std::string out;
    out.reserve(dumped.size());
    for (const char c : dumped) {
        if (c == '/') out += '\\';
        out += c;
    }
    return out;
}

}  // namespace

void printParseChord(std::string_view combo) {
    nlohmann::json parts = nlohmann::json::array();
    for (const std::string& part : splitChord(repairUtf8(combo))) parts.push_back(part);
    writeStdoutLine(compactJson(parts));
}

void printPlanType(std::string_view text) {
    nlohmann::json steps = nlohmann::json::array();
    for (const TypeStep& step : typePlan(repairUtf8(text))) {
        if (step.kind == TypeStep::Kind::key) {
            steps.push_back(nlohmann::json::object({{"key", step.value}}));
        } else {
            steps.push_back(step.value);
        }
    }
    writeStdoutLine(compactJson(steps));
}

}  // namespace brisko
