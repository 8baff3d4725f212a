#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace brisko {

// Virtual key codes of the US (ANSI) keyboard and modifier flag masks: the program's key
// vocabulary on every platform.
using KeyCode = std::uint16_t;
using EventFlags = std::uint64_t;

namespace flag {
inline constexpr EventFlags capsLock = 0x10000;
inline constexpr EventFlags shift = 0x20000;
inline constexpr EventFlags control = 0x40000;
inline constexpr EventFlags alternate = 0x80000;
inline constexpr EventFlags command = 0x100000;
inline constexpr EventFlags secondaryFn = 0x800000;
}  // namespace flag

// The tables, built once at start into the process state.
std::map<std::string, KeyCode> makeNamedKeys();
std::map<std::string, KeyCode> makeCharKeys();
std::map<std::string, EventFlags> makeModifierFlags();
std::map<std::string, KeyCode> makeModifierKeyCodes();
std::set<KeyCode> makeModifierKeyCodeSet();
std::map<std::string, std::string> makeModifierNameByKeyCode();
inline constexpr EventFlags allModifierMasksValue = 0xff0000;

}  // namespace brisko
