#pragma once

#include <deque>
#include <functional>

#include "stream/work_queue.h"

namespace brisko::testing {

// A player queue for single-threaded tests: nothing runs until sync, which then runs every
// queued item in order on the caller's thread.
class DeferredQueue final : public WorkQueue {
public:
    void async(std::function<void()> item) override { items_.push_back(std::move(item)); }
    void sync() override {
        while (!items_.empty()) {
            const std::function<void()> item = std::move(items_.front());
            items_.pop_front();
            item();
        }
    }

private:
    std::deque<std::function<void()>> items_;
};

}  // namespace brisko::testing
