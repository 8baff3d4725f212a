#include "support/dummy_xorg_display.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace brisko::testing {
namespace {

std::string configText(const std::vector<std::string>& modes, const std::optional<std::pair<int, int>>& virtualSize) {
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
    return text + "\n EndSubSection\nEndSection\n";
}

}  // namespace

DummyXorgDisplay::DummyXorgDisplay(const std::vector<std::string>& modes,
                                   std::optional<std::pair<int, int>> virtualSize)
    : config_((std::filesystem::temp_directory_path() / ("brisko-dummy-" + std::to_string(::getpid()) + ".conf")).string()) {
    std::ofstream(config_) << configText(modes, virtualSize);
    // Xorg writes its display number on standard output (-displayfd 1) once it accepts connections.
    server_ = std::make_unique<Process>(
        "/usr/lib/xorg/Xorg",
        std::vector<std::string>{"-config", config_, "-logfile", config_ + ".log", "-nolisten", "tcp", "-noreset",
                                 "-displayfd", "1", "-novtswitch", "-sharevts"},
        Environment{}, Streams::outputOnly);
    const std::optional<std::string> number = server_->readLine(20s);
    if (!number) throw std::runtime_error("Xorg with the dummy driver did not start; see " + config_ + ".log");
    name_ = ":" + *number;
}

DummyXorgDisplay::~DummyXorgDisplay() {
    server_->signal(SIGTERM);
    server_->wait();
    std::filesystem::remove(config_);
    std::filesystem::remove(config_ + ".log");
}

ProgramResult DummyXorgDisplay::xrandr(const std::vector<std::string>& args) const {
    return runProgram("xrandr", args, "", {{"DISPLAY", name_}});
}

}  // namespace brisko::testing
