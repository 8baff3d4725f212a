#include "input/pointer_actions.h"

#include <string>

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "input/event_posting.h"

namespace brisko {
namespace {

namespace type = platform::event_type;

constexpr int dragSteps = 12;
constexpr std::int32_t linesPerScrollEvent = 3;

}  // namespace

void moveTo(platform::Point point) { post(mouseEvent(type::mouseMoved, point, 0)); }

void clickAt(platform::Point point, const MouseButton& button, std::int64_t clickState) {
    for (const std::uint32_t eventType : {button.down, button.up}) {
        platform::InputEvent event = mouseEvent(eventType, point, button.button);
        event.clickState = clickState;
        post(event);
    }
}

void drag(platform::Point start, platform::Point end) {
    post(mouseEvent(type::mouseMoved, start, 0));
    post(mouseEvent(type::leftMouseDown, start, 0));
    for (int i = 1; i <= dragSteps; ++i) {
        // Points are not rounded; t reaches 1.0 at the last step.
        const double t = i / static_cast<double>(dragSteps);
        const platform::Point at{(end.x - start.x) * t + start.x, (end.y - start.y) * t + start.y};
        post(mouseEvent(type::leftMouseDragged, at, 0));
    }
    post(mouseEvent(type::leftMouseUp, end, 0));
}

void scroll(std::string_view direction, std::int32_t amount) {
    std::int32_t lines = 0;
    if (direction == "up") {
        lines = linesPerScrollEvent;
    } else if (direction == "down") {
        lines = -linesPerScrollEvent;
    } else {
        throw InputCommandError("unknown scroll direction '" + std::string(direction) + "' (want up|down)");
    }
    for (std::int32_t i = 0; i < amount; ++i) {
        platform::InputEvent event;
        event.type = type::scrollWheel;
        event.flags = processState().heldFlags;
        event.scrollLines = lines;
        post(event);
    }
}

}  // namespace brisko
