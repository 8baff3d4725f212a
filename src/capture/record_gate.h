#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string_view>

#include "platform/process_streams.h"

namespace brisko {

// Lets the capture stream's records out to standard output, one whole record per write, until
// the session ends. Closing waits for a record that is on its way out, so that a process that
// ends right after closing never leaves a partial record for the reader.
class RecordGate {
public:
    explicit RecordGate(platform::ProcessStreams& streams) : streams_(streams) {}

    // False when the write failed. After close, nothing is written and the answer is true.
    bool write(std::string_view record);
    // Lets no more records out, after waiting at most `wait` for the one being written: a
    // reader that has stopped reading must not keep the process from ending.
    void close(std::chrono::milliseconds wait);

private:
    platform::ProcessStreams& streams_;
    std::mutex lock_;
    std::condition_variable idle_;
    bool writing_ = false;
    bool closed_ = false;
};

}  // namespace brisko
