#include "process_adoption.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace brisko::testing {
namespace {

struct ProcessStat {
    char state = '?';
    pid_t parent = 0;
};

std::optional<ProcessStat> stat(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    if (!std::getline(in, text)) return std::nullopt;
    // The command name, in parentheses, may hold spaces: the fields start after the last ')'.
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    ProcessStat s;
    fields >> s.state >> s.parent;
    return s;
}

}  // namespace

void adoptOrphans() { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }

std::vector<pid_t> runningChildren(const std::string& exe) {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        const auto pid = static_cast<pid_t>(std::stol(name));
        const auto s = stat(pid);
        if (!s || s->parent != ::getpid() || s->state == 'Z') continue;
        std::error_code error;
        const auto path = std::filesystem::read_symlink(entry.path() / "exe", error);
        if (!exe.empty() && (error || path != std::filesystem::path(exe))) continue;
        children.push_back(pid);
    }
    return children;
}

std::optional<int> awaitExit(pid_t child, std::chrono::milliseconds timeout) {
    const auto giveUp = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        int status = 0;
        const pid_t done = ::waitpid(child, &status, WNOHANG);
        if (done == child) return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        if (done < 0 || std::chrono::steady_clock::now() > giveUp) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

std::vector<pid_t> reapChildren(std::chrono::milliseconds timeout) {
    std::vector<pid_t> killed;
    for (const pid_t child : runningChildren()) {
        if (awaitExit(child, timeout)) continue;
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        killed.push_back(child);
    }
    // Children that exited before they were looked at.
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    return killed;
}

}  // namespace brisko::testing
