#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <random>

#include "clipboard/base64.h"
#include "clipboard_peers.h"
#include "process_adoption.h"
#include "support/run_program.h"
#include "support/xvfb_display.h"

namespace brisko {
namespace {

using namespace std::chrono_literals;
using namespace testing;

std::string base64(const std::string& text) { return base64Encode(platform::Bytes(text.begin(), text.end())); }

std::string randomBytes(std::size_t size, unsigned seed) {
    std::mt19937 generator(seed);
    std::string out(size, '\0');
    for (char& c : out) c = static_cast<char>(generator() & 0xff);
    return out;
}

// A get-clipboard line split into its change count and the rest of the line after it.
struct ClipboardLine {
    std::int64_t changeCount = -1;
    std::string rest;
};

ClipboardLine split(const std::string& line) {
    const std::string head = "{\"changeCount\":";
    const std::size_t digits = line.find_first_not_of("0123456789", head.size());
    if (line.rfind(head, 0) != 0 || digits == head.size() || digits == std::string::npos || line[digits] != ',' ||
        line.back() != '\n') {
        return {-1, line};
    }
    return {std::stoll(line.substr(head.size(), digits - head.size())), line.substr(digits + 1, line.size() - digits - 2)};
}

std::string foundRest(const std::string& types, const std::string& type, const std::string& data) {
    return "\"types\":[" + types + "],\"items\":[{\"type\":\"" + type + "\",\"base64\":\"" + base64(data) + "\"}]}";
}

// The program on a display of its own, with xclip, a test owner and an idle client as the other
// clients. The test adopts the processes that detach themselves and checks that none outlives the display.
class ClipboardCommandsTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { adoptOrphans(); }

    void TearDown() override {
        session.reset();
        display.reset();
        EXPECT_EQ(reapChildren(5s), std::vector<pid_t>{}) << "processes left running after the display closed";
    }

    const std::string& name() const { return display->name(); }

    ProgramResult run(const std::vector<std::string>& args, const std::string& input = "") const {
        return runProgram(programPath(), args, input, {{"DISPLAY", name()}});
    }

    // A command that succeeds silently.
    void runQuietly(const std::vector<std::string>& args) const {
        const ProgramResult r = run(args);
        EXPECT_EQ(r.status, 0) << args[0] << ": " << r.err;
        EXPECT_EQ(r.out, "") << args[0];
        EXPECT_EQ(r.err, "") << args[0];
    }

    ClipboardLine getClipboard(const std::vector<std::string>& types) const {
        std::vector<std::string> args{"get-clipboard"};
        args.insert(args.end(), types.begin(), types.end());
        const ProgramResult r = run(args);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_EQ(r.err, "");
        return split(r.out);
    }

