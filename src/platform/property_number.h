#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <variant>

namespace brisko::platform {

// A number as the system's dictionaries hold it (window lists, sample-buffer attachments): an
// integer, or a floating-point value. Backends report such values in this form and the logic
// decides what they mean.
using PropertyNumber = std::variant<std::int64_t, double>;

// The number as T, when T holds exactly its value: 1.0 reads as the integer 1, while 1.5, NaN or
// a value beyond T's range reads as no T at all.
template <std::integral T>
std::optional<T> exactly(const PropertyNumber& number) {
    if (const auto* integer = std::get_if<std::int64_t>(&number)) {
        if (!std::in_range<T>(*integer)) return std::nullopt;
        return static_cast<T>(*integer);
    }
    const double real = std::get<double>(number);
    // 2^digits is one past T's maximum and exactly representable as a double.
    const double beyond = std::ldexp(1.0, std::numeric_limits<T>::digits);
    const double lowest = std::numeric_limits<T>::is_signed ? -beyond : 0.0;
    if (!(real >= lowest && real < beyond) || std::trunc(real) != real) return std::nullopt;
    return static_cast<T>(real);
}

inline double asDouble(const PropertyNumber& number) {
    if (const auto* integer = std::get_if<std::int64_t>(&number)) return static_cast<double>(*integer);
    return std::get<double>(number);
}

}  // namespace brisko::platform
