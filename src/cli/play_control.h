#pragma once

#include <mutex>
#include <set>
#include <string>

namespace brisko {

// The registry of accepted blocks and of stop requests, shared by the input-stream reader and
// the player. Each operation holds the lock for its whole body and nothing else; the lock is
// never held while sleeping or posting.
class PlayControl {
public:
    void begin(const std::string& id);
    // Marks an active block as stopped; false when the id is not active.
    bool requestStop(const std::string& id);
    void stopAll();
    bool isStopped(const std::string& id);
    void finish(const std::string& id);

private:
    std::mutex lock_;
    std::set<std::string> active_;
    std::set<std::string> stopped_;
};

}  // namespace brisko
