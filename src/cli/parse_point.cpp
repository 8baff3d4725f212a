#include "cli/parse_point.h"

#include <string>

#include "cli/input_command_error.h"
#include "cli/number_text.h"

namespace brisko {

platform::Point parsePoint(std::string_view x, std::string_view y) {
    const auto px = parseDouble(x);
    const auto py = parseDouble(y);
    if (!px || !py) {
        throw InputCommandError("expected numeric coordinates, got '" + std::string(x) + " " +
                                std::string(y) + "'");
    }
    return {*px, *py};
}

}  // namespace brisko
