#include "capture/worker_pool.h"

#include <algorithm>

namespace brisko {

WorkerPool::WorkerPool(std::size_t lanes) {
    for (std::size_t lane = 1; lane < std::max<std::size_t>(lanes, 1); ++lane) {
        helpers_.emplace_back([this, lane] { serve(lane); });
    }
}

WorkerPool::~WorkerPool() {
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (std::thread& helper : helpers_) helper.join();
}

void WorkerPool::run(std::size_t jobs, const Work& work) {
    if (jobs == 0) return;
    if (helpers_.empty() || jobs == 1) {
        for (std::size_t job = 0; job < jobs; ++job) work(0, job);
        return;
    }
    {
        std::lock_guard guard(lock_);
        work_ = &work;
        jobs_ = jobs;
        nextJob_.store(0, std::memory_order_relaxed);
        helpersBusy_ = helpers_.size();
        ++batch_;
    }
    wake_.notify_all();
    takeJobs(0);
    std::unique_lock guard(lock_);
    finished_.wait(guard, [this] { return helpersBusy_ == 0; });
    work_ = nullptr;
}

void WorkerPool::serve(std::size_t lane) {
    std::uint64_t seen = 0;
    std::unique_lock guard(lock_);
    while (true) {
        wake_.wait(guard, [&] { return stopping_ || batch_ != seen; });
        if (stopping_) return;
        seen = batch_;
        guard.unlock();
        takeJobs(lane);
        guard.lock();
        if (--helpersBusy_ == 0) finished_.notify_one();
    }
}

void WorkerPool::takeJobs(std::size_t lane) {
    // work_ and jobs_ were set under the lock before this batch was announced.
    for (std::size_t job = nextJob_.fetch_add(1, std::memory_order_relaxed); job < jobs_;
         job = nextJob_.fetch_add(1, std::memory_order_relaxed)) {
        (*work_)(lane, job);
    }
}

std::size_t hardwareLanes() { return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 8); }

}  // namespace brisko
