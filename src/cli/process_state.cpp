#include "cli/process_state.h"

namespace brisko {
namespace {

std::unique_ptr<ProcessState>& instance() {
    static std::unique_ptr<ProcessState> state;
    return state;
}

}  // namespace

ProcessState::ProcessState(platform::Services& platformServices)
    : services(platformServices),
      mainThread(std::this_thread::get_id()),
      namedKeys(makeNamedKeys()),
      charKeys(makeCharKeys()),
      modifierFlags(makeModifierFlags()),
      modifierKeyCodes(makeModifierKeyCodes()),
      modifierKeyCodeSet(makeModifierKeyCodeSet()),
      allModifierMasks(allModifierMasksValue),
      source(platformServices.events),
      postPacingMicroseconds(10000),
      heldFlags(0),
      modifierKeysDown(0),
      maxPlayLines(120000),
      maxPlayDurationMs(600000),
      modifierNameByKeyCode(makeModifierNameByKeyCode()),
      inputStreamReady("brisko-mac-input input-stream v2"),
      briskoBundleIdentifier("com.brisko.desktop"),
      briskoShellExecutableNames({"brisko-mac-menubar"}),
      briskoOwnUiRefusal(
          "That's Brisko's own panel; it's for the person, not for you. Carry on with your task "
          "\u2014 the person answers it."),
      briskoMenuOpenRefusal(
          "a person has Brisko's menu open; wait and check the screen again. Your keys would go to "
          "the menu, not to the app you are typing in."),
      systemOverlayLayer(20),
      popUpMenuLayer(platformServices.windows.popUpMenuLayer()),
      ownerlessWindowsReported(false),
      captureTileSize(64),
      captureStreamMagic("BCS2"),
      captureStreamVersion(2),
      // libdeflate's fastest level: on screen content its tiles are about 7% larger than at
      // zlib's default level but take a sixth of the time, and a live stream needs the time.
      captureDeflateLevel(1),
      briskoExclusionRefreshSeconds(2.0) {}

ProcessState& processState() { return *instance(); }

ProcessState& startProcess(platform::Services& services) {
    instance() = std::make_unique<ProcessState>(services);
    return *instance();
}

}  // namespace brisko
