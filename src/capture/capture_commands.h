#pragma once

#include <string>

namespace brisko {

[[noreturn]] void runScreenshot(const std::string& path);
[[noreturn]] void runCaptureStream();

}  // namespace brisko
