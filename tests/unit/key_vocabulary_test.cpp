#include <gtest/gtest.h>

#include "cli/input_command_error.h"
#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "input/key_vocabulary.h"

namespace brisko {
namespace {

class KeyVocabulary : public ::testing::Test {
protected:
    fake::FakePlatform platform;
};

TEST_F(KeyVocabulary, KeyCodeForNamesAndCharacters) {
    const std::vector<std::pair<std::string, std::optional<KeyCode>>> cases = {
        {"return", 36}, {"RETURN", 36}, {"Return", 36}, {"F5", 96}, {"f12", 111},
        {"backspace", 51}, {"delete", 117}, {"Cmd", 55}, {"SPACE", 49}, {"capslock", 57},
        {"a", 0}, {"A", 0}, {"+", 24}, {"=", 24}, {"'", 39}, {"\\", 42}, {"`", 50}, {"/", 44},
        {" ", std::nullopt}, {"!", std::nullopt}, {"ab", std::nullopt}, {"", std::nullopt},
        {"\xC3\xA9", std::nullopt},            // é is not on the table
        {"a\xCC\x81", std::nullopt},           // a + combining acute is one character, not "a"
        {"\xC4\xB0", std::nullopt},            // İ lower-cases to i + dot above, not to i
        {"\xEF\xBC\xA1", std::nullopt},        // fullwidth A lower-cases to fullwidth a
    };
    for (const auto& [name, expected] : cases) {
        EXPECT_EQ(keyCodeFor(name), expected) << "name '" << name << "'";
    }
}

TEST_F(KeyVocabulary, TablesHaveTheirSizes) {
    const ProcessState& s = processState();
    EXPECT_EQ(s.namedKeys.size(), 32u);
    EXPECT_EQ(s.charKeys.size(), 48u);
    EXPECT_EQ(s.modifierFlags.size(), 5u);
    EXPECT_EQ(s.modifierKeyCodeSet.size(), 9u);
    EXPECT_FALSE(s.modifierKeyCodeSet.contains(57));
    for (const auto& [name, code] : s.modifierKeyCodes) {
        EXPECT_TRUE(s.modifierFlags.contains(name)) << name;
        EXPECT_EQ(s.modifierNameByKeyCode.at(std::to_string(code)), name);
    }
}

TEST_F(KeyVocabulary, SplitChord) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"cmd+c", {"cmd", "c"}},
        {"cmd+shift+4", {"cmd", "shift", "4"}},
        {"c", {"c"}},
        {"", {""}},
        {"+", {"+"}},
        {"++", {"+"}},
        {"cmd+", {"cmd", "+"}},
        {"cmd++", {"cmd", "+"}},
        {"cmd+shift++", {"cmd", "shift", "+"}},
        {"cmd+++", {"cmd", "", "+"}},
        {"+a", {"", "a"}},
        {"cmd++c", {"cmd", "", "c"}},
        {"Cmd + C", {"Cmd ", " C"}},
    };
    for (const auto& [combo, parts] : cases) {
        EXPECT_EQ(splitChord(combo), parts) << "combo '" << combo << "'";
    }
}

TEST_F(KeyVocabulary, ParseFlags) {
    const std::vector<std::pair<std::string, EventFlags>> accepted = {
        {"none", 0}, {"", 0}, {",,", 0}, {"cmd", 0x100000}, {"cmd,shift", 0x120000},
        {"cmd,,shift", 0x120000}, {"shift,shift", 0x20000}, {"fn,ctrl,alt", 0x8C0000},
    };
    for (const auto& [text, flags] : accepted) EXPECT_EQ(parseFlags(text), flags) << text;

    const std::vector<std::pair<std::string, std::string>> refused = {
        {"Cmd", "unknown modifier 'Cmd' in flags 'Cmd' (want cmd|shift|alt|ctrl|fn or none)"},
        {"cmd, shift", "unknown modifier ' shift' in flags 'cmd, shift' (want cmd|shift|alt|ctrl|fn or none)"},
        {"None", "unknown modifier 'None' in flags 'None' (want cmd|shift|alt|ctrl|fn or none)"},
        {"capslock", "unknown modifier 'capslock' in flags 'capslock' (want cmd|shift|alt|ctrl|fn or none)"},
    };
    for (const auto& [text, message] : refused) {
        try {
            parseFlags(text);
            ADD_FAILURE() << "accepted '" << text << "'";
        } catch (const InputCommandError& e) {
            EXPECT_EQ(e.message(), message);
        }
    }
}

TEST_F(KeyVocabulary, ParseKeyCode) {
    const std::vector<std::pair<std::string, KeyCode>> accepted = {
        {"0", 0}, {"65535", 65535}, {"+7", 7}, {"-0", 0}, {"007", 7}, {"56", 56},
    };
    for (const auto& [text, code] : accepted) EXPECT_EQ(parseKeyCode(text), code) << text;
    for (const std::string text : {"65536", "-1", "0x10", "", "+", "-", " 5", "5 ", "1e2", "99999999999999999999"}) {
        try {
            parseKeyCode(text);
            ADD_FAILURE() << "accepted '" << text << "'";
        } catch (const InputCommandError& e) {
            EXPECT_EQ(e.message(), "expected a CGKeyCode integer, got '" + text + "'");
        }
    }
}

}  // namespace
}  // namespace brisko
