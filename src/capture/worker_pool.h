#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace brisko {

// A fixed set of threads that share out the jobs of one batch at a time. The thread that calls
// run works too, as lane 0, so a pool of n lanes starts n - 1 threads; they live as long as the
// pool and sleep between batches.
class WorkerPool {
public:
    using Work = std::function<void(std::size_t lane, std::size_t job)>;

    explicit WorkerPool(std::size_t lanes);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    std::size_t lanes() const { return helpers_.size() + 1; }

    // Calls work(lane, job) once for every job in [0, jobs), spread over the lanes, and returns
    // when all have returned. No two jobs run on one lane at once, so per-lane state needs no
    // lock. Called from one thread at a time.
    void run(std::size_t jobs, const Work& work);

private:
    void serve(std::size_t lane);
    void takeJobs(std::size_t lane);

    std::mutex lock_;
    std::condition_variable wake_;
    std::condition_variable finished_;
    std::uint64_t batch_ = 0;  // counts batches, so that a helper takes each one once
    bool stopping_ = false;
    std::size_t helpersBusy_ = 0;
    const Work* work_ = nullptr;
    std::size_t jobs_ = 0;
    std::atomic<std::size_t> nextJob_{0};
    std::vector<std::thread> helpers_;
};

// The lanes to use on this machine: one per hardware thread, at most 8, which bounds the threads
// and compressors a capture session holds on large machines.
std::size_t hardwareLanes();

}  // namespace brisko
