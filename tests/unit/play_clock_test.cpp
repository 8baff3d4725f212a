#include <gtest/gtest.h>

#include "fake/fake_platform.h"
#include "play/play_clock.h"

namespace brisko {
namespace {

class PlayClock : public ::testing::Test {
protected:
    std::vector<unsigned long long> sleptMicroseconds() const {
        std::vector<unsigned long long> slept;
        for (const fake::Pause& pause : platform.journal.pauses()) slept.push_back(pause.microseconds);
        return slept;
    }

    fake::FakePlatform platform;
};

TEST_F(PlayClock, WaitsAreMeasuredFromTheStartAndNeverNegative) {
    EXPECT_EQ(playWaitMs(1000, 10, 1000), 10);
    EXPECT_EQ(playWaitMs(1000, 40, 1015), 25);
    EXPECT_EQ(playWaitMs(1000, 40, 1040), 0);
    EXPECT_EQ(playWaitMs(1000, 40, 1500.5), 0);
    EXPECT_EQ(playWaitMs(0.25, 1, 0.5), 0.75);
}

TEST_F(PlayClock, OneWaitPerLineThenTheFinalWait) {
    const PlayBlock block{"b", 100, {{10, {"keydown", "55", "cmd"}}, {40, {"keydown", "0", "cmd"}}}};
    EXPECT_EQ(playWaits(block, {1000, 1000, 1015, 1060}), (std::vector<double>{10, 25, 40}));
    EXPECT_EQ(playWaits(block, {1000, 1200, 1300, 1400}), (std::vector<double>{0, 0, 0}));
    const PlayBlock empty{"e", 30, {}};
    EXPECT_EQ(playWaits(empty, {5, 7}), std::vector<double>{28});
}

TEST_F(PlayClock, WaitingSleepsInSlicesOfAtMostFiveMilliseconds) {
    const double start = monotonicMs();
    EXPECT_TRUE(waitUntil(start + 12.5, [] { return false; }));
    EXPECT_EQ(sleptMicroseconds(), (std::vector<unsigned long long>{5000, 5000, 2500}));
    EXPECT_EQ(monotonicMs(), start + 12.5);
}

TEST_F(PlayClock, ATargetInThePastReturnsAtOnce) {
    EXPECT_TRUE(waitUntil(monotonicMs() - 1, [] { return false; }));
    EXPECT_TRUE(waitUntil(monotonicMs(), [] { return false; }));
    EXPECT_TRUE(sleptMicroseconds().empty());
}

TEST_F(PlayClock, AStopIsSeenBeforeWaitingAndAfterEverySlice) {
    EXPECT_FALSE(waitUntil(monotonicMs() - 1, [] { return true; }));
    EXPECT_TRUE(sleptMicroseconds().empty());

    const double start = monotonicMs();
    int checks = 0;
    EXPECT_FALSE(waitUntil(start + 100, [&] { return ++checks == 3; }));
    EXPECT_EQ(sleptMicroseconds(), (std::vector<unsigned long long>{5000, 5000}));
}

TEST_F(PlayClock, SleepsRoundUpToWholeMicrosecondsAndSkipNothing) {
    sleepMs(0);
    sleepMs(-3);
    sleepMs(0.0004);
    sleepMs(1.5);
    EXPECT_EQ(sleptMicroseconds(), (std::vector<unsigned long long>{1, 1500}));
    // A target a fraction of a microsecond away is still reached.
    EXPECT_TRUE(waitUntil(monotonicMs() + 0.0001, [] { return false; }));
}

}  // namespace
}  // namespace brisko
