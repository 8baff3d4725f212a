#pragma once

#include <functional>

namespace brisko {

// The input stream's player queue: items run one at a time, in the order they were queued, never
// on the caller's thread while it reads.
class WorkQueue {
public:
    virtual ~WorkQueue() = default;
    virtual void async(std::function<void()> item) = 0;
    // Returns once every item queued before has run.
    virtual void sync() = 0;
};

}  // namespace brisko
