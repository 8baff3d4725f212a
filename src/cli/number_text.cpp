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
    if (text.empty() || isLeadingSpace(text.front())) return std::nullopt;
    // The process never changes its locale from "C", so strtod reads the C syntax.
    const std::string copy(text);
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(copy.c_str(), &end);
    if (end != copy.c_str() + copy.size() || errno == ERANGE) return std::nullopt;
    return value;
}

}  // namespace brisko
