#include "support/running_program.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace brisko::testing {
namespace {

// pipe2 is Linux's; macOS has only pipe. No test starts programs from two threads at once, so
// nothing can be spawned between the two calls.
void makePipe(int fds[2]) {
    if (::pipe(fds) != 0) throw std::runtime_error("pipe failed");
    for (int i = 0; i < 2; ++i) ::fcntl(fds[i], F_SETFD, FD_CLOEXEC);
}

void closeFd(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

using Clock = std::chrono::steady_clock;

int msLeft(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

RunningProgram::RunningProgram(const std::string& path, const std::vector<std::string>& args) {
    int in[2], out[2], err[2];
    makePipe(in);
    makePipe(out);
    makePipe(err);
    std::vector<std::string> argvStore{path};
    argvStore.insert(argvStore.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : argvStore) argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        ::dup2(err[1], 2);
        ::execv(path.c_str(), argv.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    ::close(err[1]);
    in_ = in[1];
    out_ = out[0];
    err_ = err[0];
    // Writing to a program that has gone must not end the test.
    std::signal(SIGPIPE, SIG_IGN);
}

RunningProgram::~RunningProgram() {
    closeFd(in_);
    closeFd(out_);
    closeFd(err_);
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
}

void RunningProgram::write(const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t n = ::write(in_, text.data() + written, text.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) throw std::runtime_error("write to the program failed");
        written += static_cast<std::size_t>(n);
    }
}

void RunningProgram::closeInput() { closeFd(in_); }

void RunningProgram::closeOutput() { closeFd(out_); }

void RunningProgram::signal(int number) { ::kill(pid_, number); }

bool RunningProgram::collect(int timeoutMs) {
    pollfd fds[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    if (out_ < 0 && err_ < 0) return false;
    const int ready = ::poll(fds, 2, timeoutMs);
    if (ready <= 0) return true;
    char buffer[65536];
    for (int i = 0; i < 2; ++i) {
        if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
        const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
        if (n > 0) {
            (i == 0 ? result_.out : result_.err).append(buffer, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            closeFd(i == 0 ? out_ : err_);
        }
    }
    return true;
}

bool RunningProgram::waitForOut(const std::string& text, int timeoutMs) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (result_.out.find(text) == std::string::npos) {
        if (msLeft(deadline) == 0 || !collect(msLeft(deadline))) return false;
    }
    return true;
}

ProgramResult RunningProgram::finish(int timeoutMs) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (msLeft(deadline) > 0 && collect(msLeft(deadline))) {
    }
    if (out_ >= 0 || err_ >= 0) ::kill(pid_, SIGKILL);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    result_.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result_;
}

}  // namespace brisko::testing
