#include "capture/capture_commands.h"
#include "cli/not_built_yet.h"

namespace brisko {

void runScreenshot(const std::string&) { notBuiltYet("screenshot"); }
void runCaptureStream() { notBuiltYet("capture-stream"); }

}  // namespace brisko
