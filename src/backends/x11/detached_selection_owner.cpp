#include "backends/x11/detached_selection_owner.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace brisko::platform::x11 {
namespace {

// How long the caller waits for the new owner to report that it holds the selection.
constexpr int ownershipWaitMs = 5000;

// The descriptor the owner process reports on; every other inherited descriptor is closed.
constexpr int reportFd = 3;

// Leaves the owner process nothing of its parent's: no terminal, no standard streams (whoever
// reads the parent's output sees its end when the parent exits), and no other descriptor (the
// parent's X connection must close when the parent exits).
void detachStreams(int reportOn) {
    const int report = ::fcntl(reportOn, F_DUPFD, 10);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (int fd = 0; fd < 3; ++fd) {
        if (nothing < 0 || ::dup2(nothing, fd) < 0) ::close(fd);
    }
    ::dup2(report, reportFd);
    ::close_range(reportFd + 1, ~0u, 0);
}

// The parent may block signals (to read them from a descriptor) or handle them with its own
// code; the owner ends on the usual signals and ignores a requestor that vanishes mid-transfer.
void resetSignals() {
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int s : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) std::signal(s, SIG_DFL);
    std::signal(SIGPIPE, SIG_IGN);
}

[[noreturn]] void ownAndServe(const std::string& displayName, std::string_view selectionName,
                              const std::vector<SelectionOffer>& offers,
                              const std::function<void(SelectionConnection&, xcb_timestamp_t)>& whenOwned) {
    const auto connection = SelectionConnection::open(displayName);
    if (!connection) ::_exit(1);
    const xcb_atom_t selection = connection->atom(selectionName);
    const auto since = takeSelection(*connection, selection);
    if (!since) ::_exit(1);
    whenOwned(*connection, *since);
    xcb_flush(connection->xcb());
    const char owned = 1;
    if (::write(reportFd, &owned, 1) != 1) ::_exit(1);
    ::close(reportFd);
    SelectionServer(*connection, selection, *since, offers).run();
    // _exit, not exit: the parent's process state (static objects, buffered streams) is not ours.
    ::_exit(0);
}

bool awaitOwnership(int fromOwner) {
    pollfd ready{fromOwner, POLLIN, 0};
    int polled = 0;
    while ((polled = ::poll(&ready, 1, ownershipWaitMs)) < 0 && errno == EINTR) {
    }
    if (polled <= 0) return false;
    char owned = 0;
    ssize_t got = 0;
    while ((got = ::read(fromOwner, &owned, 1)) < 0 && errno == EINTR) {
    }
    return got == 1 && owned == 1;
}

}  // namespace

bool serveFromDetachedProcess(const std::string& displayName, std::string_view selection,
                              const std::vector<SelectionOffer>& offers,
                              const std::function<void(SelectionConnection&, xcb_timestamp_t)>& whenOwned) {
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) return false;
    // Forked twice: the middle process starts a new session and exits at once, so the owner is
    // nobody's child to reap and no signal sent to the caller's process group reaches it.
    const pid_t middle = ::fork();
    if (middle == 0) {
        ::close(report[0]);
        ::setsid();
        if (::fork() != 0) ::_exit(0);
        detachStreams(report[1]);
        resetSignals();
        ownAndServe(displayName, selection, offers, whenOwned);
    }
    ::close(report[1]);
    bool owned = false;
    if (middle > 0) {
        int status = 0;
        while (::waitpid(middle, &status, 0) < 0 && errno == EINTR) {
        }
        owned = awaitOwnership(report[0]);
    }
    ::close(report[0]);
    return owned;
}

}  // namespace brisko::platform::x11
