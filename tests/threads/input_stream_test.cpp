#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "cli/process_state.h"
#include "fake/fake_platform.h"
#include "support/fed_input.h"
#include "support/journal_text.h"

namespace brisko {
namespace {

using testing::eventText;
using Texts = std::vector<std::string>;

const std::string banner = "brisko-mac-input input-stream v2\n";

// The whole input-stream command in-process, with its reader on a thread of the test and its
// player on its own, over the fake platform with a clock in real time.
class InputStreamThreads : public ::testing::Test {
protected:
    InputStreamThreads() {
        platform.clock.realTime = true;
        input.attachTo(platform.streams.input);
    }

    ~InputStreamThreads() override {
        input.close();
        if (status.valid()) status.wait();
    }

    void start() {
        status = std::async(std::launch::async, [this] { return platform.run({"input-stream"}); });
    }

    // Closes the input and returns the exit status.
    int finish() {
        input.close();
        return status.get();
    }

    static bool eventually(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    bool eventuallyPosted(std::size_t count) {
        return eventually([&] { return platform.journal.events().size() >= count; });
    }

    bool eventuallyAnswered(const std::string& line) {
        return eventually([&] { return platform.streams.out().find(line) != std::string::npos; });
    }

    fake::FakePlatform platform;
    testing::FedInput input;
    std::future<int> status;
};

TEST_F(InputStreamThreads, StartsAndEndsAsTheProcessDoes) {
    input.feed("keydown 4 none\nplay a 600000 0\n");
    start();
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a cancelled 0\n");
    EXPECT_TRUE(platform.signals.brokenPipeIgnored);
    EXPECT_TRUE(platform.signals.terminateExitsZero);
    EXPECT_EQ(processState().postPacingMicroseconds, 0u);
    EXPECT_EQ(eventText(platform.journal), Texts{"keydown 4"});
}

TEST_F(InputStreamThreads, AStopForAQueuedBlockCancelsItBeforeAnyOfItsCommands) {
    start();
    input.feed("play a 600000 1\n0 keydown 4 none\nplay b 100 1\n0 keydown 5 none\nstop b\n");
    ASSERT_TRUE(eventuallyPosted(1));
    input.feed("stop a\n");
    ASSERT_TRUE(eventuallyAnswered("played b cancelled 0\n"));
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a cancelled 0\nplayed b cancelled 0\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"keydown 4", "keyup 4"}));
    EXPECT_EQ(platform.streams.err(), "");
}

TEST_F(InputStreamThreads, EndOfInputCancelsAPlayingBlockAndReleasesWhatItPressed) {
    start();
    input.feed("play a 600000 3\n0 keydown 55 cmd\n0 mousedown 10 20 left\n500000 keyup 55 none\n");
    ASSERT_TRUE(eventuallyPosted(2));
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a cancelled 0\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"flags 55 cmd", "leftdown 10,20 cmd", "leftup 10,20 cmd", "flags 55"}));
}

TEST_F(InputStreamThreads, AStopLineInsideABodyDoesNotStopTheBlockItNames) {
    start();
    input.feed("play a 600000 0\nplay b 10 1\nstop a\n");
    // Were it taken as a stop, a would answer within a few milliseconds.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(platform.streams.out(), banner);
    input.feed("stop a\n");
    ASSERT_TRUE(eventuallyAnswered("played b refused"));
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a cancelled 0\n"
                                               "played b refused line 1: expected a non-negative integer t, got 'stop a'\n");
}

TEST_F(InputStreamThreads, WorkRunsOneItemAtATimeInArrivalOrder) {
    start();
    input.feed("play a 30 1\n0 keydown 4 none\nkeyup 4 none\nplay b 0 0\nhello\n");
    ASSERT_TRUE(eventuallyAnswered("played b ok 0\n"));
    EXPECT_EQ(finish(), 0);
    EXPECT_EQ(platform.streams.out(), banner + "played a ok 0\nplayed b ok 0\n");
    EXPECT_EQ(eventText(platform.journal), (Texts{"keydown 4", "keyup 4"}));
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: input-stream: ignoring unknown command in line 'hello'\n");
}

TEST_F(InputStreamThreads, APlatformFailureOnThePlayerEndsTheStreamWithStatusTwo) {
    platform.events.failFrom = 1;
    input.feed("keydown 4 none\nkeydown 5 none\nkeydown 6 none\n");
    start();
    EXPECT_EQ(finish(), 2);
    EXPECT_EQ(platform.streams.out(), banner);
    EXPECT_EQ(platform.streams.err(), "brisko-mac-input: failed to create CGEvent\n");
    EXPECT_EQ(eventText(platform.journal), Texts{"keydown 4"});
}

}  // namespace
}  // namespace brisko
