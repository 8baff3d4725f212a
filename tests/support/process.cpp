#include "support/process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/prctl.h>
#include <sys/syscall.h>
#else
#include <sys/event.h>
#endif

extern char** environ;

namespace brisko::testing {
namespace {

void closeFd(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

int msUntil(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

// pipe2 is Linux's; elsewhere the descriptors are marked close-on-exec right after (no test starts
// programs from two threads at once).
void makePipe(int fds[2]) {
    if (::pipe(fds) != 0) throw std::runtime_error("pipe failed");
    for (int i = 0; i < 2; ++i) ::fcntl(fds[i], F_SETFD, FD_CLOEXEC);
}

std::vector<char*> pointers(std::vector<std::string>& strings) {
    std::vector<char*> out;
    for (std::string& s : strings) out.push_back(s.data());
    out.push_back(nullptr);
    return out;
}

}  // namespace

std::optional<int> awaitExit(pid_t pid, std::chrono::milliseconds timeout) {
    const int timeoutMs = static_cast<int>(timeout.count());
#if defined(__linux__)
    // A process descriptor becomes readable when the process ends.
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (process < 0) throw std::runtime_error("pidfd_open failed");
    pollfd fd{process, POLLIN, 0};
    int ready;
    while ((ready = ::poll(&fd, 1, timeoutMs)) < 0 && errno == EINTR) {
    }
    ::close(process);
    const bool ended = ready > 0;
#else
    const int queue = ::kqueue();
    struct kevent change;
    EV_SET(&change, pid, EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
    const timespec wait{timeoutMs / 1000, (timeoutMs % 1000) * 1000000L};
    struct kevent event;
    const int got = ::kevent(queue, &change, 1, &event, 1, &wait);
    ::close(queue);
    const bool ended = got > 0 || (got < 0 && errno == ESRCH);  // ESRCH: it had ended already
#endif
    int status = 0;
    if (!ended || ::waitpid(pid, &status, 0) != pid) return std::nullopt;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Process::Process(const std::string& program, const std::vector<std::string>& args, const Environment& env,
                 Streams streams) {
    // Everything the child needs is made before the fork: after it, only system calls, and
    // execvp, which looks the program up on PATH without allocating.
    std::vector<std::string> argvStore{program};
    argvStore.insert(argvStore.end(), args.begin(), args.end());
    std::vector<std::string> envStore;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        if (!env.contains(entry.substr(0, entry.find('=')))) envStore.push_back(entry);
    }
    for (const auto& [name, value] : env) envStore.push_back(name + "=" + value);
    std::vector<char*> argv = pointers(argvStore), envp = pointers(envStore);

    // Which of standard input, output and error are pipes; the others are /dev/null, or the
    // test's own standard error.
    const bool pipedStream[3] = {streams == Streams::piped || streams == Streams::pipedOwnErr,
                                 streams != Streams::detached, streams == Streams::piped};
    int pipes[3][2] = {{-1, -1}, {-1, -1}, {-1, -1}};
    for (int i = 0; i < 3; ++i) {
        if (pipedStream[i]) makePipe(pipes[i]);
    }
    const int devnull = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    // A program that has gone must fail the test's writes, not end the test.
    std::signal(SIGPIPE, SIG_IGN);
    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
#if defined(__linux__)
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
#endif
        ::signal(SIGPIPE, SIG_DFL);  // as a program started by a shell or the host has it
        for (int fd = 0; fd < 3; ++fd) {
            if (pipedStream[fd]) ::dup2(pipes[fd][fd == 0 ? 0 : 1], fd);
            else if (fd < 2 || streams != Streams::pipedOwnErr) ::dup2(devnull, fd);
        }
        environ = envp.data();
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(devnull);
    for (int i = 0; i < 3; ++i) {
        if (pipedStream[i]) ::close(pipes[i][i == 0 ? 0 : 1]);
    }
    in_ = pipes[0][1];
    if (in_ >= 0) ::fcntl(in_, F_SETFL, O_NONBLOCK);
    out_ = pipes[1][0];
    err_ = pipes[2][0];
}

Process::~Process() {
    closeFd(in_);
    closeFd(out_);
    closeFd(err_);
    if (!status_) {
        ::kill(pid_, SIGKILL);
        while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

bool Process::collect(Clock::time_point deadline) {
    if (out_ < 0 && err_ < 0) return false;
    pollfd fds[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    const int ready = ::poll(fds, 2, msUntil(deadline));
    if (ready <= 0) return true;
    char buffer[65536];
    for (int i = 0; i < 2; ++i) {
        if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
        const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
        if (n > 0) {
            (i == 0 ? output_ : errors_).append(buffer, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            closeFd(i == 0 ? out_ : err_);
        }
    }
    return true;
}

bool Process::write(std::string_view text) {
    while (!text.empty()) {
        if (in_ < 0) return false;
        pollfd fds[3] = {{in_, POLLOUT, 0}, {out_, POLLIN, 0}, {err_, POLLIN, 0}};
        if (::poll(fds, 3, -1) < 0) continue;
        if (fds[1].revents | fds[2].revents) collect(Clock::now());
        if (!(fds[0].revents & (POLLOUT | POLLERR | POLLHUP))) continue;
        const ssize_t n = ::write(in_, text.data(), text.size());
        if (n < 0 && (errno == EAGAIN || errno == EINTR)) continue;
        if (n < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

void Process::closeInput() { closeFd(in_); }

void Process::closeOutput() { closeFd(out_); }

std::optional<std::string> Process::readLine(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        if (const auto end = output_.find('\n', lineStart_); end != std::string::npos) {
            std::string line = output_.substr(lineStart_, end - lineStart_);
            lineStart_ = end + 1;
            return line;
        }
        if (out_ < 0 || msUntil(deadline) == 0 || !collect(deadline)) return std::nullopt;
    }
}

bool Process::waitForOutput(std::string_view text, std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    while (output_.find(text) == std::string::npos) {
        if (out_ < 0 || msUntil(deadline) == 0 || !collect(deadline)) return false;
    }
    return true;
}

void Process::signal(int number) { ::kill(pid_, number); }

std::optional<int> Process::wait(std::chrono::milliseconds timeout) {
    if (!status_) status_ = awaitExit(pid_, timeout);
    return status_;
}

ProgramResult Process::finish(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    while (msUntil(deadline) > 0 && collect(deadline)) {
    }
    if (out_ >= 0 || err_ >= 0) signal(SIGKILL);
    const auto status = wait(timeout);
    return {status.value_or(-1), output_, errors_};
}

ProgramResult runProgram(const std::string& program, const std::vector<std::string>& args, std::string_view stdinText,
                         const Environment& env) {
    Process process(program, args, env);
    process.write(stdinText);
    process.closeInput();
    return process.finish(std::chrono::minutes(1));
}

const std::string& programPath() {
    static const std::string path = BRISKO_PROGRAM_PATH;
    return path;
}

ProgramResult runBrisko(const std::vector<std::string>& args, std::string_view stdinText, const Environment& env) {
    return runProgram(programPath(), args, stdinText, env);
}

}  // namespace brisko::testing
