#include "cli/unicode_text.h"

#include <utf8proc.h>

namespace brisko {
namespace {

constexpr utf8proc_int32_t replacementCharacter = 0xFFFD;

// Calls visit(codePoint) for each scalar of the text, invalid sequences as U+FFFD.
template <typename Visit>
void forEachScalar(std::string_view text, Visit visit) {
    auto* p = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto remaining = static_cast<utf8proc_ssize_t>(text.size());
    while (remaining > 0) {
        utf8proc_int32_t cp = 0;
        utf8proc_ssize_t n = utf8proc_iterate(p, remaining, &cp);
        if (n < 0) {
            cp = replacementCharacter;
            n = 1;
        }
        visit(cp);
        p += n;
        remaining -= n;
    }
}

void appendUtf8(std::string& out, utf8proc_int32_t cp) {
    utf8proc_uint8_t buffer[4];
    const auto n = utf8proc_encode_char(cp, buffer);
    out.append(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(n));
}

}  // namespace

std::string repairUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    forEachScalar(text, [&](utf8proc_int32_t cp) { appendUtf8(out, cp); });
    return out;
}

bool isValidUtf8(std::string_view text) {
    auto* p = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto remaining = static_cast<utf8proc_ssize_t>(text.size());
    while (remaining > 0) {
        utf8proc_int32_t cp = 0;
        const utf8proc_ssize_t n = utf8proc_iterate(p, remaining, &cp);
        if (n < 0) return false;
        p += n;
        remaining -= n;
    }
    return true;
}

std::string lowercased(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    forEachScalar(text, [&](utf8proc_int32_t cp) {
        // The one unconditional full lower-case mapping that is not a single code point.
        if (cp == 0x0130) {
            appendUtf8(out, 'i');
            appendUtf8(out, 0x0307);
            return;
        }
        appendUtf8(out, utf8proc_tolower(cp));
    });
    return out;
}

std::vector<std::string> graphemeClusters(std::string_view text) {
    std::vector<std::string> clusters;
    utf8proc_int32_t previous = -1;
    utf8proc_int32_t state = 0;
    forEachScalar(text, [&](utf8proc_int32_t cp) {
        if (previous < 0 || utf8proc_grapheme_break_stateful(previous, cp, &state)) {
            clusters.emplace_back();
        }
        appendUtf8(clusters.back(), cp);
        previous = cp;
    });
    return clusters;
}

std::u16string utf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    forEachScalar(text, [&](utf8proc_int32_t cp) {
        if (cp >= 0x10000) {
            const auto v = static_cast<char32_t>(cp - 0x10000);
            out.push_back(static_cast<char16_t>(0xD800 + (v >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (v & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(cp));
        }
    });
    return out;
}

std::u32string scalarsOfUtf16(std::u16string_view text) {
    std::u32string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            out.push_back(0x10000 + ((unit - 0xD800) << 10) + (char32_t(text[++i]) - 0xDC00));
        } else {
            out.push_back(isScalarValue(unit) ? unit : U'\uFFFD');
        }
    }
    return out;
}

bool isScalarValue(long long value) { return value >= 0 && value <= 0x10FFFF && !(value >= 0xD800 && value <= 0xDFFF); }

std::string utf8FromScalar(char32_t scalar) {
    std::string out;
    appendUtf8(out, static_cast<utf8proc_int32_t>(scalar));
    return out;
}

}  // namespace brisko
