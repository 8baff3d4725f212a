#include "capture/record_gate.h"

namespace brisko {

bool RecordGate::write(std::string_view record) {
    const std::lock_guard guard(writing_);
    if (closed_) return true;
    return streams_.writeOut(record);
}

void RecordGate::close(std::chrono::milliseconds wait) {
    closed_ = true;
    if (writing_.try_lock_for(wait)) writing_.unlock();
}

}  // namespace brisko
