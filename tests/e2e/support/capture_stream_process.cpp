#include "support/capture_stream_process.h"

#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace brisko::testing {

CaptureStreamProcess::CaptureStreamProcess(const std::string& display, RecordObserver onRecord)
    : process_(programPath(), {"capture-stream"}, display.empty() ? Environment{} : Environment{{"DISPLAY", display}}),
      onRecord_(std::move(onRecord)),
      stop_(::eventfd(0, EFD_CLOEXEC)),
      reader_([this] { read(); }) {}

CaptureStreamProcess::~CaptureStreamProcess() {
    stopReading();
    ::close(stop_);
}

void CaptureStreamProcess::stopReading() {
    if (!reader_.joinable()) return;
    const std::uint64_t one = 1;
    if (::write(stop_, &one, sizeof one) != sizeof one) std::terminate();
    reader_.join();
}

void CaptureStreamProcess::read() {
    char chunk[1 << 16];
    for (;;) {
        pollfd fds[2] = {{process_.outputFd(), POLLIN, 0}, {stop_, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) continue;
        if (fds[1].revents) break;
        const ssize_t got = ::read(fds[0].fd, chunk, sizeof chunk);
        if (got <= 0) break;
        const std::lock_guard guard(lock_);
        bytes_.append(chunk, static_cast<std::size_t>(got));
        if (fault_.empty()) applyWholeRecords();
    }
    const std::lock_guard guard(lock_);
    reading_ = false;
    changed_.notify_all();
}

// Called with the lock held.
void CaptureStreamProcess::applyWholeRecords() {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes_.data());
    try {
        if (applied_ == 0) {
            if (bytes_.size() < 8) return;
            decode::CaptureStreamDecoder::checkPreamble({data, 8});
            applied_ = 8;
        }
        while (bytes_.size() - applied_ >= 4) {
            const std::uint32_t length = data[applied_] | data[applied_ + 1] << 8 | data[applied_ + 2] << 16 |
                                         std::uint32_t{data[applied_ + 3]} << 24;
            if (bytes_.size() - applied_ - 4 < length) break;
            decode::FrameRecord record;
            decoder_.applyRecord({data + applied_ + 4, length}, record);
            applied_ += 4 + length;
            ++records_;
            picture_ = {decoder_.width(), decoder_.height(), decoder_.picture()};
            if (onRecord_) onRecord_(picture_);
        }
    } catch (const decode::MalformedStream& e) {
        fault_ = e.what();
    }
    changed_.notify_all();
}

std::optional<CaptureStreamProcess::Clock::time_point> CaptureStreamProcess::waitForPicture(
    const std::function<bool(const RgbaPicture&)>& test, std::chrono::milliseconds timeout) {
    std::unique_lock guard(lock_);
    const auto shown = [&] { return !picture_.rgba.empty() && test(picture_); };
    changed_.wait_for(guard, timeout, [&] { return !reading_ || shown(); });
    return shown() ? std::optional(Clock::now()) : std::nullopt;
}

bool CaptureStreamProcess::waitForRecords(int n, std::chrono::milliseconds timeout) {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, timeout, [&] { return records_ >= n || !reading_; }) && records_ >= n;
}

RgbaPicture CaptureStreamProcess::picture() {
    const std::lock_guard guard(lock_);
    return picture_;
}

int CaptureStreamProcess::records() {
    const std::lock_guard guard(lock_);
    return records_;
}

void CaptureStreamProcess::terminate() { process_.signal(SIGTERM); }

void CaptureStreamProcess::closeOutput() {
    stopReading();
    process_.closeOutput();
}

std::string CaptureStreamProcess::errors() {
    {
        std::unique_lock guard(lock_);
        changed_.wait_for(guard, 10s, [this] { return !reading_; });
    }
    return process_.finish().err;
}

std::string CaptureStreamProcess::streamFault() {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, 10s, [this] { return !reading_; });
    if (!fault_.empty()) return fault_;
    if (applied_ < 8) return "no preamble";
    if (applied_ != bytes_.size()) return std::to_string(bytes_.size() - applied_) + " bytes after the last whole record";
    return {};
}

}  // namespace brisko::testing
