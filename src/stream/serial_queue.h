#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

#include "stream/work_queue.h"

namespace brisko {

// A work queue served by one worker thread of its own. An item that lets a failure escape ends
// the queue: nothing after it runs, and the failure is raised again to whoever queues or syncs
// next, as the process would have ended there.
class SerialQueue final : public WorkQueue {
public:
    SerialQueue();
    // Runs what is still queued, then stops the worker.
    ~SerialQueue() override;
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    void async(std::function<void()> item) override;
    void sync() override;

private:
    void serve();
    void raiseFailure();

    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> items_;
    bool busy_ = false;
    bool closing_ = false;
    std::exception_ptr failure_;
    std::thread worker_;  // last: starts once the rest is ready
};

}  // namespace brisko
