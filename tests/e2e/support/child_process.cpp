#include "e2e/support/child_process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace brisko::e2e {
namespace {

using Clock = std::chrono::steady_clock;

int remainingMs(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

ChildProcess::ChildProcess(const std::string& path, const std::vector<std::string>& args,
                           const std::map<std::string, std::string>& extraEnv) {
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    std::vector<std::string> argvStore{path};
    argvStore.insert(argvStore.end(), args.begin(), args.end());
    std::vector<std::string> envStore;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        if (!extraEnv.contains(entry.substr(0, entry.find('=')))) envStore.push_back(entry);
    }
    for (const auto& [name, value] : extraEnv) envStore.push_back(name + "=" + value);
    std::vector<char*> argv, envp;
    for (auto& a : argvStore) argv.push_back(a.data());
    argv.push_back(nullptr);
    for (auto& e : envStore) envp.push_back(e.data());
    envp.push_back(nullptr);

    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        ::dup2(in[0], STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::execve(path.c_str(), argv.data(), envp.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    input_ = in[1];
    output_ = out[0];
}

ChildProcess::~ChildProcess() {
    closeInput();
    if (!status_) {
        ::kill(pid_, SIGKILL);
        while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    ::close(output_);
}

void ChildProcess::write(const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = ::write(input_, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) throw std::runtime_error("writing to the child failed");
        done += static_cast<std::size_t>(n);
    }
}

void ChildProcess::closeInput() {
    if (input_ >= 0) ::close(input_);
    input_ = -1;
}

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        if (const auto end = buffered_.find('\n'); end != std::string::npos) {
            std::string line = buffered_.substr(0, end);
            buffered_.erase(0, end + 1);
            return line;
        }
        pollfd fd{output_, POLLIN, 0};
        const int ready = ::poll(&fd, 1, remainingMs(deadline));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return std::nullopt;
        char chunk[4096];
        const ssize_t n = ::read(output_, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return std::nullopt;
        buffered_.append(chunk, static_cast<std::size_t>(n));
    }
}

std::optional<std::vector<std::string>> ChildProcess::readUntil(const std::string& line,
                                                                std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    std::vector<std::string> before;
    for (;;) {
        auto next = readLine(std::chrono::milliseconds(remainingMs(deadline)));
        if (!next) return std::nullopt;
        if (*next == line) return before;
        before.push_back(std::move(*next));
    }
}

std::optional<int> ChildProcess::wait(std::chrono::milliseconds timeout) {
    if (status_) return status_;
    // A process descriptor becomes readable when the process ends.
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
    if (process < 0) throw std::runtime_error("pidfd_open failed");
    const auto deadline = Clock::now() + timeout;
    pollfd fd{process, POLLIN, 0};
    int ready;
    while ((ready = ::poll(&fd, 1, remainingMs(deadline))) < 0 && errno == EINTR) {
    }
    ::close(process);
    if (ready <= 0) return std::nullopt;
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_;
}

void ChildProcess::signal(int number) { ::kill(pid_, number); }

}  // namespace brisko::e2e
