#include "input/keyboard_actions.h"

#include <string>
#include <vector>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "cli/unicode_text.h"
#include "input/event_posting.h"
#include "input/type_plan.h"

namespace brisko {
namespace {

namespace type = platform::event_type;

struct Modifier {
    EventFlags flag;
    KeyCode code;
};

}  // namespace

platform::InputEvent keyEvent(KeyCode code, bool down, EventFlags flags) {
    platform::InputEvent event;
    event.type = down ? type::keyDown : type::keyUp;
    event.keyCode = code;
    event.flags = flags;
    return event;
}

void typeText(std::string_view text) {
    const auto& namedKeys = processState().namedKeys;
    for (const TypeStep& step : typePlan(text)) {
        if (step.kind == TypeStep::Kind::key) {
            postKey(namedKeys.at(step.value));
        } else {
            typeUnicodeScalar(step.value);
        }
    }
}

void typeUnicodeScalar(std::string_view chars) {
    const std::u16string units = utf16(chars);
    for (const bool down : {true, false}) {
        platform::InputEvent event = keyEvent(0, down, 0);
        event.text = units;
        post(event);
    }
}

void postKey(KeyCode code, EventFlags flags) {
    post(keyEvent(code, true, flags));
    post(keyEvent(code, false, flags));
}

void postModifier(KeyCode code, EventFlags flags) {
    platform::InputEvent event = keyEvent(code, true, flags);
    event.type = type::flagsChanged;
    ProcessState& state = processState();
    state.heldFlags = flags;
    state.modifierKeysDown = flags;
    post(event);
}

void pressCombo(std::string_view combo) {
    const std::vector<std::string> parts = splitChord(combo);
    for (const std::string& part : parts) {
        if (part.empty()) die("empty key combo part in '" + std::string(combo) + "'");
    }
    const std::string& key = parts.back();

    // Everything is looked up before the first event, so a rejected combo posts nothing. Without
    // modifiers this is a plain key press and heldFlags is left alone.
    const ProcessState& state = processState();
    std::vector<Modifier> modifiers;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        const std::string name = lowercased(parts[i]);
        const auto flag = state.modifierFlags.find(name);
        if (flag == state.modifierFlags.end()) {
            die("unknown modifier '" + name + "' in combo '" + std::string(combo) + "'");
        }
        modifiers.push_back({flag->second, state.modifierKeyCodes.at(name)});
    }
    const auto code = keyCodeFor(key);
    if (!code) die("unknown key '" + key + "'");

    EventFlags flags = 0;
    for (const Modifier& modifier : modifiers) {
        flags |= modifier.flag;
        postModifier(modifier.code, flags);
    }
    postKey(*code, flags);
    for (auto modifier = modifiers.rbegin(); modifier != modifiers.rend(); ++modifier) {
        flags &= ~modifier->flag;
        postModifier(modifier->code, flags);
    }
}

}  // namespace brisko
