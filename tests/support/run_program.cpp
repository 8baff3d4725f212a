#include "support/run_program.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace brisko::testing {
namespace {

// pipe2 is Linux's; macOS has only pipe. No test starts programs from two threads at once, so
// nothing can be spawned between the two calls.
void makePipe(int fds[2]) {
    if (::pipe(fds) != 0) throw std::runtime_error("pipe failed");
    for (int i = 0; i < 2; ++i) ::fcntl(fds[i], F_SETFD, FD_CLOEXEC);
}

}  // namespace

const std::string& programPath() {
    static const std::string path = BRISKO_PROGRAM_PATH;
    return path;
}

ProgramResult runProgram(const std::string& path, const std::vector<std::string>& args,
                         const std::string& stdinText, const std::map<std::string, std::string>& extraEnv) {
    int in[2], out[2], err[2];
    makePipe(in);
    makePipe(out);
    makePipe(err);
    std::vector<std::string> argvStore{path};
    argvStore.insert(argvStore.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : argvStore) argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> envStore;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        const std::string name = entry.substr(0, entry.find('='));
        if (!extraEnv.contains(name)) envStore.push_back(entry);
    }
    for (const auto& [k, v] : extraEnv) envStore.push_back(k + "=" + v);
    std::vector<char*> envp;
    for (auto& e : envStore) envp.push_back(e.data());
    envp.push_back(nullptr);

    const pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        ::dup2(err[1], 2);
        ::execve(path.c_str(), argv.data(), envp.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    ::close(err[1]);

    ProgramResult result;
    std::size_t written = 0;
    int inFd = in[1];
    if (stdinText.empty()) {
        ::close(inFd);
        inFd = -1;
    } else {
        ::fcntl(inFd, F_SETFL, O_NONBLOCK);
    }
    // Writing to a child that has exited must not kill the test.
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction previous {};
    ::sigaction(SIGPIPE, &ignore, &previous);
    bool outOpen = true, errOpen = true;
    while (outOpen || errOpen) {
        pollfd fds[3] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}, {inFd, POLLOUT, 0}};
        const int count = inFd >= 0 ? 3 : 2;
        if (::poll(fds, count, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        char buffer[65536];
        for (int i = 0; i < 2; ++i) {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
            if (n > 0) {
                (i == 0 ? result.out : result.err).append(buffer, static_cast<std::size_t>(n));
            } else if (n == 0 || errno != EINTR) {
                (i == 0 ? outOpen : errOpen) = false;
            }
        }
        if (inFd >= 0 && (fds[2].revents & (POLLOUT | POLLERR | POLLHUP))) {
            const ssize_t n = ::write(inFd, stdinText.data() + written, stdinText.size() - written);
            if (n > 0) written += static_cast<std::size_t>(n);
            if (n < 0 && errno != EAGAIN && errno != EINTR) written = stdinText.size();
            if (written == stdinText.size()) {
                ::close(inFd);
                inFd = -1;
            }
        }
    }
    if (inFd >= 0) ::close(inFd);
    ::close(out[0]);
    ::close(err[0]);
    ::sigaction(SIGPIPE, &previous, nullptr);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

}  // namespace brisko::testing
