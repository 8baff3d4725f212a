#include "probes/probes.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include "cli/diagnostics.h"
#include "cli/process_state.h"
#include "ownui/truncation.h"

namespace brisko {
namespace {

const char* digit(bool value) { return value ? "1" : "0"; }
const char* jsonBool(bool value) { return value ? "true" : "false"; }

// A session value present and non-zero.
bool sessionFlag(const std::map<std::string, double>& values, const std::string& key) {
    const auto found = values.find(key);
    return found != values.end() && found->second != 0;
}

}  // namespace

void printCheck(bool prompt) {
    platform::SystemProbe& probe = processState().services.probe;
    if (prompt) probe.requestPermissions();
    const bool screen = probe.screenCaptureAllowed();
    const bool input = probe.postEventAllowed();
    writeStdoutLine(std::string("screen=") + digit(screen) + " input=" + digit(input));
}

void printFlags() {
    const ProcessState& state = processState();
    const std::uint64_t hid = state.services.probe.hidFlags();
    const std::uint64_t modifiers = hid & state.allModifierMasks;
    // Every flag bit lies below bit 32; the low 32 bits are what is printed.
    char line[64];
    std::snprintf(line, sizeof line, "hid=0x%08X modifiers=0x%08X baseline=%d", static_cast<unsigned>(hid & 0xFFFFFFFFu),
                  static_cast<unsigned>(modifiers & 0xFFFFFFFFu), modifiers == 0 ? 1 : 0);
    writeStdoutLine(line);
}

void printGeometry() {
    platform::SystemProbe& probe = processState().services.probe;
    const platform::Rect bounds = probe.mainDisplayBounds();
    const auto pixels = probe.mainDisplayPixelSize();
    if (!pixels) die("CGDisplayCopyDisplayMode failed");
    writeStdoutLine(std::to_string(truncatedSaturating(bounds.width)) + " " +
                    std::to_string(truncatedSaturating(bounds.height)) + " " +
                    std::to_string(pixels->width) + " " + std::to_string(pixels->height));
}

void printSession() {
    platform::SystemProbe& probe = processState().services.probe;
    const auto values = probe.sessionValues();
    const bool locked = values && sessionFlag(*values, "CGSSessionScreenIsLocked");
    const bool console = values && sessionFlag(*values, "kCGSSessionOnConsoleKey");
    const bool loggedIn = values.has_value();
    const bool asleep = probe.displayAsleep();
    writeStdoutLine(std::string("{\"locked\":") + jsonBool(locked) + ",\"displayAsleep\":" + jsonBool(asleep) +
                    ",\"console\":" + jsonBool(console) + ",\"loggedIn\":" + jsonBool(loggedIn) + "}");
}

}  // namespace brisko
