#include <gtest/gtest.h>

#include "input/type_plan.h"

namespace brisko {
namespace {

TypeStep key(const char* name) { return {TypeStep::Kind::key, name}; }
TypeStep text(const char* chars) { return {TypeStep::Kind::text, chars}; }

TEST(TypePlan, OneStepPerCharacter) {
    const std::vector<std::pair<std::string, std::vector<TypeStep>>> cases = {
        {"", {}},
        {"hi\n", {text("h"), text("i"), key("return")}},
        {"a\r\nb", {text("a"), key("return"), text("b")}},
        {"a\n\rb", {text("a"), key("return"), key("return"), text("b")}},
        {"\r\r\n", {key("return"), key("return")}},
        {"\t\b", {key("tab"), key("backspace")}},
        {"e\xCC\x81!", {text("e\xCC\x81"), text("!")}},                             // combining accent
        {"\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD", {text("\xF0\x9F\x91\x8D\xF0\x9F\x8F\xBD")}},  // skin tone
        {"\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7x", {text("\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7"), text("x")}},  // flag
        {"\xE6\x97\xA5\xE6\x9C\xAC", {text("\xE6\x97\xA5"), text("\xE6\x9C\xAC")}},
        {"  ", {text(" "), text(" ")}},
    };
    for (const auto& [input, plan] : cases) {
        EXPECT_EQ(typePlan(input), plan) << "text '" << input << "'";
    }
}

}  // namespace
}  // namespace brisko
