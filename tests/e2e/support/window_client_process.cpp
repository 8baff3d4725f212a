#include "support/window_client_process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <utility>
#include <unistd.h>

namespace brisko::testing {

const std::string& windowClientPath() {
    static const std::string path = BRISKO_WINDOW_CLIENT_PATH;
    return path;
}

const std::string& menubarClientPath() {
    static const std::string path = BRISKO_MENUBAR_CLIENT_PATH;
    return path;
}

WindowClientProcess::WindowClientProcess(const std::string& program, const std::string& display) {
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        ::setenv("DISPLAY", display.c_str(), 1);
        ::execl(program.c_str(), program.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    in_ = in[1];
    out_ = out[0];
    // Room for every event of a long run, so the client never waits for the test to read.
    ::fcntl(out_, F_SETPIPE_SZ, 1 << 20);
    // A client that has died must fail the test, not kill it.
    ::signal(SIGPIPE, SIG_IGN);
}

WindowClientProcess::~WindowClientProcess() {
    ::close(in_);  // the client exits at the end of its input
    ::close(out_);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
}

void WindowClientProcess::send(const std::string& line) {
    const std::string whole = line + "\n";
    if (::write(in_, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
        throw std::runtime_error("the window client is gone");
    }
}

std::string WindowClientProcess::nextLine(int timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const auto end = buffer_.find('\n');
        if (end != std::string::npos) {
            std::string line = buffer_.substr(0, end);
            buffer_.erase(0, end + 1);
            return line;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) throw std::runtime_error("the window client did not answer in time");
        pollfd fd{out_, POLLIN, 0};
        if (::poll(&fd, 1, static_cast<int>(left.count())) <= 0) continue;
        char chunk[4096];
        const ssize_t got = ::read(out_, chunk, sizeof chunk);
        if (got == 0) throw std::runtime_error("the window client ended");
        if (got > 0) buffer_.append(chunk, static_cast<std::size_t>(got));
    }
}

void WindowClientProcess::awaitAnswer(const std::string& answer, int timeoutMs) {
    for (;;) {
        std::string line = nextLine(timeoutMs);
        if (line.rfind(answer, 0) == 0) {
            lastAnswer_ = std::move(line);
            return;
        }
        if (line.rfind("error", 0) == 0) throw std::runtime_error("window client: " + line);
        events_.push_back(std::move(line));
    }
}

xcb_window_t WindowClientProcess::map(const std::string& name, const std::string& spec) {
    send("map " + name + " " + spec);
    awaitAnswer("mapped " + name + " ");
    return static_cast<xcb_window_t>(std::stoul(lastAnswer_.substr(lastAnswer_.rfind(' ') + 1)));
}

void WindowClientProcess::unmap(const std::string& name) {
    send("unmap " + name);
    awaitAnswer("unmapped " + name);
}

void WindowClientProcess::paint(const std::string& name, std::uint32_t color) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "%06x", color);
    send("paint " + name + " " + hex);
    awaitAnswer("painted " + name);
}

std::vector<std::string> WindowClientProcess::sync() {
    send("sync");
    awaitAnswer("synced");
    return std::exchange(events_, {});
}

std::vector<std::string> WindowClientProcess::eventsUntil(const std::function<bool(const std::string&)>& found,
                                                          int timeoutMs) {
    std::vector<std::string> seen = std::exchange(events_, {});
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (found(seen[i])) {
            events_.assign(seen.begin() + static_cast<std::ptrdiff_t>(i) + 1, seen.end());
            seen.resize(i + 1);
            return seen;
        }
    }
    for (;;) {
        seen.push_back(nextLine(timeoutMs));
        if (found(seen.back())) return seen;
    }
}

}  // namespace brisko::testing
