#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "backends/posix/steady_clock.h"
#include "platform/services.h"

namespace brisko::fake {

using platform::InputEvent;

// What the fake was asked to do, in order: posted events and pauses interleaved.
struct Pause {
    unsigned long long microseconds;
    bool operator==(const Pause&) const = default;
};
using Happening = std::variant<InputEvent, Pause>;

class Journal {
public:
    void add(Happening h);
    std::vector<Happening> all() const;
    std::vector<InputEvent> events() const;
    void clear();
    // For tests in which another thread posts: waits until that many events were posted; false
    // after 10 s.
    bool awaitEvents(std::size_t count);

private:
    mutable std::mutex lock_;
    std::condition_variable added_;
    std::vector<Happening> entries_;
};

class FakeEvents final : public platform::EventPoster {
public:
    explicit FakeEvents(Journal& journal) : journal_(journal) {}
    bool post(const InputEvent& event) override;
    // The n-th creation (counting from 0) and every later one fail.
    std::optional<std::size_t> failFrom;

private:
    Journal& journal_;
    std::size_t attempts_ = 0;
};

template <typename Map>
std::optional<typename Map::mapped_type> lookup(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    if (found == map.end()) return std::nullopt;
    return found->second;
}

class FakeWindows final : public platform::WindowServer {
public:
    std::vector<platform::ScreenWindow> onScreenWindows() override {
        ++windowListQueries;
        return windows;
    }
    std::optional<std::string> executablePath(std::int32_t pid) override {
        ++identityQueries;
        return lookup(paths, pid);
    }
    std::optional<std::string> bundleIdentifier(std::int32_t pid) override {
        ++identityQueries;
        return lookup(bundles, pid);
    }
    std::int64_t popUpMenuLayer() override { return menuLayer; }
    std::optional<std::uint32_t> keyboardFocusWindow() override { return std::nullopt; }
    std::optional<std::string> ownerlessWindows() override { return std::nullopt; }

    std::vector<platform::ScreenWindow> windows;
    std::map<std::int32_t, std::string> paths;
    std::map<std::int32_t, std::string> bundles;
    std::int64_t menuLayer = 101;
    int windowListQueries = 0;
    int identityQueries = 0;  // executablePath and bundleIdentifier calls
};

// One frame stream the fake made, as the logic set it up and steered it. Kept by the fake after
// the stream itself is gone.
struct FakeStreamLog {
    platform::CaptureFilter filter;  // the one the stream was made with
    platform::FrameStreamConfiguration configuration;
    platform::FrameStreamOutput* output = nullptr;  // while the stream lives
    bool started = false;
    std::vector<platform::CaptureFilter> updates;
};

struct FakeImageRequest {
    platform::CaptureFilter filter;
    platform::PixelSize size;
    bool showsCursor = false;
};

class FakeCapture final : public platform::ScreenCapture {
public:
    platform::ShareableContentResult shareableContent() override { return content; }
    std::uint32_t mainDisplayID() override { return mainDisplay; }
    std::optional<platform::PixelSize> displayPixelSize(std::uint32_t id) override { return lookup(pixelSizes, id); }
    platform::CapturedImageResult captureImage(const platform::CaptureFilter& filter, platform::PixelSize size,
                                               bool showsCursor) override {
        imageRequests.push_back({filter, size, showsCursor});
        return image;
    }
    std::unique_ptr<platform::FrameStream> makeFrameStream(
        const platform::CaptureFilter& filter, const platform::FrameStreamConfiguration& configuration) override;

    platform::ShareableContentResult content;
    std::uint32_t mainDisplay = 1;
    std::map<std::uint32_t, platform::PixelSize> pixelSizes;  // a display not listed has no mode
    platform::CapturedImageResult image;
    std::vector<FakeImageRequest> imageRequests;
    // What the streams' calls answer; nothing means success.
    std::optional<std::string> outputError;
    std::optional<std::string> startError;
    std::optional<std::string> updateError;
    std::deque<FakeStreamLog> streams;
};

class FakePasteboard final : public platform::Pasteboard {
public:
    struct Item {
        std::vector<std::string> types;
        std::map<std::string, platform::Bytes> data;  // a listed type without data gives none
    };

    std::int64_t changeCount() override {
        ++changeCountReads;
        return count;
    }
    std::vector<std::vector<std::string>> itemTypes() override;
    std::optional<platform::Bytes> data(std::size_t item, const std::string& type) override {
        return item < items.size() ? lookup(items[item].data, type) : std::nullopt;
    }
    void clearContents() override {
        items.clear();
        ++count;
    }
    void setData(const std::string& type, const platform::Bytes& bytes) override;
    void setPlainText(const std::string& utf8) override {
        setData("public.utf8-plain-text", platform::Bytes(utf8.begin(), utf8.end()));
    }
    std::int64_t accessBehavior() override { return access; }

