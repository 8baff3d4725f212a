#include "support/journal_text.h"

#include <map>
#include <sstream>

namespace brisko::testing {
namespace {

std::string flagNames(std::uint64_t flags) {
    static const std::vector<std::pair<std::uint64_t, std::string>> names = {
        {0x100000, "cmd"}, {0x20000, "shift"}, {0x80000, "alt"}, {0x40000, "ctrl"}, {0x800000, "fn"}};
    std::string text;
    for (const auto& [mask, name] : names) {
        if (!(flags & mask)) continue;
        text += (text.empty() ? " " : ",") + name;
    }
    return text;
}

std::string eventName(std::uint32_t type) {
    static const std::map<std::uint32_t, std::string> names = {
        {1, "leftdown"},     {2, "leftup"},      {3, "rightdown"},    {4, "rightup"},   {5, "move"},
        {6, "leftdrag"},     {7, "rightdrag"},   {10, "keydown"},     {11, "keyup"},    {12, "flags"},
        {22, "scroll"},      {25, "otherdown"},  {26, "otherup"},     {27, "otherdrag"},
    };
    const auto found = names.find(type);
    return found == names.end() ? "type " + std::to_string(type) : found->second;
}

}  // namespace

std::string journalText(const fake::Happening& happening) {
    if (const auto* pause = std::get_if<fake::Pause>(&happening)) {
        return "pause " + std::to_string(pause->microseconds);
    }
    const auto& event = std::get<platform::InputEvent>(happening);
    std::ostringstream text;
    text << eventName(event.type);
    if (event.type >= 10 && event.type <= 12) {
        text << ' ' << event.keyCode;
    } else if (event.type == 22) {
        text << ' ' << event.scrollLines;
    } else {
        text << ' ' << event.point.x << ',' << event.point.y;
    }
    text << flagNames(event.flags);
    return text.str();
}

std::vector<std::string> journalText(const std::vector<fake::Happening>& happenings) {
    std::vector<std::string> lines;
    for (const auto& happening : happenings) lines.push_back(journalText(happening));
    return lines;
}

std::vector<std::string> eventText(const fake::Journal& journal) {
    std::vector<std::string> lines;
    for (const auto& event : journal.events()) lines.push_back(journalText(event));
    return lines;
}

}  // namespace brisko::testing
