#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "entry/command_table.h"

namespace brisko {
namespace {

// The manual page heads each command's entry with the word in bold, then the arguments of the
// program's usage line for it exactly as the program prints them. Commands without a usage line
// (they take any arguments) only need the word to start a line.
TEST(ManualPage, HasAnEntryForEveryCommandHeadedByItsUsage) {
    std::ostringstream page;
    page << std::ifstream(BRISKO_MANUAL_PAGE_SOURCE).rdbuf();
    EXPECT_GE(commandTable().size(), 30u);
    for (const CommandRow& row : commandTable()) {
        const std::string word(row.word), usage(row.usage), lead = "usage: " + word;
        const std::size_t at = usage.find(lead);
        ASSERT_TRUE(usage.empty() || at != std::string::npos) << usage;
        const std::string heading = "\n*" + word + "*" + (usage.empty() ? "" : usage.substr(at + lead.size()) + "\n");
        EXPECT_NE(page.str().find(heading), std::string::npos) << "no entry headed " << heading.substr(1);
    }
}

}  // namespace
}  // namespace brisko
