#include "support/journal_text.h"

#include <map>
#include <sstream>

#include "cli/unicode_text.h"

namespace brisko::testing {
namespace {

std::string flagNames(std::uint64_t flags) {
    static const std::pair<std::uint64_t, const char*> names[] = {
        {0x100000, "cmd"}, {0x20000, "shift"}, {0x80000, "alt"}, {0x40000, "ctrl"}, {0x800000, "fn"}};
    std::string text;
    for (const auto& [mask, name] : names) {
        if (flags & mask) text += (text.empty() ? " " : ",") + std::string(name);
    }
    return text;
}

using Kind = std::pair<const char*, std::uint32_t>;  // the name, and the pointer button the type stands for

Kind kindOf(std::uint32_t type) {
    static const std::map<std::uint32_t, Kind> kinds = {
        {1, {"leftdown", 0}},   {2, {"leftup", 0}},     {3, {"rightdown", 1}}, {4, {"rightup", 1}},
        {5, {"move", 0}},       {6, {"leftdrag", 0}},   {7, {"rightdrag", 1}}, {10, {"keydown", 0}},
        {11, {"keyup", 0}},     {12, {"flags", 0}},     {22, {"scroll", 0}},   {25, {"otherdown", 2}},
        {26, {"otherup", 2}},   {27, {"otherdrag", 2}},
    };
    const auto found = kinds.find(type);
    return found == kinds.end() ? Kind{"unknown", 0} : found->second;
}

std::string lineOf(const fake::Happening& happening) {
    if (const auto* pause = std::get_if<fake::Pause>(&happening)) return "pause " + std::to_string(pause->microseconds);
    const auto& event = std::get<platform::InputEvent>(happening);
    const Kind kind = kindOf(event.type);
    std::ostringstream text;
    text << kind.first << ' ';
    if (event.type >= 10 && event.type <= 12) {
        if (event.text.empty()) {
            text << event.keyCode;
        } else {
            text << '"';
            for (const char32_t scalar : scalarsOfUtf16(event.text)) text << utf8FromScalar(scalar);
            text << '"';
        }
    } else if (event.type == 22) {
        text << event.scrollLines;
    } else {
        text << event.point.x << ',' << event.point.y;
        if (event.button != kind.second) text << " b" << event.button;
        if (event.clickState) text << " #" << *event.clickState;
    }
    return text.str() + flagNames(event.flags);
}

template <typename Entries>
std::vector<std::string> linesOf(const Entries& entries) {
    std::vector<std::string> lines;
    for (const auto& entry : entries) lines.push_back(lineOf(entry));
    return lines;
}

}  // namespace

std::vector<std::string> journalText(const fake::Journal& journal) { return linesOf(journal.all()); }

std::vector<std::string> eventText(const fake::Journal& journal) { return linesOf(journal.events()); }

}  // namespace brisko::testing
