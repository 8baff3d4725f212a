#include <cmath>
#include <gtest/gtest.h>

#include "cli/input_command_error.h"
#include "cli/number_text.h"
#include "cli/parse_point.h"

namespace brisko {
namespace {

TEST(ParsePoint, AcceptsEveryStrtodForm) {
    const std::vector<std::tuple<std::string, std::string, double, double>> cases = {
        {"10", "20", 10, 20},      {"1e2", "0x10", 100, 16}, {"-3.5", "+0.25", -3.5, 0.25},
        {"0x1p3", ".5", 8, 0.5},   {"1E-3", "7.", 0.001, 7},
    };
    for (const auto& [x, y, px, py] : cases) {
        const auto p = parsePoint(x, y);
        EXPECT_EQ(p.x, px) << x;
        EXPECT_EQ(p.y, py) << y;
    }
    EXPECT_TRUE(std::isinf(parsePoint("inf", "0").x));
    EXPECT_TRUE(std::isnan(parsePoint("nan", "0").x));
}

TEST(ParsePoint, RefusesAnythingElse) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"10", "abc"}, {" 10", "20"}, {"\t1", "2"}, {"10 ", "20"}, {"", "1"}, {"1", ""},
        {"1e999", "0"}, {"0", "-1e999"}, {"1,5", "2"}, {"0x", "1"}, {"1e-400", "1"},
    };
    for (const auto& [x, y] : cases) {
        try {
            parsePoint(x, y);
            ADD_FAILURE() << "accepted '" << x << "' '" << y << "'";
        } catch (const InputCommandError& e) {
            EXPECT_EQ(e.message(), "expected numeric coordinates, got '" + x + " " + y + "'");
        }
    }
}

TEST(ParseInteger, SignsDigitsAndRange) {
    const std::vector<std::tuple<std::string, int, std::optional<long long>>> cases = {
        {"0", 10, 0}, {"+12", 10, 12}, {"-12", 10, -12}, {"007", 10, 7},
        {"9223372036854775807", 10, 9223372036854775807LL},
        {"-9223372036854775808", 10, std::numeric_limits<long long>::min()},
        {"9223372036854775808", 10, std::nullopt}, {"", 10, std::nullopt}, {"-", 10, std::nullopt},
        {"1 ", 10, std::nullopt}, {"a", 10, std::nullopt}, {"1F600", 16, 0x1F600},
        {"ff", 16, 255}, {"0x41", 16, std::nullopt}, {"g", 16, std::nullopt},
    };
    for (const auto& [text, radix, value] : cases) {
        EXPECT_EQ(parseInteger(text, radix), value) << text;
    }
}

}  // namespace
}  // namespace brisko
