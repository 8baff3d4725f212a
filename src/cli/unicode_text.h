#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brisko {

// UTF-8 text helpers over utf8proc. Invalid input sequences read as U+FFFD.

// Replaces every invalid UTF-8 sequence with U+FFFD.
std::string repairUtf8(std::string_view text);
bool isValidUtf8(std::string_view text);
// Unicode lower-casing, independent of locale (full mapping where it differs from the simple one).
std::string lowercased(std::string_view text);
// The user-perceived characters (extended grapheme clusters) of the text, in order.
std::vector<std::string> graphemeClusters(std::string_view text);
std::u16string utf16(std::string_view text);
// The scalar values of UTF-16 text; an unpaired surrogate reads as U+FFFD.
std::u32string scalarsOfUtf16(std::u16string_view text);
// Whether the number is a Unicode scalar value: a code point that is no surrogate.
bool isScalarValue(long long value);
// The UTF-8 form of one Unicode scalar value.
std::string utf8FromScalar(char32_t scalar);

}  // namespace brisko
