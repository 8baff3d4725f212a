#include "input/raw_commands.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "cli/input_command_error.h"
#include "cli/number_text.h"
#include "cli/parse_point.h"
#include "cli/process_state.h"
#include "cli/unicode_text.h"
#include "clipboard/base64.h"
#include "clipboard/clipboard_commands.h"
#include "input/event_posting.h"
#include "input/input_commands.h"
#include "input/keyboard_actions.h"
#include "input/mouse_button.h"
#include "input/pointer_actions.h"
#include "ownui/refusal.h"

namespace brisko {
namespace {

namespace type = platform::event_type;
using Arguments = std::vector<std::string>;

// The optional argument at index, when the command line has it.
std::optional<std::string_view> optionalArgument(const Arguments& arguments, std::size_t index) {
    if (index < arguments.size()) return arguments[index];
    return std::nullopt;
}

void runMouseMove(const Arguments& arguments) {
    std::string_view held = arguments.size() >= 3 ? std::string_view(arguments[2]) : "none";
    const platform::Point point = parsePoint(arguments[0], arguments[1]);
    adoptHeldFlags(optionalArgument(arguments, 3));
    // The press of a refused button never happened, so nothing is dragged.
    if (processState().refusedButtons.contains(std::string(held))) held = "none";
    rawMove(point, held);
}

void runMouseDown(const Arguments& arguments) {
    const platform::Point point = parsePoint(arguments[0], arguments[1]);
    adoptHeldFlags(optionalArgument(arguments, 3));
    const std::string& name = arguments[2];
    auto& refusedButtons = processState().refusedButtons;
    try {
        refuseIfOnBrisko(point);
    } catch (const InputCommandError&) {
        // Remembered as written, before the name is checked, so that its release is swallowed.
        refusedButtons.insert(name);
        throw;
    }
    refusedButtons.erase(name);
    rawButton(point, name, true);
}

void runMouseUp(const Arguments& arguments) {
    const platform::Point point = parsePoint(arguments[0], arguments[1]);
    adoptHeldFlags(optionalArgument(arguments, 3));
    // The release of a refused press is swallowed: the application never saw the press.
    if (processState().refusedButtons.erase(arguments[2]) > 0) return;
    rawButton(point, arguments[2], false);
}

void runRawKey(const Arguments& arguments, bool down) {
    const KeyCode code = parseKeyCode(arguments[0]);
    // Modifier presses and every release pass, so that a gesture can always let go of its keys.
    if (down && !processState().modifierKeyCodeSet.contains(code)) refuseIfBriskoFrontmost();
    const EventFlags flags = parseFlags(arguments[1]);
    postRawKey(code, flags, down);
}

// A Unicode scalar value written in hexadecimal without prefix, such as "1F600".
char32_t parseScalarHex(const std::string& text) {
    const auto value = parseInteger(text, 16);
    if (!value || !isScalarValue(*value)) {
        throw InputCommandError("expected a hex Unicode code point, got '" + text + "'");
    }
    return static_cast<char32_t>(*value);
}

void runTypeUnicode(const Arguments& arguments) {
    const char32_t scalar = parseScalarHex(arguments[0]);
    refuseIfBriskoFrontmost();
    typeUnicodeScalar(utf8FromScalar(scalar));
}

void runSetClipboard(const Arguments& arguments) {
    const std::string& text = arguments[0];
    const auto bytes = base64Decode(text);
    const std::string decoded = bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    if (!bytes || !isValidUtf8(decoded)) {
        throw InputCommandError("expected base64-encoded UTF-8 text, got '" + text + "'");
    }
    setClipboard(decoded);
}

constexpr std::string_view scrollUsage = "usage: scroll up|down N [flags]";

void runScroll(const Arguments& arguments) {
    const auto amount = parseInteger(arguments[1], 10);
    if (!amount || *amount <= 0 || *amount > std::numeric_limits<std::int32_t>::max()) {
        throw InputCommandError(std::string(scrollUsage));
    }
    adoptHeldFlags(optionalArgument(arguments, 2));
    scroll(arguments[0], static_cast<std::int32_t>(*amount));
}

using Run = void (*)(const Arguments&);
constexpr Run runKeyDown = [](const Arguments& a) { runRawKey(a, true); };
constexpr Run runKeyUp = [](const Arguments& a) { runRawKey(a, false); };

}  // namespace

const std::vector<CommandRow>& rawCommandRows() {
    static const std::vector<CommandRow> rows = {
        {"mousemove", between<2, 4>, "usage: mousemove X Y [left|middle|right|none [flags]]", runMouseMove},
        {"mousedown", between<3, 4>, "usage: mousedown X Y left|middle|right [flags]", runMouseDown},
        {"mouseup", between<3, 4>, "usage: mouseup X Y left|middle|right [flags]", runMouseUp},
        {"keydown", between<2, 2>, "usage: keydown <cgkeycode> <flags|none>", runKeyDown},
        {"keyup", between<2, 2>, "usage: keyup <cgkeycode> <flags|none>", runKeyUp},
        {"type-unicode", between<1, 1>, "usage: type-unicode <hex code point>", runTypeUnicode},
        {"set-clipboard", between<1, 1>, "usage: set-clipboard <base64 utf-8 text>", runSetClipboard},
        {"scroll", between<2, 3>, scrollUsage, runScroll},
    };
    return rows;
}

bool isRawInputCommand(std::string_view word) { return findCommand(rawCommandRows(), word) != nullptr; }

bool runRawInputCommand(const std::string& word, const std::vector<std::string>& arguments) {
    const CommandRow* command = findCommand(rawCommandRows(), word);
    if (!command) return false;
    if (!command->acceptsCount(arguments.size())) throw InputCommandError(std::string(command->usage));
    command->action(arguments);
    return true;
}

void adoptHeldFlags(std::optional<std::string_view> flags) {
    if (flags) processState().heldFlags = parseFlags(*flags);
}

void rawMove(platform::Point point, std::string_view held) {
    struct Held {
        std::string_view name;
        std::uint32_t type;
        std::uint32_t button;
    };
    static constexpr Held table[] = {
        {"none", type::mouseMoved, 0},
        {"left", type::leftMouseDragged, 0},
        {"right", type::rightMouseDragged, 1},
        {"middle", type::otherMouseDragged, 2},
    };
    const auto found = std::find_if(std::begin(table), std::end(table), [&](const Held& h) { return h.name == held; });
    if (found == std::end(table)) {
        throw InputCommandError("unknown held button '" + std::string(held) + "' (want left|middle|right|none)");
    }
    post(mouseEvent(found->type, point, found->button));
}

void rawButton(platform::Point point, std::string_view name, bool down) {
    const MouseButton button = MouseButton::named(name);
    platform::InputEvent event = mouseEvent(down ? button.down : button.up, point, button.button);
    event.clickState = 1;
    post(event);
}

void postRawKey(KeyCode code, EventFlags flags, bool down) {
    if (processState().modifierKeyCodeSet.contains(code)) {
        // The flags say what stays held after the event, for a press as for a release.
        postModifier(code, flags);
        return;
    }
    post(keyEvent(code, down, flags));
}

}  // namespace brisko
