#include "support/capture_stream_process.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#include "capture_stream_decoder.h"
#include "support/run_program.h"

namespace brisko::testing {
namespace {

std::uint32_t u32At(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<std::uint8_t>(bytes[offset + static_cast<std::size_t>(i)]);
    return value;
}

}  // namespace

CaptureStreamProcess::CaptureStreamProcess(const std::string& display, RecordObserver onRecord)
    : onRecord_(std::move(onRecord)), decoder_(std::make_unique<decode::CaptureStreamDecoder>()) {
    int in[2], out[2], err[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    pid_ = ::fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        ::dup2(err[1], 2);
        ::setenv("DISPLAY", display.c_str(), 1);
        const std::string& program = programPath();
        ::execl(program.c_str(), program.c_str(), "capture-stream", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    ::close(err[1]);
    input_ = in[1];
    output_ = out[0];
    errors_ = err[0];
    ::signal(SIGPIPE, SIG_IGN);
    reader_ = std::thread([this] { read(); });
}

CaptureStreamProcess::~CaptureStreamProcess() {
    if (!status_) {
        ::kill(pid_, SIGKILL);
        wait();
    }
    {
        const std::lock_guard guard(lock_);
        stopReading_ = true;
    }
    if (reader_.joinable()) reader_.join();
    for (const int fd : {input_, output_, errors_}) {
        if (fd >= 0) ::close(fd);
    }
}

void CaptureStreamProcess::read() {
    char chunk[1 << 16];
    for (;;) {
        {
            const std::lock_guard guard(lock_);
            if (stopReading_) break;
        }
        pollfd fd{output_, POLLIN, 0};
        if (::poll(&fd, 1, 50) <= 0) continue;
        const ssize_t got = ::read(output_, chunk, sizeof chunk);
        if (got <= 0) break;
        const std::lock_guard guard(lock_);
        bytes_.append(chunk, static_cast<std::size_t>(got));
        applyWholeRecords();
    }
    const std::lock_guard guard(lock_);
    reading_ = false;
    changed_.notify_all();
}

// Called with the lock held.
void CaptureStreamProcess::applyWholeRecords() {
    if (applied_ == 0) {
        if (bytes_.size() < 8) return;
        decode::CaptureStreamDecoder::checkPreamble(
            {reinterpret_cast<const std::uint8_t*>(bytes_.data()), 8});
        applied_ = 8;
    }
    while (bytes_.size() - applied_ >= 4) {
        const std::uint32_t length = u32At(bytes_, applied_);
        if (bytes_.size() - applied_ - 4 < length) break;
        decode::FrameRecord record;
        decoder_->applyRecord({reinterpret_cast<const std::uint8_t*>(bytes_.data()) + applied_ + 4, length}, record);
        applied_ += 4 + length;
        ++records_;
        picture_ = {decoder_->width(), decoder_->height(), decoder_->picture()};
        if (onRecord_) onRecord_(picture_);
    }
    changed_.notify_all();
}

std::optional<CaptureStreamProcess::Clock::time_point> CaptureStreamProcess::waitForPicture(
    const std::function<bool(const RgbaPicture&)>& test, std::chrono::milliseconds timeout) {
    std::unique_lock guard(lock_);
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        if (!picture_.rgba.empty() && test(picture_)) return Clock::now();
        if (!reading_ || changed_.wait_until(guard, deadline) == std::cv_status::timeout) {
            if (!picture_.rgba.empty() && test(picture_)) return Clock::now();
            return std::nullopt;
        }
    }
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

void CaptureStreamProcess::closeInput() {
    ::close(input_);
    input_ = -1;
}

void CaptureStreamProcess::terminate() { ::kill(pid_, SIGTERM); }

void CaptureStreamProcess::closeOutput() {
    {
        const std::lock_guard guard(lock_);
        stopReading_ = true;
    }
    reader_.join();
    ::close(output_);
    output_ = -1;
}

std::optional<int> CaptureStreamProcess::wait(std::chrono::milliseconds timeout) {
    if (status_) return status_;
    const auto deadline = Clock::now() + timeout;
    while (Clock::now() < deadline) {
        int status = 0;
        const pid_t done = ::waitpid(pid_, &status, WNOHANG);
        if (done == pid_) {
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return status_;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return std::nullopt;
}

std::string CaptureStreamProcess::bytes() {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, std::chrono::seconds(10), [this] { return !reading_; });
    return bytes_;
}

std::string CaptureStreamProcess::errors() {
    std::string text;
    char chunk[4096];
    ssize_t got = 0;
    while ((got = ::read(errors_, chunk, sizeof chunk)) > 0) text.append(chunk, static_cast<std::size_t>(got));
    return text;
}

}  // namespace brisko::testing
