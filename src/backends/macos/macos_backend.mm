#include "backends/backend.h"
#include "backends/macos/macos_services.h"
#include "backends/posix/posix_services.h"
#include "backends/posix/steady_clock.h"

namespace brisko::platform {
namespace {

// The system frameworks behind the seam, and the posix process plumbing that macOS shares.
class MacBackend final : public Backend {
public:
    Services& services() override { return services_; }

private:
    std::unique_ptr<EventPoster> events_ = macos::makeEventPoster();
    std::unique_ptr<WindowServer> windows_ = macos::makeWindowServer();
    std::unique_ptr<ScreenCapture> capture_ = macos::makeScreenCapture();
    std::unique_ptr<Pasteboard> pasteboard_ = macos::makePasteboard();
    std::unique_ptr<SystemProbe> probe_ = macos::makeSystemProbe();
    SteadyClock clock_;
    Services services_{*events_,        *windows_,       *capture_,      *pasteboard_,        *probe_,
                       clock_,          systemStreams(), systemSignals(), systemSessionLoop()};
};

}  // namespace

std::unique_ptr<Backend> makeBackend() { return std::make_unique<MacBackend>(); }

// The pasteboard outlives its writers on macOS: nothing is left to a process of the program's own.
void runBackendProcessIfStartedAsOne(int, char**) {}

}  // namespace brisko::platform
