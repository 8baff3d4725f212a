#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <random>

#include "clipboard_peers.h"
#include "backends/x11/x11_pasteboard.h"
#include "process_adoption.h"
#include "support/xvfb_display.h"

namespace brisko {
namespace {

using platform::Bytes;
using platform::x11::X11Pasteboard;
using Types = std::vector<std::vector<std::string>>;
using namespace std::chrono_literals;
using namespace testing;

const std::string transientType = "org.nspasteboard.TransientType";
const std::string concealedType = "org.nspasteboard.ConcealedType";

Bytes bytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

// Equality of data, with a short account of the difference instead of megabytes of bytes.
::testing::AssertionResult sameData(const std::optional<Bytes>& got, const std::string& expected) {
    if (!got) return ::testing::AssertionFailure() << "no data, expected " << expected.size() << " bytes";
    const Bytes want = bytes(expected);
    const auto differ = std::mismatch(got->begin(), got->end(), want.begin(), want.end());
    if (differ.first == got->end() && differ.second == want.end()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << got->size() << " bytes, expected " << expected.size()
                                         << "; they differ from byte " << (differ.first - got->begin());
}

std::string randomBytes(std::size_t size, unsigned seed) {
    std::mt19937 generator(seed);
    std::string out(size, '\0');
    for (char& c : out) c = static_cast<char>(generator() & 0xff);
    return out;
}

// Text of at least `size` bytes mixing one- to four-byte UTF-8 characters.
std::string largeText(std::size_t size) {
    const std::string pattern = "plain ASCII, gr\xC3\xBC\xC3\x9F" "e, \xE6\x97\xA5\xE6\x9C\xAC, \xF0\x9F\x8E\x89\n";
    std::string text;
    while (text.size() < size) text += pattern;
    return text;
}

// Each test has a display of its own, adopts the processes that detach themselves (the
// backend's clipboard owners, xclip) and checks that none of them outlives the display.
class X11PasteboardTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { adoptOrphans(); }

    void TearDown() override {
        pasteboard.reset();
        display.reset();
        EXPECT_EQ(reapChildren(5s), std::vector<pid_t>{}) << "processes left running after the display closed";
    }

    const std::string& name() const { return display->name(); }
    // The backend's clipboard owners: forks of this test program.
    std::vector<pid_t> backendOwners() const { return runningChildren(std::filesystem::read_symlink("/proc/self/exe")); }

    std::unique_ptr<XvfbDisplay> display = std::make_unique<XvfbDisplay>();
    std::unique_ptr<X11Pasteboard> pasteboard = std::make_unique<X11Pasteboard>(display->name());
};

TEST_F(X11PasteboardTest, TextSetHereIsReadByXclip) {
    struct Case {
        std::string text;
        std::string latin1;  // what a STRING request gets
    };
    const std::vector<Case> cases = {
        {"hello", "hello"},
        {"gr\xC3\xBC\xC3\x9F" "e \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8E\x89", "gr\xFC\xDF" "e ?? ?"},
        {"two\nlines\twith tab", "two\nlines\twith tab"},
        {"", ""},
    };
    for (const Case& c : cases) {
        pasteboard->setPlainText(c.text);
        EXPECT_EQ(xclipGet(name(), "UTF8_STRING"), c.text);
        EXPECT_EQ(xclipGet(name(), "text/plain;charset=utf-8"), c.text);
        EXPECT_EQ(xclipGet(name(), "TEXT"), c.text);
        EXPECT_EQ(xclipGet(name(), "STRING"), c.latin1);
        EXPECT_EQ(pasteboard->itemTypes(), (Types{{"public.utf8-plain-text", "STRING", "TEXT"}}));
    }
}

TEST_F(X11PasteboardTest, LargeTextIsServedIncrementallyAndArrivesWhole) {
    const std::string text = largeText(2 << 20);
    pasteboard->setPlainText(text);
    EXPECT_EQ(answerType(name(), "UTF8_STRING"), "INCR");
    EXPECT_TRUE(xclipGet(name(), "UTF8_STRING") == text) << "xclip read the text differently";
    EXPECT_TRUE(sameData(pasteboard->data(0, "public.utf8-plain-text"), text));
}

TEST_F(X11PasteboardTest, ContentsSetByXclipAreReadUnderTheirTypes) {
    struct Case {
        std::string target;
        std::string data;
        std::string type;
    };
    const std::vector<Case> cases = {
        {"text/html", "<p>caf\xC3\xA9 <b>bold</b></p>", "public.html"},
        {"image/png", "\x89PNG\r\n\x1a\n" + randomBytes(3000, 1) + std::string(4, '\0'), "public.png"},
        {"text/rtf", "{\\rtf1\\ansi hi}", "public.rtf"},
        {"UTF8_STRING", "from xclip", "public.utf8-plain-text"},
        {"application/x-custom", "custom", "application/x-custom"},
        // Large enough that xclip sends it incrementally.
        {"image/png", randomBytes(5 << 20, 2), "public.png"},
    };
    for (const Case& c : cases) {
        xclipSet(name(), c.target, c.data);
        EXPECT_EQ(pasteboard->itemTypes(), (Types{{c.type}})) << c.target;
        EXPECT_TRUE(sameData(pasteboard->data(0, c.type), c.data)) << c.target;
        EXPECT_EQ(pasteboard->data(1, c.type), std::nullopt) << "one item only";
        EXPECT_EQ(pasteboard->data(0, "public.rtf" + c.type), std::nullopt) << "a type the owner does not offer";
    }
}

TEST_F(X11PasteboardTest, TargetsAreReportedUnderTypeNamesWithoutProtocolTargets) {
    const TestClipboardOwner owner(name(), {
        {"TIMESTAMP", timestampValue(5)},
        {"MULTIPLE", ""},
        {"SAVE_TARGETS", ""},
        {"UTF8_STRING", "utf8"},
        {"STRING", "latin"},
        {"text/plain;charset=utf-8", "mime"},
        {"text/html", "<i>x</i>"},
        {"image/png", "png"},
        {"text/rtf", "rtf"},
        {"application/x-foo", "foo"},
        {"x-kde-passwordManagerHint", "public"},
    });
    EXPECT_EQ(pasteboard->itemTypes(), (Types{{"public.utf8-plain-text", "STRING", "public.html", "public.png",
                                               "public.rtf", "application/x-foo", "x-kde-passwordManagerHint"}}));
    EXPECT_EQ(pasteboard->data(0, "public.utf8-plain-text"), bytes("utf8")) << "the owner's first target of the type";
    EXPECT_EQ(pasteboard->data(0, "STRING"), bytes("latin"));
    EXPECT_EQ(pasteboard->data(0, "public.html"), bytes("<i>x</i>"));
}

TEST_F(X11PasteboardTest, ThePasswordManagersSecretHintConcealsTheContents) {
    const TestClipboardOwner owner(name(), {{"UTF8_STRING", "hunter2"}, {"x-kde-passwordManagerHint", "secret"}});
    EXPECT_EQ(pasteboard->itemTypes(), (Types{{"public.utf8-plain-text", concealedType}}));
}

TEST_F(X11PasteboardTest, ConcealedContentsSetHereCarryTheSecretHint) {
    pasteboard->clearContents();
    pasteboard->setData(concealedType, {});
    pasteboard->setPlainText("hunter2");
    EXPECT_EQ(xclipGet(name(), "x-kde-passwordManagerHint"), "secret");
    EXPECT_EQ(pasteboard->itemTypes(), (Types{{concealedType, "public.utf8-plain-text", "STRING", "TEXT"}}));
}

TEST_F(X11PasteboardTest, ClearingLeavesNoOwnerAndTheTransientMarkerIsServed) {
    EXPECT_EQ(pasteboard->itemTypes(), Types{}) << "a fresh display";
    pasteboard->setPlainText("before");
    pasteboard->clearContents();
    EXPECT_EQ(clipboardOwner(name()), XCB_WINDOW_NONE);
    EXPECT_EQ(pasteboard->itemTypes(), Types{});
    EXPECT_EQ(pasteboard->data(0, "public.utf8-plain-text"), std::nullopt);
    pasteboard->setData(transientType, {});
    EXPECT_EQ(pasteboard->itemTypes(), (Types{{transientType}}));
    EXPECT_EQ(pasteboard->data(0, transientType), Bytes{}) << "present, and empty";
}

TEST_F(X11PasteboardTest, ChangeCountGrowsWithEveryChangeAndHoldsBetweenThem) {
    std::vector<std::int64_t> counts{pasteboard->changeCount()};
    const auto changed = [&](const std::string& what) {
        const std::int64_t count = pasteboard->changeCount();
        EXPECT_GT(count, counts.back()) << what;
        EXPECT_EQ(pasteboard->changeCount(), count) << what << ", read again";
        // Another process (another connection) reads the same count.
        EXPECT_EQ(X11Pasteboard(name()).changeCount(), count) << what << ", read elsewhere";
        counts.push_back(count);
    };
    pasteboard->setPlainText("one");
    changed("set here");
    pasteboard->setPlainText("two");
    changed("set here again");
    xclipSet(name(), "UTF8_STRING", "three");
    changed("xclip, which tells no TIMESTAMP");
    xclipSet(name(), "UTF8_STRING", "four");
    changed("xclip again");
    {
        // An owner that stamps its ownership with an old time.
        const TestClipboardOwner stale(name(), {{"TIMESTAMP", timestampValue(1)}, {"UTF8_STRING", "five"}});
        changed("an owner with an old TIMESTAMP");
    }
    changed("the owner went away");
    pasteboard->setPlainText("six");
    pasteboard->clearContents();
    changed("cleared");
    pasteboard->setData(transientType, {});
    changed("transient marker set");
}

TEST_F(X11PasteboardTest, TheServingProcessEndsWhenAnotherClientTakesTheClipboard) {
    pasteboard->setPlainText("first");
    const auto first = backendOwners();
    ASSERT_EQ(first.size(), 1u);
    pasteboard->setPlainText("second");
    EXPECT_EQ(awaitExit(first[0], 5s), 0) << "replaced by the next owner of ours";
    const auto second = backendOwners();
    ASSERT_EQ(second.size(), 1u);
    xclipSet(name(), "UTF8_STRING", "third");
    EXPECT_EQ(awaitExit(second[0], 5s), 0) << "taken by xclip";
    EXPECT_EQ(backendOwners(), std::vector<pid_t>{});
}

TEST_F(X11PasteboardTest, AnOwnerThatNeverAnswersGivesNothingInBoundedTime) {
    const TestClipboardOwner silent(name(), {{"UTF8_STRING", "never sent"}}, true);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pasteboard->itemTypes(), Types{});
    EXPECT_EQ(pasteboard->data(0, "public.utf8-plain-text"), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
}

TEST(X11PasteboardWithoutDisplay, AnswersAsAnEmptyClipboard) {
    X11Pasteboard pasteboard(":59999");
    pasteboard.setPlainText("goes nowhere");
    EXPECT_EQ(pasteboard.changeCount(), 0);
    EXPECT_EQ(pasteboard.itemTypes(), Types{});
    EXPECT_EQ(pasteboard.data(0, "public.utf8-plain-text"), std::nullopt);
    EXPECT_EQ(pasteboard.accessBehavior(), 2);
}

}  // namespace
}  // namespace brisko
