#include "support/x_servers.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace brisko::testing {
namespace {

// A display number without a server, starting at a place of this process's own so that test
// programs started together seldom try the same one (when they do, one server fails to start
// and tries the next).
int freeDisplayNumber(int from) {
    for (int n = from; n < 1000; ++n) {
        const std::string number = std::to_string(n);
        const std::string socket = "/tmp/.X11-unix/X" + number, lock = "/tmp/.X" + number + "-lock";
        if (!std::filesystem::exists(socket) && !std::filesystem::exists(lock)) return n;
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

bool XServer::start(const std::string& program, std::vector<std::string> args, std::chrono::milliseconds timeout) {
    args.insert(args.begin(), {"-nolisten", "tcp", "-noreset", "-displayfd", "1"});  // before what may undo them
    auto server = std::make_unique<Process>(program, args, Environment{}, Streams::outputOnly);
    const std::optional<std::string> number = server->readLine(timeout);
    if (!number || number->empty()) return false;
    server_ = std::move(server);
    name_ = ":" + *number;
    return true;
}

XServer::~XServer() {
    // Asked to end, the server removes its socket and lock file.
    if (!server_) return;
    server_->signal(SIGTERM);
    server_->wait();
}

XvfbDisplay::XvfbDisplay(int width, int height, const std::vector<std::string>& extraArgs)
    : width_(width), height_(height) {
    int number = 100 + static_cast<int>(::getpid() % 400);
    for (int attempt = 0; attempt < 5; ++attempt, ++number) {
        number = freeDisplayNumber(number);
        std::vector<std::string> args = {":" + std::to_string(number), "-screen", "0",
                                         std::to_string(width) + "x" + std::to_string(height) + "x24",
                                         "+extension", "XTEST", "+extension", "Composite", "+extension", "DAMAGE",
                                         "+extension", "RANDR"};
        args.insert(args.end(), extraArgs.begin(), extraArgs.end());
        if (start("Xvfb", args)) return;
    }
    throw std::runtime_error("Xvfb did not start");
}

DummyXorgDisplay::DummyXorgDisplay(const std::vector<std::string>& modes,
                                   std::optional<std::pair<int, int>> virtualSize)
    : config_((std::filesystem::temp_directory_path() / ("brisko-dummy-" + std::to_string(::getpid()) + ".conf")).string()) {
    std::string text =
        "Section \"ServerFlags\"\n Option \"AutoAddDevices\" \"false\"\n Option \"DontVTSwitch\" \"true\"\nEndSection\n"
        "Section \"Device\"\n Identifier \"d\"\n Driver \"dummy\"\n VideoRam 65536\nEndSection\n"
        "Section \"Monitor\"\n Identifier \"m\"\n HorizSync 5-1000\n VertRefresh 5-200\n"
        " Modeline \"1440x900\" 106.5 1440 1528 1672 1904 900 903 909 934\n"
        " Modeline \"1280x1024\" 108.0 1280 1328 1440 1688 1024 1025 1028 1066\n"
        " Modeline \"1024x768\" 63.5 1024 1072 1176 1328 768 771 775 798\nEndSection\n"
        "Section \"Screen\"\n Identifier \"s\"\n Device \"d\"\n Monitor \"m\"\n DefaultDepth 24\n"
        " SubSection \"Display\"\n Depth 24\n Modes";
    for (const std::string& mode : modes) text += " \"" + mode + "\"";
    if (virtualSize) text += "\n Virtual " + std::to_string(virtualSize->first) + " " + std::to_string(virtualSize->second);
    std::ofstream(config_) << text << "\n EndSubSection\nEndSection\n";
    if (!start("/usr/lib/xorg/Xorg", {"-config", config_, "-logfile", config_ + ".log", "-novtswitch", "-sharevts"}, 20s)) {
        throw std::runtime_error("Xorg with the dummy driver did not start; see " + config_ + ".log");
    }
}

DummyXorgDisplay::~DummyXorgDisplay() {
    std::filesystem::remove(config_);
    std::filesystem::remove(config_ + ".log");
}

ProgramResult DummyXorgDisplay::xrandr(const std::vector<std::string>& args) const {
    return runProgram("xrandr", args, "", {{"DISPLAY", name()}});
}

const XvfbDisplay& testDisplay() {
    static const SharedDisplay shared;
    return shared.display;
}

bool testDisplayManaged() { return std::getenv("BRISKO_TEST_WINDOW_MANAGER") != nullptr; }

}  // namespace brisko::testing
