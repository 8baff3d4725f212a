#pragma once

#include <xcb/xcb.h>

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

// Other X clients that use the clipboard, for the tests: xclip, and a small owner of our own
// written directly against the protocol (independent of the program's code).
namespace brisko::testing {

// The window that owns the clipboard now (XCB_WINDOW_NONE when nobody does).
xcb_window_t clipboardOwner(const std::string& display);

// Puts data on the clipboard with `xclip -i` as the target; returns once xclip owns it.
void xclipSet(const std::string& display, const std::string& target, const std::string& data);

// What `xclip -o` reads from the clipboard as the target.
std::string xclipGet(const std::string& display, const std::string& target);

// Asks the clipboard's owner for a target and returns the type its answer is labelled with,
// without taking any data ("INCR" when the owner starts an incremental transfer).
std::string answerType(const std::string& display, const std::string& target);

// A process that owns the clipboard with fixed contents until it is destroyed or another client
// takes the clipboard. It answers TARGETS with its targets, TIMESTAMP (when listed) with the
// 32-bit number given as its value, and each other target with its bytes; a silent owner
// answers nothing at all.
class TestClipboardOwner {
public:
    using Targets = std::vector<std::pair<std::string, std::string>>;
    TestClipboardOwner(const std::string& display, Targets targets, bool silent = false);
    ~TestClipboardOwner();
    TestClipboardOwner(const TestClipboardOwner&) = delete;
    TestClipboardOwner& operator=(const TestClipboardOwner&) = delete;

    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
};

// A client that only stays connected, as a desktop session's other clients do. Without one, the
// server resets (wiping root window properties and selections) whenever its last client leaves,
// which may be between two commands of the program.
class IdleClient {
public:
    explicit IdleClient(const std::string& display);
    ~IdleClient();
    IdleClient(const IdleClient&) = delete;
    IdleClient& operator=(const IdleClient&) = delete;

private:
    xcb_connection_t* connection_;
};

// The 4 bytes of a TIMESTAMP value.
std::string timestampValue(std::uint32_t time);

}  // namespace brisko::testing
