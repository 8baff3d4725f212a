#include "cli/number_text.h"

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <string>

namespace brisko {
namespace {

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

bool isLeadingSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

struct StrtodReading {
    double value;
    bool outOfRange;
};

// Absent unless strtod in the "C" locale consumes the whole text, which must not start with
// white space. The process never changes its locale from "C".
std::optional<StrtodReading> readWholeDouble(std::string_view text) {
    if (text.empty() || isLeadingSpace(text.front())) return std::nullopt;
    const std::string copy(text);
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size()) return std::nullopt;
    return StrtodReading{value, errno == ERANGE};
}

}  // namespace

std::optional<long long> parseInteger(std::string_view text, int radix) {
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty()) return std::nullopt;
    // Accumulate as a negative number so that the most negative value fits too.
    long long value = 0;
    constexpr long long lowest = std::numeric_limits<long long>::min();
    for (const char c : text) {
        const int digit = digitValue(c);
        if (digit >= radix) return std::nullopt;
        if (value < (lowest + digit) / radix) return std::nullopt;
        value = value * radix - digit;
    }
    if (negative) return value;
    if (value == lowest) return std::nullopt;
    return -value;
}

std::optional<double> parseDouble(std::string_view text) {
    const auto reading = readWholeDouble(text);
    if (!reading || reading->outOfRange) return std::nullopt;
    return reading->value;
}

std::optional<double> parseDoubleSaturating(std::string_view text) {
    const auto reading = readWholeDouble(text);
    if (!reading) return std::nullopt;
    return reading->value;
}

}  // namespace brisko
