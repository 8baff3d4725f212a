#include "support/fed_input.h"

namespace brisko::testing {

void FedInput::feed(const std::string& text) {
    std::lock_guard guard(lock_);
    pending_ += text;
    changed_.notify_all();
}

void FedInput::close() {
    std::lock_guard guard(lock_);
    closed_ = true;
    changed_.notify_all();
}

void FedInput::awaitReaderWaiting() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return readerWaiting_ && pending_.empty(); });
}

FedInput::int_type FedInput::underflow() {
    std::unique_lock guard(lock_);
    readerWaiting_ = true;
    changed_.notify_all();
    changed_.wait(guard, [this] { return closed_ || !pending_.empty(); });
    readerWaiting_ = false;
    if (pending_.empty()) return traits_type::eof();
    reading_ = std::move(pending_);
    pending_.clear();
    setg(reading_.data(), reading_.data(), reading_.data() + reading_.size());
    return traits_type::to_int_type(reading_.front());
}

}  // namespace brisko::testing
