#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "fake/fake_platform.h"
#include "input/key_vocabulary.h"

// Builders for the events the input logic is expected to post, and readable failure output.

namespace brisko::platform {

inline void PrintTo(const InputEvent& e, std::ostream* os) {
    *os << "{type " << e.type << " at (" << e.point.x << "," << e.point.y << ") button " << e.button;
    if (e.clickState) *os << " click " << *e.clickState;
    *os << " key " << e.keyCode << " flags 0x" << std::hex << e.flags << std::dec << " text";
    for (const char16_t unit : e.text) *os << " U+" << std::hex << static_cast<unsigned>(unit) << std::dec;
    *os << " lines " << e.scrollLines << "}";
}

}  // namespace brisko::platform

namespace brisko::fake {

inline void PrintTo(const Pause& p, std::ostream* os) { *os << "pause " << p.microseconds << "us"; }

}  // namespace brisko::fake

namespace brisko::testing {

namespace type = platform::event_type;
using platform::InputEvent;

inline InputEvent pointerEvent(std::uint32_t eventType, double x, double y, std::uint32_t button = 0,
                               std::optional<std::int64_t> clickState = std::nullopt, EventFlags flags = 0) {
    InputEvent e;
    e.type = eventType;
    e.point = {x, y};
    e.button = button;
    e.clickState = clickState;
    e.flags = flags;
    return e;
}

inline InputEvent moved(double x, double y, EventFlags flags = 0) {
    return pointerEvent(type::mouseMoved, x, y, 0, std::nullopt, flags);
}

inline InputEvent keyboardEvent(std::uint32_t eventType, KeyCode code, EventFlags flags = 0) {
    InputEvent e;
    e.type = eventType;
    e.keyCode = code;
    e.flags = flags;
    return e;
}

inline InputEvent keyDown(KeyCode code, EventFlags flags = 0) { return keyboardEvent(type::keyDown, code, flags); }
inline InputEvent keyUp(KeyCode code, EventFlags flags = 0) { return keyboardEvent(type::keyUp, code, flags); }
inline InputEvent flagsChanged(KeyCode code, EventFlags flags) { return keyboardEvent(type::flagsChanged, code, flags); }

inline InputEvent textEvent(std::uint32_t eventType, std::u16string units) {
    InputEvent e = keyboardEvent(eventType, 0);
    e.text = std::move(units);
    return e;
}

// The key down and key up that type one character.
inline std::vector<InputEvent> typed(const std::u16string& units) {
    return {textEvent(type::keyDown, units), textEvent(type::keyUp, units)};
}

inline InputEvent scrolled(std::int32_t lines, EventFlags flags = 0) {
    InputEvent e;
    e.type = type::scrollWheel;
    e.scrollLines = lines;
    e.flags = flags;
    return e;
}

inline std::vector<InputEvent> joined(std::vector<std::vector<InputEvent>> parts) {
    std::vector<InputEvent> all;
    for (auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// What the journal holds when each event is followed by the pause of the default pacing.
inline std::vector<fake::Happening> paced(const std::vector<InputEvent>& events, unsigned long long pause = 10000) {
    std::vector<fake::Happening> all;
    for (const InputEvent& e : events) {
        all.emplace_back(e);
        all.emplace_back(fake::Pause{pause});
    }
    return all;
}

}  // namespace brisko::testing
