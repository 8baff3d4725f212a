#include "entry/command_table.h"

#include "capture/capture_commands.h"
#include "cli/parse_point.h"
#include "clipboard/clipboard_commands.h"
#include "entry/hidden_commands.h"
#include "input/input_commands.h"
#include "ownui/own_ui_commands.h"
#include "play/play_commands.h"
#include "probes/probes.h"
#include "stream/input_stream.h"

namespace brisko {
namespace {

using Rest = std::vector<std::string>;

constexpr auto none = between<0, 0>;
constexpr auto one = between<1, 1>;
constexpr auto two = between<2, 2>;
constexpr auto four = between<4, 4>;
constexpr auto oneOrMore = between<1, SIZE_MAX>;
constexpr auto twoOrThree = between<2, 3>;
bool noneOrTwo(std::size_t n) { return n == 0 || n == 2; }

void ownUi(const Rest& rest) {
    if (rest.empty()) printOwnUi(std::nullopt);
    printOwnUi(parsePoint(rest[0], rest[1]));
}

}  // namespace

const std::string_view usageText =
    "usage: brisko-mac-input <check|check-flags|geometry|session|move|click|"
    "doubleclick|drag|type|key|scroll|mousemove|mousedown|mouseup|keydown|keyup|type-unicode|"
    "set-clipboard|get-clipboard|clear-clipboard|clipboard-access|input-stream|play|play-check|"
    "capture-stream|screenshot|own-ui|own-ui-check> \u2026";

const std::vector<CommandRow>& commandTable() {
    static const std::vector<CommandRow> rows = [] {
        std::vector<CommandRow> oneShot = {
        {"check", anyCount, "", [](const Rest& r) { printCheck(!r.empty() && r[0] == "--prompt"); }},
        {"check-flags", anyCount, "", [](const Rest&) { printFlags(); }},
        {"geometry", anyCount, "", [](const Rest&) { printGeometry(); }},
        {"session", anyCount, "", [](const Rest&) { printSession(); }},
        {"get-clipboard", oneOrMore, "usage: get-clipboard <uti> [uti\u2026]",
         [](const Rest& r) { printClipboard(r); }},
        {"clear-clipboard", none, "usage: clear-clipboard (no arguments)",
         [](const Rest&) { clearClipboardTransient(); }},
        {"clipboard-access", none, "usage: clipboard-access (no arguments)",
         [](const Rest&) { printClipboardAccess(); }},
        {"own-ui-check", none, "usage: own-ui-check (cases as JSON lines on stdin)",
         [](const Rest&) { runOwnUiCheck(); }},
        {"play-check", none, "usage: play-check (one play block on stdin)",
         [](const Rest&) { runPlayCheck(); }},
        {"play", none,
         "usage: play (one play block on stdin; no stop \u2014 only input-stream "
         "reads one)",
         [](const Rest&) { runPlayCommand(); }},
        {"own-ui", noneOrTwo, "usage: own-ui [X Y]", ownUi},
        {"screenshot", one, "usage: screenshot <out.png>",
         [](const Rest& r) { runScreenshot(r[0]); }},
        {"input-stream", none, "usage: input-stream (no arguments)",
         [](const Rest&) { runInputStream(); }},
        {"capture-stream", none, "usage: capture-stream (no arguments)",
         [](const Rest&) { runCaptureStream(); }},
        {"move", two, "usage: move X Y", runMove},
        {"click", twoOrThree, "usage: click X Y [left|right|middle]", runClick},
        {"doubleclick", two, "usage: doubleclick X Y", runDoubleClick},
        {"drag", four, "usage: drag X1 Y1 X2 Y2", runDrag},
        {"type", one, "usage: type <text> (one argument)",
         [](const Rest& r) { runType(r[0]); }},
        {"key", one, "usage: key <combo>", [](const Rest& r) { runKey(r[0]); }},
        {"parse-chord", one, "usage: parse-chord <combo>",
         [](const Rest& r) { printParseChord(r[0]); }},
        {"plan-type", one, "usage: plan-type <text>",
         [](const Rest& r) { printPlanType(r[0]); }},
        };
        const std::vector<CommandRow>& raw = rawCommandRows();
        oneShot.insert(oneShot.end(), raw.begin(), raw.end());
        return oneShot;
    }();
    return rows;
}

}  // namespace brisko
