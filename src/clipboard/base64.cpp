#include "clipboard/base64.h"

#include <array>

namespace brisko {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int notInAlphabet = -1;

constexpr std::array<int, 256> makeDecodeTable() {
    std::array<int, 256> table{};
    table.fill(notInAlphabet);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<unsigned char>(alphabet[i])] = static_cast<int>(i);
    }
    return table;
}

constexpr std::array<int, 256> decodeTable = makeDecodeTable();

}  // namespace

std::string base64Encode(const platform::Bytes& bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const unsigned group = (unsigned{bytes[i]} << 16) | (unsigned{bytes[i + 1]} << 8) | bytes[i + 2];
        out += alphabet[(group >> 18) & 63];
        out += alphabet[(group >> 12) & 63];
        out += alphabet[(group >> 6) & 63];
        out += alphabet[group & 63];
    }
    const std::size_t left = bytes.size() - i;
    if (left == 0) return out;
    const unsigned group = (unsigned{bytes[i]} << 16) | (left == 2 ? unsigned{bytes[i + 1]} << 8 : 0u);
    out += alphabet[(group >> 18) & 63];
    out += alphabet[(group >> 12) & 63];
    out += left == 2 ? alphabet[(group >> 6) & 63] : '=';
    out += '=';
    return out;
}

std::optional<platform::Bytes> base64Decode(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    platform::Bytes out;
    out.reserve(text.size() / 4 * 3);
    for (std::size_t at = 0; at < text.size(); at += 4) {
        const bool lastGroup = at + 4 == text.size();
        std::size_t padding = 0;
        if (lastGroup && text[at + 3] == '=') padding = text[at + 2] == '=' ? 2 : 1;
        unsigned group = 0;
        for (std::size_t k = 0; k < 4 - padding; ++k) {
            const int value = decodeTable[static_cast<unsigned char>(text[at + k])];
            if (value == notInAlphabet) return std::nullopt;
            group |= static_cast<unsigned>(value) << (18 - 6 * k);
        }
        out.push_back(static_cast<std::uint8_t>(group >> 16));
        if (padding < 2) out.push_back(static_cast<std::uint8_t>((group >> 8) & 0xFF));
        if (padding < 1) out.push_back(static_cast<std::uint8_t>(group & 0xFF));
    }
    return out;
}

}  // namespace brisko
