#include "cli/command_table.h"

#include "capture/capture_commands.h"
#include "cli/hidden_commands.h"
#include "cli/parse_point.h"
#include "clipboard/clipboard_commands.h"
#include "input/input_commands.h"
#include "ownui/own_ui_commands.h"
#include "ownui/refusal.h"
#include "play/play_commands.h"
#include "probes/probes.h"
#include "stream/input_stream.h"

namespace brisko {
namespace {

using Rest = std::vector<std::string>;

bool anyCount(std::size_t) { return true; }
bool none(std::size_t n) { return n == 0; }
bool one(std::size_t n) { return n == 1; }
bool two(std::size_t n) { return n == 2; }
bool four(std::size_t n) { return n == 4; }
bool oneOrMore(std::size_t n) { return n >= 1; }
bool noneOrTwo(std::size_t n) { return n == 0 || n == 2; }
bool twoOrThree(std::size_t n) { return n == 2 || n == 3; }

void ownUi(const Rest& rest) {
    if (rest.empty()) printOwnUi(std::nullopt);
    printOwnUi(parsePoint(rest[0], rest[1]));
}

}  // namespace

const std::string_view usageText =
    "brisko-mac-input: usage: brisko-mac-input <check|check-flags|geometry|session|move|click|"
    "doubleclick|drag|type|key|scroll|mousemove|mousedown|mouseup|keydown|keyup|type-unicode|"
    "set-clipboard|get-clipboard|clear-clipboard|clipboard-access|input-stream|play|play-check|"
    "capture-stream|screenshot|own-ui|own-ui-check> \u2026";

const std::vector<CommandRow>& commandTable() {
    static const std::vector<CommandRow> rows = {
        {"check", anyCount, "", [](const Rest& r) { printCheck(!r.empty() && r[0] == "--prompt"); }},
        {"check-flags", anyCount, "", [](const Rest&) { printFlags(); }},
        {"geometry", anyCount, "", [](const Rest&) { printGeometry(); }},
        {"session", anyCount, "", [](const Rest&) { printSession(); }},
        {"get-clipboard", oneOrMore, "brisko-mac-input: usage: get-clipboard <uti> [uti\u2026]",
         [](const Rest& r) { printClipboard(r); }},
        {"clear-clipboard", none, "brisko-mac-input: usage: clear-clipboard (no arguments)",
         [](const Rest&) { clearClipboardTransient(); }},
        {"clipboard-access", none, "brisko-mac-input: usage: clipboard-access (no arguments)",
         [](const Rest&) { printClipboardAccess(); }},
        {"own-ui-check", none, "brisko-mac-input: usage: own-ui-check (cases as JSON lines on stdin)",
         [](const Rest&) { runOwnUiCheck(); }},
        {"play-check", none, "brisko-mac-input: usage: play-check (one play block on stdin)",
         [](const Rest&) { runPlayCheck(); }},
        {"play", none,
         "brisko-mac-input: usage: play (one play block on stdin; no stop \u2014 only input-stream "
         "reads one)",
         [](const Rest&) { runPlayCommand(); }},
        {"own-ui", noneOrTwo, "brisko-mac-input: usage: own-ui [X Y]", ownUi},
        {"screenshot", one, "brisko-mac-input: usage: screenshot <out.png>",
         [](const Rest& r) { runScreenshot(r[0]); }},
        {"input-stream", none, "brisko-mac-input: usage: input-stream (no arguments)",
         [](const Rest&) { runInputStream(); }},
        {"capture-stream", none, "brisko-mac-input: usage: capture-stream (no arguments)",
         [](const Rest&) { runCaptureStream(); }},
        {"move", two, "brisko-mac-input: usage: move X Y", runMove},
        {"click", twoOrThree, "brisko-mac-input: usage: click X Y [left|right|middle]", runClick},
        {"doubleclick", two, "brisko-mac-input: usage: doubleclick X Y", runDoubleClick},
        {"drag", four, "brisko-mac-input: usage: drag X1 Y1 X2 Y2", runDrag},
        {"type", one, "brisko-mac-input: usage: type <text> (one argument)",
         [](const Rest& r) { runType(r[0]); }},
        {"key", one, "brisko-mac-input: usage: key <combo>", [](const Rest& r) { runKey(r[0]); }},
        {"parse-chord", one, "brisko-mac-input: usage: parse-chord <combo>",
         [](const Rest& r) { printParseChord(r[0]); }},
        {"plan-type", one, "brisko-mac-input: usage: plan-type <text>",
         [](const Rest& r) { printPlanType(r[0]); }},
    };
    return rows;
}

}  // namespace brisko
