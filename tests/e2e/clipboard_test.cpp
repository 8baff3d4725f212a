// The clipboard commands of the built program on a real X server, with xclip and the window client
// as the other clients. The processes the program leaves behind to serve the clipboard are
// adopted by the test, so that it can see them end.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sys/prctl.h>
#include <unistd.h>

#include "clipboard/base64.h"
#include "support/window_client_process.h"
#include "support/x_servers.h"

namespace brisko::testing {
namespace {

namespace fs = std::filesystem;

std::string base64(const std::string& text) { return base64Encode(platform::Bytes(text.begin(), text.end())); }

// The processes of the program that serve the clipboard: children of this process once adopted.
std::vector<pid_t> servingProcesses() {
    std::vector<pid_t> found;
    const ProgramResult children = runProgram("pgrep", {"-P", std::to_string(::getpid()), "-r", "R,S,D,T"});
    for (const std::string& pid : words(children.out)) {
        std::error_code error;
        if (fs::read_symlink("/proc/" + pid + "/exe", error) == programPath()) found.push_back(std::stoi(pid));
    }
    return found;
}

// A get-clipboard line split into its change count and the rest of the line after it.
struct ClipboardLine {
    std::int64_t changeCount = -1;
    std::string rest;
};

std::string found(const std::string& types, const std::string& type, const std::string& data) {
    return "\"types\":[" + types + "],\"items\":[{\"type\":\"" + type + "\",\"base64\":\"" + base64(data) + "\"}]}";
}

const std::string plainTextTypes = R"("STRING","TEXT","public.utf8-plain-text")";

class Clipboard : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }

    // Another client takes the clipboard, which must end every process the program left serving it.
    void TearDown() override {
        peer.ask("own-clipboard UTF8_STRING=end", "owning");
        peer.ask("disown", "disowned");
        for (const pid_t pid : servingProcesses()) EXPECT_EQ(awaitExit(pid), 0) << "serving process " << pid;
    }

    ClipboardLine get(const std::vector<std::string>& types, const Environment& env = {}) {
        std::vector<std::string> args{"get-clipboard"};
        args.insert(args.end(), types.begin(), types.end());
        const ProgramResult r = runBrisko(args, "", env);
        EXPECT_EQ(r.status, 0) << r.err;
        const std::string head = "{\"changeCount\":";
        const std::size_t comma = r.out.find(',');
        if (!r.out.starts_with(head) || comma == std::string::npos || !r.out.ends_with("\n")) return {-1, r.out};
        return {std::stoll(r.out.substr(head.size(), comma - head.size())), r.out.substr(comma + 1, r.out.size() - comma - 2)};
    }
    // The change count once something changed: larger than the last one, and the same when read again.
    void expectChangeCounted(const std::string& what) {
        const std::int64_t now = get({"public.utf8-plain-text"}).changeCount;
        EXPECT_GT(now, lastCount) << what;
        EXPECT_EQ(get({"public.html"}).changeCount, now) << what << ", read again";
        lastCount = now;
    }
    // Puts data on the clipboard with xclip; returns once xclip owns it.
    void xclipSet(const std::string& target, const std::string& data) {
        const std::string before = peer.ask("clipboard-owner", "owner");
        const fs::path file = fs::temp_directory_path() / ("brisko-xclip-" + std::to_string(::getpid()));
        std::ofstream(file, std::ios::binary) << data;
        // xclip stays behind to serve the clipboard, holding on to the streams it was given.
        Process xclip("xclip", {"-selection", "clipboard", "-t", target, "-i", file.string()}, {}, Streams::detached);
        EXPECT_EQ(xclip.wait(), 0);
        peer.ask("await-clipboard-owner " + words(before)[1], "owner");
        fs::remove(file);
    }
    std::string xclipGet(const std::string& target) {
        return runProgram("xclip", {"-selection", "clipboard", "-t", target, "-o"}).out;
    }

