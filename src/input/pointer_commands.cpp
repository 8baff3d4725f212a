#include "cli/parse_point.h"
#include "input/input_commands.h"
#include "input/mouse_button.h"
#include "input/pointer_actions.h"
#include "ownui/refusal.h"

// The one-shot pointer commands. Presses are checked against the host's windows before their first
// event; a plain move never is.

namespace brisko {

void runMove(const std::vector<std::string>& rest) { moveTo(parsePoint(rest[0], rest[1])); }

void runClick(const std::vector<std::string>& rest) {
    const platform::Point point = parsePoint(rest[0], rest[1]);
    refuseIfOnBrisko(point);
    moveTo(point);
    // An unknown button name fails only now, after the pointer has moved.
    const MouseButton button = MouseButton::named(rest.size() == 3 ? rest[2] : "left");
    clickAt(point, button, 1);
}

void runDoubleClick(const std::vector<std::string>& rest) {
    const platform::Point point = parsePoint(rest[0], rest[1]);
    refuseIfOnBrisko(point);
    moveTo(point);
    const MouseButton left = MouseButton::named("left");
    clickAt(point, left, 1);
    clickAt(point, left, 2);
}

void runDrag(const std::vector<std::string>& rest) {
    const platform::Point start = parsePoint(rest[0], rest[1]);
    refuseIfOnBrisko(start);
    // Only where the drag starts is a press; it may end anywhere.
    const platform::Point end = parsePoint(rest[2], rest[3]);
    drag(start, end);
}

}  // namespace brisko
