#include "input/key_vocabulary.h"

#include "cli/input_command_error.h"
#include "cli/number_text.h"
#include "cli/process_state.h"
#include "cli/unicode_text.h"

namespace brisko {

std::optional<KeyCode> keyCodeFor(std::string_view name) {
    const ProcessState& state = processState();
    const std::string lower = lowercased(name);
    if (auto named = state.namedKeys.find(lower); named != state.namedKeys.end()) {
        return named->second;
    }
    if (graphemeClusters(lower).size() != 1) return std::nullopt;
    if (auto found = state.charKeys.find(lower); found != state.charKeys.end()) {
        return found->second;
    }
    return std::nullopt;
}

namespace {

std::vector<std::string> splitKeepingEmpty(std::string_view text, char separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t at = text.find(separator, start);
        if (at == std::string_view::npos) {
            parts.emplace_back(text.substr(start));
            return parts;
        }
        parts.emplace_back(text.substr(start, at - start));
        start = at + 1;
    }
}

}  // namespace

std::vector<std::string> splitChord(std::string_view combo) {
    if (!combo.ends_with('+')) return splitKeepingEmpty(combo, '+');
    std::string_view rest = combo.substr(0, combo.size() - 1);
    if (rest.ends_with('+')) rest.remove_suffix(1);
    if (rest.empty()) return {"+"};
    std::vector<std::string> parts = splitKeepingEmpty(rest, '+');
    parts.emplace_back("+");
    return parts;
}

EventFlags parseFlags(std::string_view text) {
    if (text.empty() || text == "none") return 0;
    const auto& modifierFlags = processState().modifierFlags;
    EventFlags flags = 0;
    for (const std::string& part : splitKeepingEmpty(text, ',')) {
        if (part.empty()) continue;
        const auto found = modifierFlags.find(part);
        if (found == modifierFlags.end()) {
            throw InputCommandError("unknown modifier '" + part + "' in flags '" + std::string(text) +
                                    "' (want cmd|shift|alt|ctrl|fn or none)");
        }
        flags |= found->second;
    }
    return flags;
}

KeyCode parseKeyCode(std::string_view text) {
    const auto value = parseInteger(text, 10);
    if (!value || *value < 0 || *value > 0xFFFF) {
        throw InputCommandError("expected a CGKeyCode integer, got '" + std::string(text) + "'");
    }
    return static_cast<KeyCode>(*value);
}

}  // namespace brisko