    const XvfbDisplay& display = testDisplay();
    WindowClientProcess peer;
    std::int64_t lastCount = 0;
};

TEST_F(Clipboard, TextSetByTheProgramIsServedUnderEveryTextTargetUntilReplacedOrCleared) {
    // The text set, and what a STRING request gets.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"hi", "hi"},
        {"hi", "hi"},  // the same text set again is a change too
        {"gr\xC3\xBC\xC3\x9F" "e \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x8E\x89\n\t!", "gr\xFC\xDF" "e ?? ?\n\t!"},
        {"", ""},
    };
    for (const auto& [text, latin1] : cases) {
        const auto previous = servingProcesses();
        // Its output streams close when it exits (else this waits), although the text is still served.
        expectOutput({"set-clipboard", base64(text)});
        for (const pid_t pid : previous) EXPECT_EQ(awaitExit(pid), 0) << "the one before ends when replaced";
        EXPECT_EQ(servingProcesses().size(), 1u);
        for (const std::string target : {"UTF8_STRING", "text/plain;charset=utf-8", "TEXT"}) {
            EXPECT_EQ(xclipGet(target), text) << target;
        }
        EXPECT_EQ(xclipGet("STRING"), latin1);
        EXPECT_EQ(get({"public.utf8-plain-text"}).rest, found(plainTextTypes, "public.utf8-plain-text", text));
        expectChangeCounted("set-clipboard " + text);
    }
    const auto servers = servingProcesses();
    expectOutput({"clear-clipboard"});
    EXPECT_EQ(awaitExit(servers.at(0)), 0);
    EXPECT_EQ(get({"public.utf8-plain-text"}).rest, R"("types":["org.nspasteboard.TransientType"],"items":[]})");
    expectChangeCounted("clear-clipboard");
}

TEST_F(Clipboard, LargeTextIsServedIncrementallyAndOutlivesTheInputStreamThatSetIt) {
    std::string text;
    while (text.size() < (2 << 20)) text += "stream \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\n";
    expectOutput({"input-stream"}, "brisko-mac-input input-stream v2\n", {}, "set-clipboard " + base64(text) + "\n");
    const auto servers = servingProcesses();
    ASSERT_EQ(servers.size(), 1u);
    std::string arguments;
    std::getline(std::ifstream("/proc/" + std::to_string(servers[0]) + "/cmdline"), arguments);
    EXPECT_EQ(arguments.find("input-stream"), std::string::npos)
        << "a copy of the stream's process, forked from its threads";
    EXPECT_EQ(peer.ask("ask-clipboard UTF8_STRING", "answer"), "answer INCR");
    EXPECT_TRUE(xclipGet("UTF8_STRING") == text) << "xclip read the text differently";
    EXPECT_TRUE(get({"public.utf8-plain-text"}).rest == found(plainTextTypes, "public.utf8-plain-text", text));
}

