#include "input/mouse_button.h"

#include <string>

#include "cli/input_command_error.h"
#include "platform/event_poster.h"

namespace brisko {

MouseButton MouseButton::named(std::string_view name) {
    namespace type = platform::event_type;
    if (name == "left") return {0, type::leftMouseDown, type::leftMouseUp};
    if (name == "right") return {1, type::rightMouseDown, type::rightMouseUp};
    if (name == "middle") return {2, type::otherMouseDown, type::otherMouseUp};
    throw InputCommandError("unknown mouse button '" + std::string(name) + "' (want left|right|middle)");
}

}  // namespace brisko
