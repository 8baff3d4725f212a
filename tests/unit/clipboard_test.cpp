#include <gtest/gtest.h>

#include "clipboard/base64.h"
#include "clipboard/clipboard_commands.h"
#include "fake/fake_platform.h"

namespace brisko {
namespace {

using Item = fake::FakePasteboard::Item;

platform::Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

const std::string plainText = "public.utf8-plain-text";
const std::string html = "public.html";

// get-clipboard prints the first requested type that is listed; listed data that never arrives
// is read three times, 50 ms apart.
TEST(GetClipboard, PrintsTheFirstRequestedTypeThatIsListed) {
    // The case, the items, the types asked for, how often the change count is read (once unless
    // listed data never arrives) and the line printed.
    using Case = std::tuple<std::string, std::vector<Item>, std::vector<std::string>, int, std::string>;
    const std::vector<Case> cases = {
        {"first item with data wins",
         {{{plainText}, {{plainText, bytes("one")}}}, {{plainText}, {{plainText, bytes("two")}}}},
         {plainText}, 1,
         R"({"changeCount":7,"types":["public.utf8-plain-text"],"items":[{"type":"public.utf8-plain-text","base64":"b25l"}]})"},
        {"an item without data is passed over",
         {{{plainText}, {}}, {{plainText, "z"}, {{plainText, bytes("two")}}}},
         {plainText}, 1,
         R"({"changeCount":7,"types":["public.utf8-plain-text","z"],"items":[{"type":"public.utf8-plain-text","base64":"dHdv"}]})"},
        {"escaped type names, sorted by code point",
         {{{"a\\\"b", "\xC3\xA9", "Z", plainText}, {{"a\\\"b", bytes("q")}}}},
         {"a\\\"b"}, 1,
         R"({"changeCount":7,"types":["Z","a\\\"b","public.utf8-plain-text",")" "\xC3\xA9" R"("],"items":[{"type":"a\\\"b","base64":"cQ=="}]})"},
        {"listed data that never arrives", {{{html, plainText}, {{html, bytes("x")}}}}, {plainText, html}, 3,
         R"({"changeCount":7,"types":["public.html","public.utf8-plain-text"],"items":[]})"},
    };
    for (const auto& [name, items, request, changeCountReads, out] : cases) {
        fake::FakePlatform fresh;
        fresh.pasteboard.count = 7;
        fresh.pasteboard.items = items;
        std::vector<std::string> args{"get-clipboard"};
        args.insert(args.end(), request.begin(), request.end());
        EXPECT_EQ(fresh.run(args), 0) << name;
        EXPECT_EQ(fresh.streams.out(), out + "\n") << name;
        EXPECT_EQ(fresh.streams.err(), "") << name;
        EXPECT_EQ(fresh.pasteboard.changeCountReads, changeCountReads) << name;
        EXPECT_EQ(fresh.journal.all(), std::vector<fake::Happening>(changeCountReads - 1, fake::Pause{50000})) << name;
    }
}

TEST(ClipboardCommands, SetReplacesTheContentsWithPlainText) {
    fake::FakePlatform platform;
    platform.pasteboard.items = {{{html}, {{html, bytes("<i>")}}}, {{plainText}, {{plainText, bytes("old")}}}};
    EXPECT_EQ(platform.run({"set-clipboard", "w6k="}), 0);
    EXPECT_EQ(platform.pasteboard.items.size(), 1u);
    EXPECT_TRUE(platform.journal.all().empty());
}

TEST(ClipboardCommands, AccessIsAllowAskOrDefault) {
    for (const auto& [behavior, value] : std::vector<std::pair<std::int64_t, std::string>>{
             {2, "allow"}, {1, "ask"}, {0, "default"}, {3, "default"}, {-1, "default"}}) {
        fake::FakePlatform platform;
        platform.pasteboard.access = behavior;
        EXPECT_EQ(platform.run({"clipboard-access"}), 0);
        EXPECT_EQ(platform.streams.out(), "{\"access\":\"" + value + "\"}\n") << behavior;
    }
}

TEST(ClipboardText, JsonEscapesOnlyBackslashesAndQuotesAndBase64IsStrict) {
    EXPECT_EQ(jsonEscapeMinimal("a\\\"b\nbreak\t\x01\xC3\xA9/"), "a\\\\\\\"b\nbreak\t\x01\xC3\xA9/");
    for (const auto& [text, encoded] : std::vector<std::pair<std::string, std::string>>{
             {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xFF\xFE\xFD", "//79"}}) {
        EXPECT_EQ(base64Encode(bytes(text)), encoded);
        EXPECT_EQ(base64Decode(encoded), bytes(text)) << encoded;
    }
    // Leftover bits in the last character of a padded group are ignored.
    EXPECT_EQ(base64Decode("Zh=="), bytes("f"));
    EXPECT_EQ(base64Decode("Zm9="), bytes("fo"));
    for (const std::string& text : {std::string("Zg"), std::string("Zg="), std::string("===="), std::string("Zg==Zg=="),
                                    std::string("Zm9v\n"), std::string("Zm9v="), std::string("-_8="),
                                    std::string("Zm\0v", 4), std::string("Zm9v\xC3\xA9Zg")}) {
        EXPECT_FALSE(base64Decode(text)) << text;
    }
}

}  // namespace
}  // namespace brisko
