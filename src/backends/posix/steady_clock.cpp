#include "backends/posix/steady_clock.h"

#include <chrono>
#include <thread>

namespace brisko::platform {

double SteadyClock::monotonicMs() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

void SteadyClock::sleepMicroseconds(unsigned long long us) {
    std::this_thread::sleep_for(std::chrono::microseconds(us));
}

}  // namespace brisko::platform
