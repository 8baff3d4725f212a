#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "cli/key_tables.h"
#include "cli/play_control.h"
#include "platform/services.h"

namespace brisko {

// Every table, constant and variable the commands share, created once at start in this order.
// Nothing else in the program is global.
struct ProcessState {
    explicit ProcessState(platform::Services& platformServices);

    platform::Services& services;
    // The thread that created the state: the process's main thread.
    const std::thread::id mainThread;

    const std::map<std::string, KeyCode> namedKeys;
    const std::map<std::string, KeyCode> charKeys;
    const std::map<std::string, EventFlags> modifierFlags;
    const std::map<std::string, KeyCode> modifierKeyCodes;
    const std::set<KeyCode> modifierKeyCodeSet;
    const EventFlags allModifierMasks;
    platform::EventPoster& source;
    std::uint32_t postPacingMicroseconds;
    EventFlags heldFlags;
    // The flags of the last modifier key event (flags-changed): what the process holds down, as
    // opposed to the flags that commands stamp on their events.
    EventFlags modifierKeysDown;
    const std::int64_t maxPlayLines;
    const std::int64_t maxPlayDurationMs;
    const std::map<std::string, std::string> modifierNameByKeyCode;
    PlayControl playControl;
    const std::string inputStreamReady;
    const std::string briskoBundleIdentifier;
    const std::set<std::string> briskoShellExecutableNames;
    const std::string briskoOwnUiRefusal;
    const std::string briskoMenuOpenRefusal;
    const std::int64_t systemOverlayLayer;
    const std::int64_t popUpMenuLayer;
    std::map<std::int32_t, bool> briskoOwnerCache;
    bool ownerlessWindowsReported;
    std::set<std::string> refusedButtons;
    const std::int64_t captureTileSize;
    const std::string captureStreamMagic;
    const std::uint32_t captureStreamVersion;
    const int captureDeflateLevel;
    const double briskoExclusionRefreshSeconds;
};

// The one instance. Created by startProcess before the arguments are read.
ProcessState& processState();
// Creates the process state afresh over the given services (at start, and per test).
ProcessState& startProcess(platform::Services& services);

}  // namespace brisko