    std::int64_t count = 0;
    std::vector<Item> items;
    std::int64_t access = 0;
    int changeCountReads = 0;
};

class FakeProbe final : public platform::SystemProbe {
public:
    void requestPermissions() override { ++permissionRequests; }
    bool screenCaptureAllowed() override { return screen; }
    bool postEventAllowed() override { return input; }
    std::uint64_t hidFlags() override { return hid; }
    platform::Rect mainDisplayBounds() override { return bounds; }
    std::optional<platform::PixelSize> mainDisplayPixelSize() override { return pixels; }
    std::optional<std::map<std::string, double>> sessionValues() override { return session; }
    bool displayAsleep() override { return asleep; }

    int permissionRequests = 0;
    bool screen = true;
    bool input = true;
    std::uint64_t hid = 0;
    platform::Rect bounds{0, 0, 1440, 900};
    std::optional<platform::PixelSize> pixels = platform::PixelSize{2880, 1800};
    std::optional<std::map<std::string, double>> session = std::map<std::string, double>{};
    bool asleep = false;
};

// A clock that only moves when slept on or advanced; every sleep is journalled as a pause.
// In real time it follows the system's monotonic clock and really sleeps, for tests in which
// another thread must act while a block waits.
class FakeClock final : public platform::Clock {
public:
    explicit FakeClock(Journal& journal) : journal_(journal) {}
    double monotonicMs() override;
    void sleepMicroseconds(unsigned long long us) override;
    void advanceMs(double ms);

    std::atomic<bool> realTime{false};

private:
    Journal& journal_;
    platform::SteadyClock steady_;
    mutable std::mutex lock_;
    double nowMs_ = 1000.0;
};

// Thrown by exit so that a test can run a whole command in-process. Deliberately not a
// std::exception, so that no handler of the program catches it.
struct ProcessExit {
    int status;
};

class FakeStreams final : public platform::ProcessStreams {
public:
    bool writeOut(std::string_view bytes) override;
    bool writeErr(std::string_view bytes) override;
    std::ostream& bufferedOut() override { return buffered; }
    std::istream& in() override { return input; }
    [[noreturn]] void exit(int status) override { throw ProcessExit{status}; }
    [[noreturn]] void exitImmediately(int status) override {
        ++immediateExits;
        throw ProcessExit{status};
    }

    std::string out() const;
    std::string err() const;
    // For tests in which another thread writes: waits until standard output holds the text;
    // false after 10 s.
    bool awaitOut(std::string_view text);

    std::ostringstream buffered;
    std::istringstream input;
    bool failWrites = false;  // to standard output
    // Called by every write to standard output before it is taken, on the writing thread.
    std::function<void()> beforeWrite;
    std::atomic<int> immediateExits{0};

private:
    mutable std::mutex lock_;
    std::condition_variable written_;
    std::string out_;
    std::string err_;
};

// No signal is ever delivered to an in-process command, so what it asks for changes nothing.
class FakeSignals final : public platform::ProcessSignals {
public:
    void ignoreBrokenPipe() override {}
    void exitZeroOnTerminate() override {}
};

// A session loop that plays a script: each wait with a time limit runs the next step (which may
// deliver frames, change the fake's answers, ...) and returns what the step says happened. A post
// is answered first; an exhausted script ends the input. A step that lets the time run out moves
// the clock on by the whole wait. A wait for what is already there runs no step, and one without
// limit returns only with a post (or, after 10 s, as the end of the input).
class FakeSessionLoop final : public platform::SessionLoop {
public:
    using Step = std::function<Wake()>;

    explicit FakeSessionLoop(FakeClock& clock) : clock_(clock) {}
    void open() override {}
    Wake wait(double timeoutMs) override;
    void post() override;
    // Steps that let the time run out n times, doing nothing else.
    void idle(int n);

    std::deque<Step> steps;
    std::vector<double> timeouts;  // of every wait with a time limit, in order

private:
    bool takePost();

    FakeClock& clock_;
    std::mutex lock_;
    std::condition_variable postedChanged_;
    bool posted_ = false;
};

// Every service faked, and a fresh process state over them.
class FakePlatform {
public:
    FakePlatform();

    Journal journal;
    FakeEvents events{journal};
    FakeWindows windows;
    FakeCapture capture;
    FakePasteboard pasteboard;
    FakeProbe probe;
    FakeClock clock{journal};
    FakeStreams streams;
    FakeSignals signals;
    FakeSessionLoop sessionLoop{clock};
    platform::Services services{events, windows, capture, pasteboard, probe, clock, streams, signals, sessionLoop};

    // Runs a whole command line as the process entry does; returns the exit status.
    int run(const std::vector<std::string>& args, const std::string& stdinText = "");
};

}  // namespace brisko::fake
