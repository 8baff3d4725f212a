#include "platform/services.h"
#include "platform/steady_clock.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_event_poster.h"
#include "platform/x11/x11_pasteboard.h"
#include "platform/x11/x11_system_probe.h"

namespace brisko::platform {
namespace {

// Until the X services exist the backend answers as a system with nothing to offer.
class UnconnectedWindows final : public WindowServer {
public:
    std::vector<ScreenWindow> onScreenWindows() override { return {}; }
    std::optional<std::string> executablePath(std::int32_t) override { return std::nullopt; }
    std::optional<std::string> bundleIdentifier(std::int32_t) override { return std::nullopt; }
    // X has no window level for pop-up menus; menus are reported at the macOS value.
    std::int64_t popUpMenuLayer() override { return 101; }
};

class UnconnectedCapture final : public ScreenCapture {
public:
    ShareableContentResult shareableContent() override { return {std::nullopt, "no display"}; }
    std::uint32_t mainDisplayID() override { return 0; }
};


class X11Backend final : public Backend {
public:
    Services& services() override { return services_; }

private:
    x11::X11Connection connection_;
    x11::X11EventPoster events_{connection_};
    UnconnectedWindows windows_;
    UnconnectedCapture capture_;
    x11::X11Pasteboard pasteboard_;
    x11::X11SystemProbe probe_{connection_};
    SteadyClock clock_;
    Services services_{events_, windows_, capture_, pasteboard_, probe_, clock_, systemStreams(),
                       systemSignals()};
};

}  // namespace

std::unique_ptr<Backend> makeBackend() { return std::make_unique<X11Backend>(); }

}  // namespace brisko::platform
