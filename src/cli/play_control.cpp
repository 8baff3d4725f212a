#include "cli/play_control.h"

namespace brisko {

void PlayControl::begin(const std::string& id) {
    std::lock_guard guard(lock_);
    active_.insert(id);
}

bool PlayControl::requestStop(const std::string& id) {
    std::lock_guard guard(lock_);
    if (!active_.contains(id)) return false;
    stopped_.insert(id);
    return true;
}

void PlayControl::stopAll() {
    std::lock_guard guard(lock_);
    stopped_.insert(active_.begin(), active_.end());
}

bool PlayControl::isStopped(const std::string& id) {
    std::lock_guard guard(lock_);
    return stopped_.contains(id);
}

void PlayControl::finish(const std::string& id) {
    std::lock_guard guard(lock_);
    active_.erase(id);
    stopped_.erase(id);
}

}  // namespace brisko
