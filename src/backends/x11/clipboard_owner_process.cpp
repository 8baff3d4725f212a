#include "backends/x11/clipboard_owner_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <optional>
#include <string_view>

#include "backends/x11/clipboard_change_count.h"

extern char** environ;

namespace brisko::platform::x11 {
namespace {

// The owner mode is chosen by this word as the only argument, and only when standard input is a
// socket that begins with the handover's header. The word is in no usage text, and the socket
// and the header come only from serveClipboardFromOwnerProcess, so a person who types the word,
// at a terminal or with input piped in, gets the usual "unknown command".
constexpr std::string_view ownerModeWord = "serve-clipboard-handed-over";
constexpr std::string_view handoverHeader = "brisko-mac-input clipboard handover 1\n";

// How long the caller waits for the new owner to report that it holds the selection.
constexpr int ownershipWaitMs = 5000;

// After the header: the display's name, the number of offers and each offer's target, reply
// type and data. A count or a length is 64 bits in this machine's byte order (both ends are this
// program), followed by as many bytes.
struct Handover {
    std::string displayName;
    std::vector<SelectionOffer> offers;
};

bool sendAll(int fd, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t sent = ::send(fd, bytes, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

template <typename Bytes>
bool sendField(int fd, const Bytes& bytes) {
    const std::uint64_t size = bytes.size();
    return sendAll(fd, &size, sizeof size) && sendAll(fd, bytes.data(), bytes.size());
}

bool sendHandover(int fd, const std::string& displayName, const std::vector<SelectionOffer>& offers) {
    const std::uint64_t count = offers.size();
    bool sent = sendAll(fd, handoverHeader.data(), handoverHeader.size()) && sendField(fd, displayName) &&
                sendAll(fd, &count, sizeof count);
    for (const SelectionOffer& offer : offers) {
        sent = sent && sendField(fd, offer.target) && sendField(fd, offer.replyType) && sendField(fd, offer.data);
    }
    return sent;
}

bool readAll(int fd, void* data, std::size_t size) {
    auto* bytes = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t got = ::read(fd, bytes, size);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

template <typename Bytes>
bool readField(int fd, Bytes& bytes) {
    std::uint64_t size = 0;
    if (!readAll(fd, &size, sizeof size) || size > bytes.max_size()) return false;
    bytes.resize(size);
    return readAll(fd, bytes.data(), bytes.size());
}

std::optional<Handover> receiveHandover(int fd) {
    std::string header(handoverHeader.size(), '\0');
    if (!readAll(fd, header.data(), header.size()) || header != handoverHeader) return std::nullopt;
    Handover handover;
    std::uint64_t count = 0;
    if (!readField(fd, handover.displayName) || !readAll(fd, &count, sizeof count)) return std::nullopt;
    for (std::uint64_t i = 0; i < count; ++i) {
        SelectionOffer offer;
        if (!readField(fd, offer.target) || !readField(fd, offer.replyType) || !readField(fd, offer.data)) {
            return std::nullopt;
        }
        handover.offers.push_back(std::move(offer));
    }
    return handover;
}

// The program itself in the owner mode, in a session of its own (no signal sent to the caller's
// process group reaches it), with the socket as its standard input and nothing else of the
// caller's: the signals the caller blocks or ignores are the usual ones again.
pid_t spawnOwner(int socket) {
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_adddup2(&streams, socket, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&streams, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&streams, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, usual;
    sigemptyset(&none);
    sigemptyset(&usual);
    for (const int s : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) sigaddset(&usual, s);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::string program = "brisko-mac-input", word(ownerModeWord);
    char* const argv[] = {program.data(), word.data(), nullptr};
    pid_t pid = -1;
    if (::posix_spawn(&pid, "/proc/self/exe", &streams, &attributes, argv, environ) != 0) pid = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&streams);
    return pid;
}

bool awaitOwnership(int fromOwner) {
    pollfd ready{fromOwner, POLLIN, 0};
    int polled = 0;
    while ((polled = ::poll(&ready, 1, ownershipWaitMs)) < 0 && errno == EINTR) {
    }
    if (polled <= 0) return false;
    char owned = 0;
    return readAll(fromOwner, &owned, 1) && owned == 1;
}

[[noreturn]] void ownAndServe(const Handover& handover, int reportOn) {
    const auto connection = SelectionConnection::open(handover.displayName);
    if (!connection) ::_exit(1);
    const xcb_atom_t selection = connection->atom("CLIPBOARD");
    const auto since = takeSelection(*connection, selection);
    if (!since) ::_exit(1);
    clipboardChangeCount(*connection, ClipboardOwner{connection->window(), *since});
    xcb_flush(connection->xcb());
    const char owned = 1;
    if (!sendAll(reportOn, &owned, 1)) ::_exit(1);
    ::close(reportOn);
    SelectionServer(*connection, selection, *since, handover.offers).run();
    ::_exit(0);
}

}  // namespace

bool serveClipboardFromOwnerProcess(const std::string& displayName, const std::vector<SelectionOffer>& offers) {
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) return false;
    const pid_t started = spawnOwner(sockets[1]);
    ::close(sockets[1]);
    bool owned = false;
    if (started > 0) {
        const bool sent = sendHandover(sockets[0], displayName, offers);
        // The started process hands the serving on to a child of its own and exits.
        int status = 0;
        while (::waitpid(started, &status, 0) < 0 && errno == EINTR) {
        }
        owned = sent && awaitOwnership(sockets[0]);
    }
    ::close(sockets[0]);
    return owned;
}

void serveClipboardIfStartedAsOwner(int argc, char** argv) {
    if (argc != 2 || argv[1] != ownerModeWord) return;
    struct stat input {};
    if (::fstat(STDIN_FILENO, &input) != 0 || !S_ISSOCK(input.st_mode)) return;
    const std::optional<Handover> handover = receiveHandover(STDIN_FILENO);
    if (!handover) return;
    ::close_range(STDERR_FILENO + 1, ~0u, 0);
    // A requestor that vanishes mid-transfer must not end the owner.
    std::signal(SIGPIPE, SIG_IGN);
    // Forked once more, now that this process has one thread and has not touched the display: the
    // started process exits at once, so the owner is nobody's child to reap.
    const pid_t owner = ::fork();
    if (owner != 0) ::_exit(owner > 0 ? 0 : 1);
    const int report = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int nothing = ::open("/dev/null", O_RDONLY);
    if (report < 0 || nothing < 0 || ::dup2(nothing, STDIN_FILENO) < 0) ::_exit(1);
    ::close(nothing);
    ownAndServe(*handover, report);
}

}  // namespace brisko::platform::x11
