#include "platform/services.h"
#include "platform/steady_clock.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_pasteboard.h"
#include "platform/x11/x11_screen_capture.h"
#include "platform/x11/x11_window_server.h"

namespace brisko::platform {
namespace {

// Until the X services exist the backend answers as a system with nothing to offer.
class UnconnectedEvents final : public EventPoster {
public:
    bool post(const InputEvent&) override { return false; }
};

class UnconnectedProbe final : public SystemProbe {
public:
    void requestPermissions() override {}
    bool screenCaptureAllowed() override { return false; }
    bool postEventAllowed() override { return false; }
    std::uint64_t hidFlags() override { return 0; }
    Rect mainDisplayBounds() override { return {}; }
    std::optional<PixelSize> mainDisplayPixelSize() override { return std::nullopt; }
    std::optional<std::map<std::string, double>> sessionValues() override { return std::nullopt; }
    bool displayAsleep() override { return false; }
};

class X11Backend final : public Backend {
public:
    Services& services() override { return services_; }

private:
    x11::X11Connection connection_;
    UnconnectedEvents events_;
    x11::X11WindowServer windows_{connection_};
    x11::X11ScreenCapture capture_{connection_, windows_};
    x11::X11Pasteboard pasteboard_;
    UnconnectedProbe probe_;
    SteadyClock clock_;
    Services services_{events_, windows_, capture_, pasteboard_, probe_, clock_, systemStreams(), systemSignals(),
                       systemSessionLoop()};
};

}  // namespace

std::unique_ptr<Backend> makeBackend() { return std::make_unique<X11Backend>(); }

}  // namespace brisko::platform
