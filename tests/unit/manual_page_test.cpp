#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "entry/command_table.h"
#include "fake/fake_platform.h"

namespace brisko {
namespace {

// A command as the manual page must head its entry: the word in bold, then the arguments of the
// program's usage line for it exactly as the program prints them. Commands without a usage line
// (they take any arguments) only need the word to start a line.
struct Entry {
    std::string word;
    std::string arguments;
    bool exact;
};

Entry entryFor(std::string_view word, std::string_view usage) {
    if (usage.empty()) return {std::string(word), "", false};
    const std::string lead = "usage: " + std::string(word);
    const auto at = usage.find(lead);
    EXPECT_NE(at, std::string_view::npos) << usage;
    return {std::string(word), at == std::string_view::npos ? "" : std::string(usage.substr(at + lead.size())), true};
}

TEST(ManualPage, HasAnEntryForEveryCommandHeadedByItsUsage) {
    fake::FakePlatform platform;
    std::ifstream in(BRISKO_MANUAL_PAGE_SOURCE);
    std::ostringstream text;
    text << in.rdbuf();
    const std::string page = text.str();
    ASSERT_FALSE(page.empty()) << BRISKO_MANUAL_PAGE_SOURCE;

    std::vector<Entry> entries;
    for (const CommandRow& row : commandTable()) entries.push_back(entryFor(row.word, row.usage));
    EXPECT_GE(entries.size(), 30u);
    for (const Entry& entry : entries) {
        const std::string heading = "\n*" + entry.word + "*" + entry.arguments;
        const auto has = [&](const std::string& line) { return page.find(line) != std::string::npos; };
        const bool found = has(heading + "\n") || (!entry.exact && has(heading + " "));
        EXPECT_TRUE(found) << "no entry headed " << heading.substr(1);
    }
}

}  // namespace
}  // namespace brisko
