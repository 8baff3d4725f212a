#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>

#include "support/png_image.h"

namespace brisko::decode {
class CaptureStreamDecoder;
}

namespace brisko::testing {

// brisko-mac-input capture-stream running on a display. A thread reads its standard output as it
// comes and applies each whole record with the reference decoder, so the test sees the picture
// the host would see. Killed and reaped on destruction if still running.
class CaptureStreamProcess {
public:
    using Clock = std::chrono::steady_clock;

    // Called on the reading thread with the picture after each record, as it arrives.
    using RecordObserver = std::function<void(const RgbaPicture&)>;

    explicit CaptureStreamProcess(const std::string& display, RecordObserver onRecord = {});
    pid_t pid() const { return pid_; }
    ~CaptureStreamProcess();
    CaptureStreamProcess(const CaptureStreamProcess&) = delete;
    CaptureStreamProcess& operator=(const CaptureStreamProcess&) = delete;

    // Waits until the stream's picture satisfies the test; the time it first did, or absent
    // after the timeout.
    std::optional<Clock::time_point> waitForPicture(const std::function<bool(const RgbaPicture&)>& test,
                                                    std::chrono::milliseconds timeout = std::chrono::seconds(10));
    // Waits until at least n records have arrived; false after the timeout.
    bool waitForRecords(int n, std::chrono::milliseconds timeout = std::chrono::seconds(10));
    RgbaPicture picture();
    int records();

    void closeInput();
    void terminate();
    // The reader goes away: the read end of the output pipe is closed.
    void closeOutput();
    // The exit status (128 + signal when killed by one); absent after the timeout.
    std::optional<int> wait(std::chrono::milliseconds timeout = std::chrono::seconds(10));
    // Every byte read so far, once the process has ended and its output is drained.
    std::string bytes();
    std::string errors();  // standard error, once the process has ended

private:
    void read();
    void applyWholeRecords();

    RecordObserver onRecord_;
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    int errors_ = -1;
    std::mutex lock_;
    std::condition_variable changed_;
    std::string bytes_;
    std::unique_ptr<decode::CaptureStreamDecoder> decoder_;
    std::size_t applied_ = 0;  // bytes of bytes_ taken by whole records (and the preamble)
    RgbaPicture picture_;
    int records_ = 0;
    bool reading_ = true;
    bool stopReading_ = false;
    std::optional<int> status_;
    std::thread reader_;
};

}  // namespace brisko::testing
