#pragma once

#include <optional>

#include "platform/geometry.h"

namespace brisko {

void runOwnUiCheck();
[[noreturn]] void printOwnUi(std::optional<platform::Point> point);

}  // namespace brisko
