#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "capture/frame_pacer.h"

namespace brisko {
namespace {

using Decision = FramePacer::Decision;

// What happens at one moment: an optional change, then the pacer asked; a frame is taken when it
// says so, and shows something new unless `showsNothing`.
struct Moment {
    double atMs;
    bool change;
    Decision expected;
    bool showsNothing = false;
};

struct Case {
    std::string name;
    std::optional<double> idlePollMs;
    std::vector<Moment> moments;
};

TEST(FramePacer, TakesFramesOnlyAfterChangesAndNeverSoonerThanTheInterval) {
    const std::vector<Case> cases = {
        {"first frame at once, then nothing while still",
         std::nullopt,
         {{0, false, {true, std::nullopt}}, {10, false, {false, std::nullopt}}, {5000, false, {false, std::nullopt}}}},
        {"a change long after the last frame is taken at once",
         std::nullopt,
         {{0, false, {true, std::nullopt}}, {400, true, {true, std::nullopt}}}},
        {"a change inside the interval waits for its end",
         std::nullopt,
         {{0, false, {true, std::nullopt}}, {10, true, {false, 90.0}}, {60, true, {false, 40.0}}, {100, false, {true, std::nullopt}},
          {101, false, {false, std::nullopt}}}},
        {"continuous change: one frame per interval, measured from the frames taken",
         std::nullopt,
         {{0, true, {true, std::nullopt}}, {50, true, {false, 50.0}}, {100, true, {true, std::nullopt}},
          {230, true, {true, std::nullopt}}, {300, true, {false, 30.0}}, {330, true, {true, std::nullopt}}}},
        {"an idle source looks again at the poll period",
         40.0,
         {{0, false, {true, std::nullopt}}, {5, false, {false, 40.0}}, {30, true, {false, 70.0}}}},
        {"a frame that showed nothing holds the next back by the gap only, and the interval runs from the last that showed something",
         std::nullopt,
         {{0, false, {true, std::nullopt}}, {500, true, {true, std::nullopt}, true}, {501, true, {false, 4.0}},
          {505, false, {true, std::nullopt}}, {520, true, {false, 85.0}}, {605, false, {true, std::nullopt}, true},
          {606, true, {false, 4.0}}}},
    };
    for (const Case& c : cases) {
        FramePacer pacer(100.0, 5.0, c.idlePollMs);
        for (const Moment& m : c.moments) {
            if (m.change) pacer.noteChange();
            const Decision decision = pacer.decide(m.atMs);
            EXPECT_EQ(decision, m.expected) << c.name << " at " << m.atMs;
            if (decision.takeFrame) pacer.frameTaken(m.atMs);
            if (decision.takeFrame && m.showsNothing) pacer.frameShowedNothingNew();
        }
    }
}

TEST(FramePacer, AChangeWhileAFrameIsTakenCallsForAnother) {
    FramePacer pacer(1000.0 / 15.0, 5.0, std::nullopt);
    ASSERT_TRUE(pacer.decide(0).takeFrame);
    pacer.frameTaken(0);
    pacer.noteChange();  // arrived while the frame was being read
    EXPECT_EQ(pacer.decide(20), (Decision{false, 1000.0 / 15.0 - 20}));
    EXPECT_TRUE(pacer.decide(1000.0 / 15.0).takeFrame);
}

}  // namespace
}  // namespace brisko
