#pragma once

#include <string_view>

#include "platform/geometry.h"

namespace brisko {

// Two coordinate texts to a point, passed on unchanged. Throws InputCommandError.
platform::Point parsePoint(std::string_view x, std::string_view y);

}  // namespace brisko
