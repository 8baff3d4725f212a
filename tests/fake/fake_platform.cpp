#include "fake/fake_platform.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "entry/dispatch.h"
#include "cli/process_state.h"

namespace brisko::fake {

void Journal::add(Happening h) {
    std::lock_guard guard(lock_);
    entries_.push_back(std::move(h));
    added_.notify_all();
}

bool Journal::awaitEvents(std::size_t count) {
    std::unique_lock guard(lock_);
    return added_.wait_for(guard, std::chrono::seconds(10), [&] {
        return std::count_if(entries_.begin(), entries_.end(),
                             [](const Happening& h) { return std::holds_alternative<InputEvent>(h); }) >=
               static_cast<std::ptrdiff_t>(count);
    });
}

std::vector<Happening> Journal::all() const {
    std::lock_guard guard(lock_);
    return entries_;
}

std::vector<InputEvent> Journal::events() const {
    std::vector<InputEvent> out;
    for (const Happening& h : all()) {
        if (const auto* e = std::get_if<InputEvent>(&h)) out.push_back(*e);
    }
    return out;
}

void Journal::clear() {
    std::lock_guard guard(lock_);
    entries_.clear();
}

bool FakeEvents::post(const InputEvent& event) {
    if (failFrom && attempts_++ >= *failFrom) return false;
    journal_.add(event);
    return true;
}

namespace {

class FakeFrameStream final : public platform::FrameStream {
public:
    FakeFrameStream(FakeCapture& capture, FakeStreamLog& log) : capture_(capture), log_(log) {}
    ~FakeFrameStream() override { stop(); }

    std::optional<std::string> addOutput(platform::FrameStreamOutput& output) override {
        if (capture_.outputError) return capture_.outputError;
        log_.output = &output;
        return std::nullopt;
    }
    std::optional<std::string> startCapture() override {
        if (capture_.startError) return capture_.startError;
        log_.started = true;
        return std::nullopt;
    }
    std::optional<std::string> updateFilter(const platform::CaptureFilter& filter) override {
        log_.updates.push_back(filter);
        return capture_.updateError;
    }
    void stop() override { log_.output = nullptr; }

private:
    FakeCapture& capture_;
    FakeStreamLog& log_;
};

}  // namespace

std::unique_ptr<platform::FrameStream> FakeCapture::makeFrameStream(
    const platform::CaptureFilter& filter, const platform::FrameStreamConfiguration& configuration) {
    streams.push_back({filter, configuration, nullptr, false, {}});
    return std::make_unique<FakeFrameStream>(*this, streams.back());
}

std::vector<std::vector<std::string>> FakePasteboard::itemTypes() {
    std::vector<std::vector<std::string>> types;
    for (const Item& item : items) types.push_back(item.types);
    return types;
}

void FakePasteboard::setData(const std::string& type, const platform::Bytes& bytes) {
    if (items.empty()) items.emplace_back();
    items.front().types.push_back(type);
    items.front().data[type] = bytes;
}

double FakeClock::monotonicMs() {
    if (realTime) return steady_.monotonicMs();
    std::lock_guard guard(lock_);
    return nowMs_;
}

void FakeClock::sleepMicroseconds(unsigned long long us) {
    journal_.add(Pause{us});
    if (realTime) {
        steady_.sleepMicroseconds(us);
    } else {
        advanceMs(static_cast<double>(us) / 1000.0);
    }
}

void FakeClock::advanceMs(double ms) {
    std::lock_guard guard(lock_);
    nowMs_ += ms;
}

platform::SessionLoop::Wake FakeSessionLoop::wait(double timeoutMs) {
    if (std::isinf(timeoutMs)) {
        std::unique_lock guard(lock_);
        if (!postedChanged_.wait_for(guard, std::chrono::seconds(10), [this] { return posted_; })) return Wake::inputEnded;
    } else if (timeoutMs > 0) {
        timeouts.push_back(timeoutMs);
    }
    if (takePost()) return Wake::posted;
    if (steps.empty()) return Wake::inputEnded;
    if (timeoutMs <= 0) return Wake::timedOut;
    const Step step = std::move(steps.front());
    steps.pop_front();
    const Wake wake = step();
    if (wake == Wake::timedOut && timeoutMs > 0) clock_.advanceMs(timeoutMs);
    return wake;
}

void FakeSessionLoop::post() {
    const std::lock_guard guard(lock_);
    posted_ = true;
    postedChanged_.notify_all();
}

bool FakeSessionLoop::takePost() {
    const std::lock_guard guard(lock_);
    return std::exchange(posted_, false);
}

void FakeSessionLoop::idle(int n) {
    for (int i = 0; i < n; ++i) steps.push_back([] { return Wake::timedOut; });
}

bool FakeStreams::writeOut(std::string_view bytes) {
    if (failWrites) return false;
    if (beforeWrite) beforeWrite();
    std::lock_guard guard(lock_);
    out_.append(bytes);
    written_.notify_all();
    return true;
}

bool FakeStreams::awaitOut(std::string_view text) {
    std::unique_lock guard(lock_);
    return written_.wait_for(guard, std::chrono::seconds(10), [&] { return out_.find(text) != std::string::npos; });
}

bool FakeStreams::writeErr(std::string_view bytes) {
    std::lock_guard guard(lock_);
    err_.append(bytes);
    return true;
}

std::string FakeStreams::out() const {
    std::lock_guard guard(lock_);
    return out_;
}

std::string FakeStreams::err() const {
    std::lock_guard guard(lock_);
    return err_;
}

FakePlatform::FakePlatform() { startProcess(services); }

int FakePlatform::run(const std::vector<std::string>& args, const std::string& stdinText) {
    streams.input.str(stdinText);
    streams.input.clear();
    try {
        runCommandLine(args);
    } catch (const ProcessExit& exit) {
        return exit.status;
    }
}

}  // namespace brisko::fake
