#include "input/key_vocabulary.h"

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "input/unicode_text.h"
#include "cli/number_text.h"

namespace brisko {

std::map<std::string, KeyCode> makeNamedKeys() {
    return {
        {"return", 36},   {"tab", 48},       {"space", 49}, {"escape", 53}, {"backspace", 51},
        {"delete", 117},  {"home", 115},     {"end", 119},  {"pageup", 116}, {"pagedown", 121},
        {"left", 123},    {"right", 124},    {"down", 125}, {"up", 126},     {"f1", 122},
        {"f2", 120},      {"f3", 99},        {"f4", 118},   {"f5", 96},      {"f6", 97},
        {"f7", 98},       {"f8", 100},       {"f9", 101},   {"f10", 109},    {"f11", 103},
        {"f12", 111},     {"cmd", 55},       {"shift", 56}, {"capslock", 57}, {"alt", 58},
        {"ctrl", 59},     {"fn", 63},
    };
}

std::map<std::string, KeyCode> makeCharKeys() {
    return {
        {"a", 0},  {"s", 1},  {"d", 2},  {"f", 3},  {"h", 4},  {"g", 5},  {"z", 6},  {"x", 7},
        {"c", 8},  {"v", 9},  {"b", 11}, {"q", 12}, {"w", 13}, {"e", 14}, {"r", 15}, {"y", 16},
        {"t", 17}, {"1", 18}, {"2", 19}, {"3", 20}, {"4", 21}, {"6", 22}, {"5", 23}, {"=", 24},
        {"9", 25}, {"+", 24}, {"7", 26}, {"-", 27}, {"8", 28}, {"0", 29}, {"]", 30}, {"o", 31},
        {"u", 32}, {"[", 33}, {"i", 34}, {"p", 35}, {"l", 37}, {"j", 38}, {"'", 39}, {"k", 40},
        {";", 41}, {"\\", 42}, {",", 43}, {"/", 44}, {"n", 45}, {"m", 46}, {".", 47}, {"`", 50},
    };
}

std::map<std::string, EventFlags> makeModifierFlags() {
    return {
        {"cmd", flag::command}, {"shift", flag::shift},      {"alt", flag::alternate},
        {"ctrl", flag::control}, {"fn", flag::secondaryFn},
    };
}

std::map<std::string, KeyCode> makeModifierKeyCodes() {
    return {{"cmd", 55}, {"shift", 56}, {"alt", 58}, {"ctrl", 59}, {"fn", 63}};
}

std::set<KeyCode> makeModifierKeyCodeSet() { return {54, 55, 56, 58, 59, 60, 61, 62, 63}; }

std::map<std::string, std::string> makeModifierNameByKeyCode() {
    return {
        {"54", "cmd"}, {"55", "cmd"}, {"56", "shift"}, {"60", "shift"}, {"58", "alt"},
        {"61", "alt"}, {"59", "ctrl"}, {"62", "ctrl"}, {"63", "fn"},
    };
}

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
