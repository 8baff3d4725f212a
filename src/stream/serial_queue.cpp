#include "stream/serial_queue.h"

namespace brisko {

SerialQueue::SerialQueue() : worker_([this] { serve(); }) {}

SerialQueue::~SerialQueue() {
    {
        std::lock_guard guard(lock_);
        closing_ = true;
    }
    changed_.notify_all();
    worker_.join();
}

void SerialQueue::async(std::function<void()> item) {
    {
        std::lock_guard guard(lock_);
        raiseFailure();
        items_.push_back(std::move(item));
    }
    changed_.notify_all();
}

void SerialQueue::sync() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return failure_ || (items_.empty() && !busy_); });
    raiseFailure();
}

void SerialQueue::raiseFailure() {
    if (failure_) std::rethrow_exception(failure_);
}

void SerialQueue::serve() {
    std::unique_lock guard(lock_);
    while (true) {
        changed_.wait(guard, [this] { return closing_ || !items_.empty(); });
        if (items_.empty()) return;
        const std::function<void()> item = std::move(items_.front());
        items_.pop_front();
        busy_ = true;
        guard.unlock();
        std::exception_ptr failure;
        try {
            item();
        } catch (...) {
            failure = std::current_exception();
        }
        guard.lock();
        busy_ = false;
        if (failure) {
            failure_ = failure;
            items_.clear();
        }
        changed_.notify_all();
        if (failure_) return;
    }
}

}  // namespace brisko