    std::unique_ptr<XvfbDisplay> display = std::make_unique<XvfbDisplay>();
    std::unique_ptr<IdleClient> session = std::make_unique<IdleClient>(display->name());
};

TEST_F(ClipboardCommandsTest, TextSetByTheProgramIsThereForXclipAsSoonAsTheCommandReturns) {
    std::string large;
    while (large.size() < 90'000) large += "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 line\n";
    const std::vector<std::string> texts = {
        "hi",
        "gr\xC3\xBC\xC3\x9F" "e \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8E\x89",
        "",
        large,  // as long as one argument may be
    };
    for (const std::string& text : texts) {
        runQuietly({"set-clipboard", base64(text)});
        EXPECT_TRUE(xclipGet(name(), "UTF8_STRING") == text) << text.substr(0, 40);
        EXPECT_EQ(getClipboard({"public.utf8-plain-text"}).rest,
                  foundRest(R"("STRING","TEXT","public.utf8-plain-text")", "public.utf8-plain-text", text));
    }
}

TEST_F(ClipboardCommandsTest, LargeTextSetInTheInputStreamOutlivesTheStream) {
    std::string text;
    while (text.size() < (2 << 20)) text += "stream \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\n";
    const ProgramResult r = run({"input-stream"}, "set-clipboard " + base64(text) + "\n");
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(xclipGet(name(), "UTF8_STRING") == text) << "xclip read the text differently";
    EXPECT_TRUE(getClipboard({"public.utf8-plain-text"}).rest ==
                foundRest(R"("STRING","TEXT","public.utf8-plain-text")", "public.utf8-plain-text", text));
}

TEST_F(ClipboardCommandsTest, ContentsSetByXclipAreFoundWithTheirBase64) {
    struct Case {
        std::string target;
        std::string data;
        std::string type;
    };
    const std::vector<Case> cases = {
        {"text/html", "<p>caf\xC3\xA9 <b>bold</b></p>", "public.html"},
        {"image/png", "\x89PNG\r\n\x1a\n" + randomBytes(3000, 1), "public.png"},
        {"image/png", randomBytes(5 << 20, 2), "public.png"},
    };
    for (const Case& c : cases) {
        xclipSet(name(), c.target, c.data);
        EXPECT_TRUE(getClipboard({c.type}).rest == foundRest("\"" + c.type + "\"", c.type, c.data)) << c.target;
    }
    xclipSet(name(), "text/html", "<i>x</i>");
    EXPECT_EQ(getClipboard({"public.html"}).rest,
              R"("types":["public.html"],"items":[{"type":"public.html","base64":"PGk+eDwvaT4="}]})");
}

TEST_F(ClipboardCommandsTest, TypesAreSortedAndTheFirstRequestedTypeOnTheClipboardIsReturned) {
    const TestClipboardOwner owner(name(), {{"UTF8_STRING", "plain"},
                                            {"text/html", "<b>x</b>"},
                                            {"image/png", "PNG"},
                                            {"application/x-foo", "foo"}});
    const std::string types = R"("application/x-foo","public.html","public.png","public.utf8-plain-text")";
    EXPECT_EQ(getClipboard({"public.rtf", "public.png", "public.html"}).rest, foundRest(types, "public.png", "PNG"));
    EXPECT_EQ(getClipboard({"public.utf8-plain-text"}).rest, foundRest(types, "public.utf8-plain-text", "plain"));
    EXPECT_EQ(getClipboard({"public.rtf"}).rest, "\"types\":[" + types + "],\"items\":[]}");
}

TEST_F(ClipboardCommandsTest, APasswordManagersSecretGivesTheConcealedForm) {
    const TestClipboardOwner owner(name(), {{"UTF8_STRING", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}});
    EXPECT_EQ(getClipboard({"public.utf8-plain-text"}).rest,
              R"("concealed":true,"types":["org.nspasteboard.ConcealedType","public.utf8-plain-text"],"items":[]})");
}

TEST_F(ClipboardCommandsTest, AnEmptyClipboardGivesTheEmptyForm) {
    const ClipboardLine first = getClipboard({"public.utf8-plain-text"});
    EXPECT_EQ(first.rest, R"("types":[],"items":[]})");
    EXPECT_EQ(getClipboard({"public.html"}).changeCount, first.changeCount) << "nothing changed";
}

TEST_F(ClipboardCommandsTest, ClearingLeavesOnlyTheTransientMarkerAndEndsTheServingProcess) {
    runQuietly({"set-clipboard", base64("to be cleared")});
    const auto servers = runningChildren(programPath());
    ASSERT_EQ(servers.size(), 1u);
    runQuietly({"clear-clipboard"});
    EXPECT_EQ(awaitExit(servers[0], 5s), 0);
    EXPECT_EQ(getClipboard({"public.utf8-plain-text"}).rest, R"("types":["org.nspasteboard.TransientType"],"items":[]})");
}

TEST_F(ClipboardCommandsTest, ChangeCountGrowsWithEveryChange) {
    std::int64_t last = getClipboard({"public.utf8-plain-text"}).changeCount;
    ASSERT_GE(last, 0);
    const auto expectGrown = [&](const std::string& what) {
        const std::int64_t now = getClipboard({"public.utf8-plain-text"}).changeCount;
        EXPECT_GT(now, last) << what;
        EXPECT_EQ(getClipboard({"public.utf8-plain-text"}).changeCount, now) << what << ", read again";
        last = now;
    };
    runQuietly({"set-clipboard", base64("one")});
    expectGrown("set-clipboard");
    runQuietly({"set-clipboard", base64("one")});
    expectGrown("the same text set again");
    xclipSet(name(), "UTF8_STRING", "two");
    expectGrown("xclip");
    {
        const TestClipboardOwner owner(name(), {{"TIMESTAMP", timestampValue(1)}, {"UTF8_STRING", "three"}});
        expectGrown("an owner with an old TIMESTAMP");
    }
    expectGrown("the owner went away");
    runQuietly({"clear-clipboard"});
    expectGrown("clear-clipboard");
    {
        const TestClipboardOwner owner(name(), {{"UTF8_STRING", "four"}});
        expectGrown("another owner");
        session.reset();
    }
    // With no client left the server resets; the count goes on from the server's clock.
    EXPECT_GT(getClipboard({"public.utf8-plain-text"}).changeCount, last) << "the server reset";
}

TEST_F(ClipboardCommandsTest, TheServingProcessOutlivesTheCommandUntilAnotherClientTakesTheClipboard) {
    const auto start = std::chrono::steady_clock::now();
    runQuietly({"set-clipboard", base64("kept")});
    // The command's output streams closed when it exited, although the text is still served.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    const auto servers = runningChildren(programPath());
    ASSERT_EQ(servers.size(), 1u);
    EXPECT_EQ(xclipGet(name(), "UTF8_STRING"), "kept");
    xclipSet(name(), "UTF8_STRING", "taken");
    EXPECT_EQ(awaitExit(servers[0], 5s), 0);
    EXPECT_EQ(runningChildren(programPath()), std::vector<pid_t>{});
}

TEST_F(ClipboardCommandsTest, EveryClientMayReadTheClipboard) {
    const ProgramResult r = run({"clipboard-access"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "{\"access\":\"allow\"}\n");
}

}  // namespace
}  // namespace brisko
