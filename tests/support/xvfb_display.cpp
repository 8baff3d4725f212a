#include "support/xvfb_display.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace brisko::testing {
namespace {

bool exists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

// Claims a display number by creating its lock file name first, as X servers do, so that two
// test programs starting at once do not pick the same number.
int freeDisplayNumber() {
    for (int n = 100 + static_cast<int>(::getpid() % 400); n < 1000; ++n) {
        if (exists("/tmp/.X11-unix/X" + std::to_string(n)) || exists("/tmp/.X" + std::to_string(n) + "-lock")) {
            continue;
        }
        return n;
    }
    throw std::runtime_error("no free X display number");
}

}  // namespace

XvfbDisplay::XvfbDisplay(int width, int height) : width_(width), height_(height) {
    // Xvfb writes its display number to the pipe (-displayfd) once it accepts connections.
    for (int attempt = 0; attempt < 5; ++attempt) {
        const int n = freeDisplayNumber() + attempt;
        int ready[2];
        if (::pipe(ready) != 0) throw std::runtime_error("pipe failed");
        const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
        const pid_t pid = ::fork();
        if (pid < 0) throw std::runtime_error("fork failed");
        if (pid == 0) {
            // A test program that crashes must not leave its server behind.
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            ::close(ready[0]);
            const int devnull = ::open("/dev/null", O_RDWR);
            ::dup2(devnull, 0);
            ::dup2(devnull, 1);
            ::dup2(devnull, 2);
            const std::string display = ":" + std::to_string(n);
            const std::string fd = std::to_string(ready[1]);
            ::execlp("Xvfb", "Xvfb", display.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp",
                     "-displayfd", fd.c_str(), "+extension", "XTEST", "+extension", "Composite",
                     "+extension", "DAMAGE", "+extension", "RANDR", static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(ready[1]);
        std::string answer;
        char buffer[32];
        ssize_t got = 0;
        while ((got = ::read(ready[0], buffer, sizeof buffer)) != 0) {
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) break;
            answer.append(buffer, static_cast<std::size_t>(got));
            if (answer.find('\n') != std::string::npos) break;
        }
        ::close(ready[0]);
        if (!answer.empty() && answer.find('\n') != std::string::npos) {
            pid_ = pid;
            name_ = ":" + answer.substr(0, answer.find('\n'));
            return;
        }
        ::kill(pid, SIGTERM);
        ::waitpid(pid, nullptr, 0);
    }
    throw std::runtime_error("Xvfb did not start");
}

XvfbDisplay::~XvfbDisplay() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace brisko::testing
