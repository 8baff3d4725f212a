#pragma once

#include "platform/clock.h"

namespace brisko::platform {

// The real monotonic clock; portable, so both backends share it.
class SteadyClock final : public Clock {
public:
    double monotonicMs() override;
    void sleepMicroseconds(unsigned long long us) override;
};

}  // namespace brisko::platform
