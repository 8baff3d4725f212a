#include "input/type_plan.h"

#include "cli/unicode_text.h"

namespace brisko {

std::vector<TypeStep> typePlan(std::string_view text) {
    std::vector<TypeStep> plan;
    for (std::string& character : graphemeClusters(text)) {
        if (character == "\n" || character == "\r" || character == "\r\n") {
            plan.push_back({TypeStep::Kind::key, "return"});
        } else if (character == "\t") {
            plan.push_back({TypeStep::Kind::key, "tab"});
        } else if (character == "\b") {
            plan.push_back({TypeStep::Kind::key, "backspace"});
        } else {
            plan.push_back({TypeStep::Kind::text, std::move(character)});
        }
    }
    return plan;
}

}  // namespace brisko
