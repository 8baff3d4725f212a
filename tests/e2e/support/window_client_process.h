#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include <xcb/xcb.h>

namespace brisko::testing {

// The built test client programs: the same client under two names.
const std::string& windowClientPath();
const std::string& menubarClientPath();  // named like the host's menu-bar process

// A running test client (see window_client.cpp) on a display: maps windows on request and
// records the button and key events they receive.
class WindowClientProcess {
public:
    WindowClientProcess(const std::string& program, const std::string& display);
    ~WindowClientProcess();
    WindowClientProcess(const WindowClientProcess&) = delete;
    WindowClientProcess& operator=(const WindowClientProcess&) = delete;

    pid_t pid() const { return pid_; }

    // Maps a window ("X Y W H [options]") and returns its id once the server has mapped it.
    xcb_window_t map(const std::string& name, const std::string& spec);
    void unmap(const std::string& name);
    // Repaints the window in another colour (0xRRGGBB); returns once the server has done it.
    void paint(const std::string& name, std::uint32_t color);
    // Every event line reported so far, after a round trip through the server.
    std::vector<std::string> sync();
    // Reads event lines until one satisfies the predicate; returns all of them, that one last.
    // Throws when none comes within the timeout.
    std::vector<std::string> eventsUntil(const std::function<bool(const std::string&)>& found,
                                         int timeoutMs = 5000);

private:
    void send(const std::string& line);
    std::string nextLine(int timeoutMs);
    // Reads lines until the answer; other lines are events and are kept.
    void awaitAnswer(const std::string& answer, int timeoutMs = 5000);

    pid_t pid_ = -1;
    int in_ = -1;
    int out_ = -1;
    std::string buffer_;
    std::vector<std::string> events_;
    std::string lastAnswer_;
};

}  // namespace brisko::testing
