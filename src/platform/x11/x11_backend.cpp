#include "platform/services.h"
#include "platform/steady_clock.h"

namespace brisko::platform {
namespace {

// Until the X services exist the backend answers as a system with nothing to offer.
class UnconnectedEvents final : public EventPoster {
public:
    bool post(const InputEvent&) override { return false; }
};

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
    std::optional<PixelSize> displayPixelSize(std::uint32_t) override { return std::nullopt; }
    CapturedImageResult captureImage(const CaptureFilter&, PixelSize, bool) override { return {std::nullopt, "no display"}; }
    std::unique_ptr<FrameStream> makeFrameStream(const CaptureFilter&, const FrameStreamConfiguration&) override {
        return nullptr;
    }
};

class UnconnectedPasteboard final : public Pasteboard {
public:
    std::int64_t changeCount() override { return 0; }
    std::vector<std::vector<std::string>> itemTypes() override { return {}; }
    std::optional<Bytes> data(std::size_t, const std::string&) override { return std::nullopt; }
    void clearContents() override {}
    void setData(const std::string&, const Bytes&) override {}
    void setPlainText(const std::string&) override {}
    std::int64_t accessBehavior() override { return 2; }
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
    UnconnectedEvents events_;
    UnconnectedWindows windows_;
    UnconnectedCapture capture_;
    UnconnectedPasteboard pasteboard_;
    UnconnectedProbe probe_;
    SteadyClock clock_;
    Services services_{events_, windows_, capture_, pasteboard_, probe_, clock_, systemStreams(), systemSignals(),
                       systemSessionLoop()};
};

}  // namespace

std::unique_ptr<Backend> makeBackend() { return std::make_unique<X11Backend>(); }

}  // namespace brisko::platform
