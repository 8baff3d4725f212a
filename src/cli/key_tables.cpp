#include "cli/key_tables.h"

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

}  // namespace brisko
