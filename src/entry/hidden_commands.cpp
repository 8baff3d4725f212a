#include "entry/hidden_commands.h"

#include <nlohmann/json.hpp>

#include "cli/compact_json.h"
#include "cli/diagnostics.h"
#include "cli/unicode_text.h"
#include "input/key_vocabulary.h"
#include "input/type_plan.h"

namespace brisko {

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
