#include "e2e/support/xvfb_server.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace brisko::e2e {
namespace {

constexpr int startTimeoutMs = 20000;

void reap(pid_t pid) {
    while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

XvfbServer::XvfbServer(const std::vector<std::string>& extraArgs) {
    // With -displayfd the server picks the first free display number itself and writes it to the
    // descriptor once it accepts connections: no guessing, no race with other servers starting.
    int ready[2];
    if (::pipe2(ready, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    std::vector<std::string> args = {"Xvfb",   "-displayfd", "3", "-screen", "0", std::to_string(width) + "x" +
                                     std::to_string(height) + "x24", "-nolisten", "tcp"};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);

    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        ::dup2(ready[1], 3);  // dup2 clears close-on-exec on the copy
        const int quiet = ::open("/dev/null", O_WRONLY);
        ::dup2(quiet, STDOUT_FILENO);
        ::dup2(quiet, STDERR_FILENO);
        ::execvp("Xvfb", argv.data());
        ::_exit(127);
    }
    ::close(ready[1]);
    std::string number;
    pollfd fd{ready[0], POLLIN, 0};
    for (;;) {
        const int n = ::poll(&fd, 1, startTimeoutMs);
        if (n < 0 && errno == EINTR) continue;
        char c = 0;
        if (n <= 0 || ::read(ready[0], &c, 1) != 1) break;
        if (c == '\n') break;
        number.push_back(c);
    }
    ::close(ready[0]);
    if (number.empty()) {
        ::kill(pid_, SIGKILL);
        reap(pid_);
        throw std::runtime_error("Xvfb did not start");
    }
    display_ = ":" + number;
}

XvfbServer::~XvfbServer() {
    ::kill(pid_, SIGTERM);
    reap(pid_);
}

}  // namespace brisko::e2e
