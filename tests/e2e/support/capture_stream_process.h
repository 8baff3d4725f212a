#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "capture_stream_decoder.h"
#include "support/png_image.h"
#include "support/process.h"

namespace brisko::testing {

// brisko-mac-input capture-stream running on a display (the test's own when none is given). A
// thread reads its standard output as it comes and applies each whole record with the reference
// decoder, so that the test sees the picture the host would see.
class CaptureStreamProcess {
public:
    using Clock = std::chrono::steady_clock;

    // Called on the reading thread with the picture after each record, as it arrives.
    using RecordObserver = std::function<void(const RgbaPicture&)>;

    explicit CaptureStreamProcess(const std::string& display = {}, RecordObserver onRecord = {});
    ~CaptureStreamProcess();
    CaptureStreamProcess(const CaptureStreamProcess&) = delete;
    CaptureStreamProcess& operator=(const CaptureStreamProcess&) = delete;

    pid_t pid() const { return process_.pid(); }
    // Waits until the stream's picture satisfies the test; the time it first did, or absent
    // after the timeout.
    std::optional<Clock::time_point> waitForPicture(const std::function<bool(const RgbaPicture&)>& test,
                                                    std::chrono::milliseconds timeout = 10s);
    // Waits until at least n records have arrived; false after the timeout.
    bool waitForRecords(int n, std::chrono::milliseconds timeout = 10s);
    RgbaPicture picture();
    int records();

    void closeInput() { process_.closeInput(); }
    void terminate();
    // The reader goes away: the read end of the output pipe is closed.
    void closeOutput();
    // The exit status (128 + signal when killed by one); absent after the timeout.
    std::optional<int> wait(std::chrono::milliseconds timeout = 10s) { return process_.wait(timeout); }
    // Once the program has ended: what it wrote on standard error, and what was wrong with its
    // output (empty when it was the preamble and whole, well-formed records).
    std::string errors();
    std::string streamFault();

private:
    void read();
    void applyWholeRecords();
    void stopReading();

    Process process_;
    RecordObserver onRecord_;
    int stop_ = -1;  // an eventfd that wakes the reader to stop
    std::mutex lock_;
    std::condition_variable changed_;
    std::string bytes_;
    decode::CaptureStreamDecoder decoder_;
    std::size_t applied_ = 0;  // bytes of bytes_ taken by whole records (and the preamble)
    std::string fault_;
    RgbaPicture picture_;
    int records_ = 0;
    bool reading_ = true;
    std::thread reader_;
};

}  // namespace brisko::testing