TEST_F(Clipboard, ContentsOfOtherOwnersAreFoundUnderTheirTypesAndEachNewOwnerIsAChange) {
    lastCount = get({"public.utf8-plain-text"}).changeCount;
    std::string png = "\x89PNG\r\n\x1a\n";  // then every byte value, the zero byte too
    for (int i = 0; i < 3000; ++i) png += static_cast<char>(i * 7);
    // The target xclip offers, its data, and the type it is found under.
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"image/png", png + std::string(4, '\0'), "public.png"},
        {"text/rtf", "{\\rtf1\\ansi hi}", "public.rtf"},
        {"application/x-custom", "custom", "application/x-custom"},
    };
    for (const auto& [target, data, type] : cases) {
        xclipSet(target, data);  // xclip tells no TIMESTAMP
        EXPECT_TRUE(get({type}).rest == found("\"" + type + "\"", type, data)) << target;
        expectChangeCounted("xclip " + target);
    }
    // Protocol targets are not types; a type offered under two targets is listed once.
    peer.ask("own-clipboard TIMESTAMP=5 MULTIPLE= SAVE_TARGETS= UTF8_STRING=utf8 STRING=latin "
             "text/plain;charset=utf-8=mime text/html=<i>x</i> image/png=png application/x-foo=foo "
             "x-kde-passwordManagerHint=public",
             "owning");
    expectChangeCounted("an owner with an old TIMESTAMP");
    const std::string types = R"("STRING","application/x-foo","public.html","public.png",)"
                              R"("public.utf8-plain-text","x-kde-passwordManagerHint")";
    EXPECT_EQ(get({"public.rtf", "public.png", "public.html"}).rest, found(types, "public.png", "png"));
    EXPECT_EQ(get({"public.utf8-plain-text"}).rest, found(types, "public.utf8-plain-text", "utf8"));
    EXPECT_EQ(get({"STRING"}).rest, found(types, "STRING", "latin"));
    peer.ask("own-clipboard UTF8_STRING=hunter2 x-kde-passwordManagerHint=secret", "owning");
    EXPECT_EQ(get({"public.utf8-plain-text"}).rest,
              R"("concealed":true,"types":["org.nspasteboard.ConcealedType","public.utf8-plain-text"],"items":[]})");
    peer.ask("disown", "disowned");
    expectChangeCounted("the owner went away");
    // Owners that never answer, or answer only which targets they offer, cost the read well
    // under a second.
    const std::pair<std::string, std::string> unanswering[] = {
        {"silent UTF8_STRING=never", R"("types":[],"items":[]})"},
        {"targets-only TIMESTAMP=1 text/html=a image/png=b UTF8_STRING=c text/plain;charset=utf-8=c STRING=d",
         R"("types":["STRING","public.html","public.png","public.utf8-plain-text"],"items":[]})"},
    };
    for (const auto& [owner, rest] : unanswering) {
        peer.ask("own-clipboard " + owner, "owning");
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(get({"public.rtf", "public.utf8-plain-text", "public.png"}).rest, rest) << owner;
        EXPECT_LT(std::chrono::steady_clock::now() - start, 1s) << owner;
    }
}

TEST_F(Clipboard, TheCountGoesOnAcrossAServerResetAndTheServingProcessEndsWithTheDisplay) {
    auto server = std::make_unique<XvfbDisplay>(640, 480, std::vector<std::string>{"-reset"});
    const Environment on = {{"DISPLAY", server->name()}};
    expectOutput({"set-clipboard", base64("before")}, "", on);
    const std::int64_t before = get({"public.utf8-plain-text"}, on).changeCount;
    WindowClientProcess(windowClientPath(), server->name()).ask("own-clipboard UTF8_STRING=x", "owning");
    // The last client has left, so the server resets, which wipes the root window's properties.
    // A client that connects while it does is turned away; one that came before it puts the reset
    // off until it leaves. Once one stays, the server is as the reset left it.
    std::optional<WindowClientProcess> keeper;
    for (bool reset = false; !reset;) {
        keeper.reset();
        try {
            keeper.emplace(windowClientPath(), server->name()).ask("sync", "synced");
        } catch (const std::runtime_error&) {
            continue;
        }
        const ProgramResult property = runProgram("xprop", {"-root", "_BRISKO_CLIPBOARD_CHANGE_COUNT"}, "", on);
        reset = property.status == 0 && property.out.find("(INTEGER)") == std::string::npos;
    }
    EXPECT_GT(get({"public.utf8-plain-text"}, on).changeCount, before);
    expectOutput({"set-clipboard", base64("after")}, "", on);
    const auto servers = servingProcesses();
    ASSERT_EQ(servers.size(), 1u);
    keeper.reset();
    server.reset();
    EXPECT_EQ(awaitExit(servers[0]), 0);
}

}  // namespace
}  // namespace brisko::testing
