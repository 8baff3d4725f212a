#include "backends/x11/clipboard_targets.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace brisko::platform::x11 {
namespace {

struct NamePair {
    std::string_view target;
    std::string_view type;
};

constexpr std::array<NamePair, 5> mappedTargets{{
    {"UTF8_STRING", plainTextType},
    {"text/plain;charset=utf-8", plainTextType},
    {"text/html", "public.html"},
    {"image/png", "public.png"},
    {"text/rtf", "public.rtf"},
}};

// Targets of the selection protocol itself (ICCCM), which carry no contents.
constexpr std::array<std::string_view, 7> protocolTargets{
    "TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY",
};

// STRING is Latin-1: characters beyond it, and bytes that are not UTF-8, become '?'.
std::vector<std::uint8_t> latin1(const std::vector<std::uint8_t>& utf8) {
    std::vector<std::uint8_t> out;
    std::size_t at = 0;
    while (at < utf8.size()) {
        utf8proc_int32_t c = 0;
        const auto used = utf8proc_iterate(utf8.data() + at, static_cast<utf8proc_ssize_t>(utf8.size() - at), &c);
        out.push_back(used > 0 && c <= 0xFF ? static_cast<std::uint8_t>(c) : std::uint8_t{'?'});
        at += used > 0 ? static_cast<std::size_t>(used) : 1;
    }
    return out;
}

}  // namespace

std::optional<std::string> reportedType(std::string_view target) {
    if (std::find(protocolTargets.begin(), protocolTargets.end(), target) != protocolTargets.end()) return std::nullopt;
    for (const NamePair& pair : mappedTargets) {
        if (pair.target == target) return std::string(pair.type);
    }
    return std::string(target);
}

std::vector<SelectionOffer> offersFor(std::string_view type, const std::vector<std::uint8_t>& data) {
    if (type == concealedType) {
        const std::string_view secret = secretHint;
        return {{std::string(passwordHintTarget), std::string(passwordHintTarget), {secret.begin(), secret.end()}}};
    }
    std::vector<SelectionOffer> offers;
    for (const NamePair& pair : mappedTargets) {
        if (pair.type == type) offers.push_back({std::string(pair.target), std::string(pair.target), data});
    }
    if (type == plainTextType) {
        offers.push_back({"STRING", "STRING", latin1(data)});
        // TEXT lets the owner choose the encoding.
        offers.push_back({"TEXT", "UTF8_STRING", data});
    }
    if (offers.empty()) offers.push_back({std::string(type), std::string(type), data});
    return offers;
}

}  // namespace brisko::platform::x11
