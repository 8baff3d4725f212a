#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>

namespace brisko {

// Truncation toward zero of a double into an integer type, without undefined behaviour.

// Absent unless the value is finite and its truncation lies within T. Never a wrapped value.
template <std::integral T>
std::optional<T> truncatedWithin(double value) {
    // 2^digits is one past T's maximum and exactly representable as a double.
    const double beyond = std::ldexp(1.0, std::numeric_limits<T>::digits);
    const double lowest = std::numeric_limits<T>::is_signed ? -beyond : 0.0;
    const double whole = std::trunc(value);
    if (!(whole >= lowest && whole < beyond)) return std::nullopt;  // also NaN and infinities
    return static_cast<T>(whole);
}

// For display only: out-of-range values are clamped to the nearest end and NaN gives 0, as the
// home platform's conversion instruction does.
inline std::int64_t truncatedSaturating(double value) {
    if (std::isnan(value)) return 0;
    if (const auto inRange = truncatedWithin<std::int64_t>(value)) return *inRange;
    return value < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

}  // namespace brisko
