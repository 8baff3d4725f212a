#include <optional>
#include <string>
#include <vector>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "ownui/capture_exclusion.h"
#include "ownui/guard_rules.h"
#include "ownui/live_inventory.h"
#include "ownui/own_ui_commands.h"
#include "ownui/truncation.h"

namespace brisko {
namespace {

struct OwnUiReport {
    std::vector<std::int32_t> excludedPids;
    std::vector<platform::ScreenWindow> briskoWindows;
    BriskoKeyboardHold hold = BriskoKeyboardHold::other;
    // Present when a point was given: the window a press there would be refused on, if any.
    std::optional<std::optional<platform::ScreenWindow>> hit;
};

template <typename T, typename Write>
void appendArray(std::string& out, const std::vector<T>& items, Write write) {
    out += '[';
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) out += ',';
        write(out, items[i]);
    }
    out += ']';
}

void appendWindow(std::string& out, const platform::ScreenWindow& window) {
    const platform::Rect bounds = platform::standardized(window.bounds);
    out += "{\"id\":" + std::to_string(window.windowID) + ",\"pid\":" + std::to_string(window.ownerPID) +
           ",\"layer\":" + std::to_string(window.layer) + ",\"x\":" + std::to_string(truncatedSaturating(bounds.x)) +
           ",\"y\":" + std::to_string(truncatedSaturating(bounds.y)) +
           ",\"w\":" + std::to_string(truncatedSaturating(bounds.width)) +
           ",\"h\":" + std::to_string(truncatedSaturating(bounds.height)) + "}";
}

// One object, keys in a fixed order, no white space.
std::string reportLine(const OwnUiReport& report) {
    std::string out = "{\"excludedPids\":";
    appendArray(out, report.excludedPids, [](std::string& o, std::int32_t pid) { o += std::to_string(pid); });
    out += ",\"briskoWindows\":";
    appendArray(out, report.briskoWindows, appendWindow);
    out += ",\"briskoFrontmost\":";
    out += report.hold == BriskoKeyboardHold::brisko ? "true" : "false";
    out += ",\"keyboard\":\"";
    out += rawValue(report.hold);
    out += '"';
    if (report.hit) {
        const auto& window = *report.hit;
        out += window ? ",\"refused\":true,\"window\":" + std::to_string(window->windowID)
                      : std::string(",\"refused\":false,\"window\":null");
    }
    out += '}';
    return out;
}

}  // namespace

void printOwnUi(std::optional<platform::Point> point) {
    const platform::ShareableContentResult listed = processState().services.capture.shareableContent();
    const auto display = listed.content ? mainSCDisplay(*listed.content) : std::nullopt;
    if (!display) {
        die("own-ui: ScreenCaptureKit could not list displays (" + listed.error.value_or("no display") + ")");
    }
    OwnUiReport report;
    report.excludedPids = briskoExcludingFilter(*display, *listed.content).excludedPids;
    // One snapshot for every question below, so that the answers agree with each other.
    const std::vector<platform::ScreenWindow> windows = onScreenWindows();
    report.hold = briskoKeyboardHold(keyboardWindows(windows), pidIsBrisko);
    // Every host window, also those the rules ignore (transparent or empty), for the record.
    for (const platform::ScreenWindow& window : windows) {
        if (pidIsBrisko(window.ownerPID)) report.briskoWindows.push_back(window);
    }
    if (point) report.hit = briskoWindowAt(*point, windows, pidIsBrisko);
    writeStdoutLine(reportLine(report));
    exitProcess(0);
}

}  // namespace brisko
