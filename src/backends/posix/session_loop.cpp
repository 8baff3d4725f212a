#include "backends/posix/posix_services.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace brisko::platform {
namespace {

// The signal handler can reach only what lives outside any object: the write end of the wake
// pipe and the flag it raises.
int wakeWriteEnd = -1;
volatile std::sig_atomic_t terminateSeen = 0;

void wakeUp() {
    const char byte = 1;
    // A full pipe already holds a wake; nothing is lost by a failed write.
    [[maybe_unused]] const ssize_t n = ::write(wakeWriteEnd, &byte, 1);
}

void onTerminate(int) {
    const int saved = errno;
    terminateSeen = 1;
    wakeUp();
    errno = saved;
}

// A self-pipe: a signal handler or another thread writes a byte, poll sees the read end.
class PosixSessionLoop final : public SessionLoop {
public:
    void open() override {
        int fds[2];
        if (::pipe(fds) != 0) return;  // pipe2 is Linux's; macOS has only pipe
        for (const int fd : fds) {
            ::fcntl(fd, F_SETFD, FD_CLOEXEC);
            ::fcntl(fd, F_SETFL, O_NONBLOCK);
        }
        wakeReadEnd_ = fds[0];
        wakeWriteEnd = fds[1];
        struct sigaction action {};
        action.sa_handler = onTerminate;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        ::sigaction(SIGTERM, &action, nullptr);
    }

    Wake wait(double timeoutMs) override {
        using Clock = std::chrono::steady_clock;
        const bool unlimited = std::isinf(timeoutMs) && timeoutMs > 0;
        const auto deadline = Clock::now() + std::chrono::microseconds(static_cast<long long>(
                                                 unlimited ? 0.0 : std::max(0.0, timeoutMs) * 1000.0));
        for (;;) {
            if (terminateSeen) return Wake::terminateRequested;
            if (posted_.exchange(false)) return Wake::posted;
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            pollfd fds[2] = {{wakeReadEnd_, POLLIN, 0}, {inputOpen_ ? STDIN_FILENO : -1, POLLIN, 0}};
            const int ready = ::poll(fds, 2, unlimited ? -1 : static_cast<int>(std::max<long long>(0, left)));
            if (ready < 0 && errno != EINTR) return Wake::inputEnded;
            if (ready == 0) return Wake::timedOut;
            if (ready < 0) continue;
            if (fds[0].revents != 0) drainWakes();
            if (fds[1].revents != 0 && !discardInput()) return Wake::inputEnded;
        }
    }

    void post() override {
        posted_ = true;
        wakeUp();
    }

private:
    void drainWakes() {
        char bytes[64];
        while (::read(wakeReadEnd_, bytes, sizeof bytes) > 0) {
        }
    }

    // Reads what standard input holds and throws it away; false at its end (or when it is no
    // longer readable at all).
    bool discardInput() {
        char bytes[65536];
        const ssize_t n = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (n > 0 || (n < 0 && (errno == EINTR || errno == EAGAIN))) return true;
        inputOpen_ = false;
        return false;
    }

    int wakeReadEnd_ = -1;
    bool inputOpen_ = true;
    std::atomic<bool> posted_{false};
};

}  // namespace

SessionLoop& systemSessionLoop() {
    static PosixSessionLoop loop;
    return loop;
}

}  // namespace brisko::platform
