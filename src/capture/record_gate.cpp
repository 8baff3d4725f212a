#include "capture/record_gate.h"

namespace brisko {

bool RecordGate::write(std::string_view record) {
    {
        std::unique_lock guard(lock_);
        idle_.wait(guard, [this] { return !writing_; });
        if (closed_) return true;
        writing_ = true;
    }
    const bool written = streams_.writeOut(record);
    const std::lock_guard guard(lock_);
    writing_ = false;
    idle_.notify_all();
    return written;
}

void RecordGate::close(std::chrono::milliseconds wait) {
    std::unique_lock guard(lock_);
    closed_ = true;
    idle_.wait_for(guard, wait, [this] { return !writing_; });
}

}  // namespace brisko
