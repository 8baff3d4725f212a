// screenshot <out.png>: one picture of the capture display at its full pixel size, without the
// cursor and without the host's windows, written as a PNG file.
#include <optional>
#include <string>

#include "capture/capture_commands.h"
#include "capture/png_file.h"
#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "ownui/capture_exclusion.h"

namespace brisko {

void runScreenshot(const std::string& path) {
    platform::ScreenCapture& capture = processState().services.capture;
    const platform::ShareableContentResult listed = capture.shareableContent();
    std::optional<platform::CaptureDisplay> display;
    if (listed.content) display = mainSCDisplay(*listed.content);
    if (!display) {
        die("screenshot: ScreenCaptureKit could not list displays (" + listed.error.value_or("no display") +
            "). Is Screen Recording granted?");
    }
    // The mode's pixels (twice the points on a Retina display), else the size in points.
    const platform::PixelSize size =
        capture.displayPixelSize(display->displayID).value_or(platform::PixelSize{display->width, display->height});
    const platform::CapturedImageResult shot =
        capture.captureImage(briskoExcludingFilter(*display, *listed.content), size, false);
    if (!shot.image) die("screenshot: capture failed (" + shot.error.value_or("no image") + ")");
    if (!writePngFile(path, shot.image->view())) die("screenshot: cannot write " + path);
    exitProcess(0);
}

}  // namespace brisko
