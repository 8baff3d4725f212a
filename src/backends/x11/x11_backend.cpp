#include "backends/backend.h"
#include "backends/posix/posix_services.h"
#include "backends/posix/steady_clock.h"
#include "backends/x11/clipboard_owner_process.h"
#include "backends/x11/x11_connection.h"
#include "backends/x11/x11_event_poster.h"
#include "backends/x11/x11_pasteboard.h"
#include "backends/x11/x11_screen_capture.h"
#include "backends/x11/x11_system_probe.h"
#include "backends/x11/x11_window_server.h"

namespace brisko::platform {
namespace {

class X11Backend final : public Backend {
public:
    Services& services() override { return services_; }

private:
    x11::X11Connection connection_;
    x11::X11EventPoster events_{connection_};
    x11::X11WindowServer windows_{connection_};
    x11::X11ScreenCapture capture_{connection_, windows_};
    x11::X11Pasteboard pasteboard_;
    x11::X11SystemProbe probe_{connection_};
    SteadyClock clock_;
    Services services_{events_, windows_, capture_, pasteboard_, probe_, clock_, systemStreams(), systemSignals(),
                       systemSessionLoop()};
};

}  // namespace

std::unique_ptr<Backend> makeBackend() { return std::make_unique<X11Backend>(); }

void runBackendProcessIfStartedAsOne(int argc, char** argv) { x11::serveClipboardIfStartedAsOwner(argc, argv); }

}  // namespace brisko::platform
