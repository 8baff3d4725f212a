#include "play/lift_argvs.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "cli/process_state.h"

namespace brisko {
namespace {

constexpr std::array<std::string_view, 5> canonicalModifierOrder = {"cmd", "shift", "alt", "ctrl", "fn"};

struct Held {
    std::optional<std::pair<std::string, std::string>> position;
    std::vector<std::string> buttons;
    std::vector<std::string> keys;
    std::vector<std::string> modifiers;
};

// "cmd,shift" for the modifier names of the key codes, in the canonical order; "none" for none.
std::string flagText(const std::vector<std::string>& modifierCodes) {
    const auto& names = processState().modifierNameByKeyCode;
    std::string text;
    for (const std::string_view name : canonicalModifierOrder) {
        const bool held = std::any_of(modifierCodes.begin(), modifierCodes.end(), [&](const std::string& code) {
            const auto found = names.find(code);
            return found != names.end() && found->second == name;
        });
        if (!held) continue;
        if (!text.empty()) text += ',';
        text += name;
    }
    return text.empty() ? "none" : text;
}

void track(Held& held, const Argv& argv) {
    const std::string& word = argv[0];
    if (word == "mousemove" || word == "mousedown" || word == "mouseup") {
        if (argv.size() >= 3) held.position = {argv[1], argv[2]};
        if (word != "mousemove" && argv.size() >= 4) {
            std::erase(held.buttons, argv[3]);
            if (word == "mousedown") held.buttons.push_back(argv[3]);
        }
    } else if ((word == "keydown" || word == "keyup") && argv.size() >= 2) {
        std::erase(held.keys, argv[1]);
        std::erase(held.modifiers, argv[1]);
        if (word == "keydown") {
            auto& list = processState().modifierNameByKeyCode.contains(argv[1]) ? held.modifiers : held.keys;
            list.push_back(argv[1]);
        }
    }
}

}  // namespace

std::vector<Argv> liftArgvs(const std::vector<Argv>& argvs) {
    Held held;
    for (const Argv& argv : argvs) {
        if (!argv.empty()) track(held, argv);
    }
    std::vector<Argv> lifts;
    if (held.position) {
        for (const std::string& button : held.buttons) {
            lifts.push_back({"mouseup", held.position->first, held.position->second, button});
        }
    }
    for (const std::string& key : held.keys) lifts.push_back({"keyup", key, flagText(held.modifiers)});
    while (!held.modifiers.empty()) {
        const std::string modifier = held.modifiers.back();
        held.modifiers.pop_back();
        lifts.push_back({"keyup", modifier, flagText(held.modifiers)});
    }
    return lifts;
}

}  // namespace brisko
