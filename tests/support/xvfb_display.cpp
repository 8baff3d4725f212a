#include "support/xvfb_display.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace brisko::testing {
namespace {

bool exists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

// A display number without a server, starting at a place of this process's own so that test
// programs started together seldom try the same one (when they do, one server fails to start
// and tries the next).
int freeDisplayNumber(int from) {
    for (int n = from; n < 1000; ++n) {
        if (!exists("/tmp/.X11-unix/X" + std::to_string(n)) && !exists("/tmp/.X" + std::to_string(n) + "-lock")) {
            return n;
        }
    }
    throw std::runtime_error("no free X display number");
}

struct SharedDisplay {
    SharedDisplay() {
        ::setenv("DISPLAY", display.name().c_str(), 1);
        if (const char* manager = std::getenv("BRISKO_TEST_WINDOW_MANAGER")) {
            // The manager runs the start-up command once it manages the display.
            windowManager = std::make_unique<Process>(
                manager, std::vector<std::string>{"--sm-disable", "--startup", "echo managing"}, Environment{},
                Streams::outputOnly);
            if (!windowManager->waitForOutput("managing\n")) throw std::runtime_error("the window manager did not start");
        }
    }

    XvfbDisplay display;
    std::unique_ptr<Process> windowManager;  // ends before the display
};

}  // namespace

XvfbDisplay::XvfbDisplay(int width, int height, const std::vector<std::string>& extraArgs)
    : width_(width), height_(height) {
    int number = 100 + static_cast<int>(::getpid() % 400);
    for (int attempt = 0; attempt < 5; ++attempt, ++number) {
        number = freeDisplayNumber(number);
        // Xvfb writes its display number on standard output (-displayfd 1) once it accepts
        // connections.
        std::vector<std::string> args = {":" + std::to_string(number), "-screen", "0",
                                         std::to_string(width) + "x" + std::to_string(height) + "x24",
                                         "-nolisten", "tcp", "-noreset", "-displayfd", "1",
                                         "+extension", "XTEST", "+extension", "Composite", "+extension", "DAMAGE",
                                         "+extension", "RANDR"};
        args.insert(args.end(), extraArgs.begin(), extraArgs.end());
        auto server = std::make_unique<Process>("Xvfb", args, Environment{}, Streams::outputOnly);
        if (server->readLine() == std::to_string(number)) {
            server_ = std::move(server);
            name_ = ":" + std::to_string(number);
            return;
        }
    }
    throw std::runtime_error("Xvfb did not start");
}

XvfbDisplay::~XvfbDisplay() {
    // Asked to end, the server removes its socket and lock file.
    server_->signal(SIGTERM);
    server_->wait();
}

const XvfbDisplay& testDisplay() {
    static const SharedDisplay shared;
    return shared.display;
}

bool testDisplayManaged() { return std::getenv("BRISKO_TEST_WINDOW_MANAGER") != nullptr; }

}  // namespace brisko::testing
