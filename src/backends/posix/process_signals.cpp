#include "backends/posix/posix_services.h"

#include <csignal>
#include <unistd.h>

namespace brisko::platform {
namespace {

// Async-signal-safe: _exit flushes nothing and runs no destructors.
void exitZero(int) { ::_exit(0); }

class SystemSignals final : public ProcessSignals {
public:
    void ignoreBrokenPipe() override { std::signal(SIGPIPE, SIG_IGN); }
    void exitZeroOnTerminate() override {
        struct sigaction action {};
        action.sa_handler = exitZero;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGTERM, &action, nullptr);
    }
};

}  // namespace

ProcessSignals& systemSignals() {
    static SystemSignals signals;
    return signals;
}

}  // namespace brisko::platform
