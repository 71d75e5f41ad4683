#include <pevrano.h>

#include "foundation/kvfplatform.h"

#include <dlfcn.h>

#include "support/glfixture.h"

using namespace pvtest;

// Each case runs in a scratch folder with the log captured.
using Timers = RecordingTest;
using Ids = RecordingTest;

// The library's calls to the counter resolve to this definition in the test
// executable, so a test can hold the clock still or move it at will; while it
// is 0 the library's own counter answers.
static long long fakeNow = 0;

long long kvfPerformanceCounter()
{
    if (fakeNow)
        return fakeNow;
    using Counter = long long (*)();
    static Counter real = reinterpret_cast<Counter>(dlsym(RTLD_NEXT, "_Z21kvfPerformanceCounterv"));
    return real ? real() : 0;
}

// A timer of rate zero looks free: its slot is handed out again.
TEST_F(Timers, NinthTimerIsRefusedUntilOneIsFreed)
{
    EXPECT_EQ(kvfNewTimer(0.0f), 0);
    for (int expected = 0; expected < 8; ++expected)
        EXPECT_EQ(kvfNewTimer(1.0f), expected);
    EXPECT_EQ(kvfNewTimer(1.0f), -1);
    EXPECT_EQ(log.text(), "kvfNewTimer: no more timers\n");
    EXPECT_TRUE(kvfFreeTimer(5));
    EXPECT_TRUE(kvfFreeTimer(2));
    EXPECT_EQ(kvfNewTimer(1.0f), 2);
    EXPECT_EQ(kvfNewTimer(1.0f), 5);
    EXPECT_EQ(kvfNewTimer(1.0f), -1);
}

TEST_F(Timers, BadHandlesAndFreeSlots)
{
    int timer = kvfNewTimer(1.0f);
    ASSERT_EQ(timer, 0);
    std::string expectedLog;
    // Out of range or never taken while timer 0 runs, then timer 0 once freed.
    for (int handle : {-1, 8, 1, timer}) {
        SCOPED_TRACE(handle);
        EXPECT_TRUE(handle != timer || kvfFreeTimer(timer));
        EXPECT_FALSE(kvfFreeTimer(handle));
        EXPECT_FALSE(kvfAdjournTimer(handle));
        EXPECT_EQ(kvfGetTimerFactor(handle), -1.0f);
        EXPECT_EQ(kvfGetTimerFps(handle), -1.0f);
        expectedLog += "kvfFreeTimer: wrong params\nkvfAdjournTimer: wrong params\n"
                       "kvfGetTimerFactor: wrong params\nkvfGetTimerFps: wrong params\n";
    }
    EXPECT_EQ(log.text(), expectedLog);
}

TEST_F(Timers, FactorAndFpsFromTheCounterKeptUntilTheNextAdjourn)
{
    fakeNow = 5000000000LL;
    const int timer = kvfNewTimer(2.0f);
    // Each step moves the counter, adjourns the timer or not, then reads it.
    const struct {
        long long advance;
        bool adjourn;
        float factor, fps;
    } steps[] = {
        {0, false, 0, 0},  // never adjourned: a fresh slot reads 0
        {250000000, true, 0.5f, 4},  // a quarter of a second at rate 2
        {1000000000, false, 0.5f, 4},  // reading does not measure again
        {1000000000, true, 4, 0.5f},  // two seconds since the previous adjourn
        {0, true, 1, 2},  // the same tick: factor 1, fps equal to the rate
        {-10, true, 1, 2},  // a counter going back alike
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.advance);
        fakeNow += step.advance;
        EXPECT_TRUE(!step.adjourn || kvfAdjournTimer(timer));
        EXPECT_FLOAT_EQ(kvfGetTimerFactor(timer), step.factor);
        EXPECT_FLOAT_EQ(kvfGetTimerFps(timer), step.fps);
    }
    // Freed and taken again, the slot still reads its last figures.
    EXPECT_TRUE(kvfFreeTimer(timer));
    ASSERT_EQ(kvfNewTimer(2.0f), timer);
    EXPECT_FLOAT_EQ(kvfGetTimerFactor(timer), 1.0f);
    EXPECT_EQ(log.text(), "");
}

TEST_F(Ids, ReleaseMessages)
{
    unsigned int id = kvfNewId();
    for (unsigned int refused : {0u, 70000u, 65536u, 65535u})
        EXPECT_FALSE(kvfReleaseId(refused));
    EXPECT_TRUE(kvfReleaseId(id));
    EXPECT_FALSE(kvfReleaseId(id));
    kvfLog(" continues here\n");
    EXPECT_EQ(log.text(), "releaseId: invalid params (0)\n"
                          "releaseId: invalid params (70000)\n"
                          "releaseId: invalid params (65536)\n"
                          "releaseId: ID already released (65535)"
                          "releaseId: ID already released (1) continues here\n");
}

TEST_F(Ids, FirstIsOneAndTheLowestFreeComesBackUntilAllAreTaken)
{
    EXPECT_EQ(kvfNewId(), 1u);
    EXPECT_EQ(kvfNewId(), 2u);
    EXPECT_EQ(kvfNewId(), 3u);
    EXPECT_TRUE(kvfReleaseId(2));
    EXPECT_TRUE(kvfReleaseId(1));
    EXPECT_EQ(kvfNewId(), 1u);
    EXPECT_EQ(kvfNewId(), 2u);
    unsigned int next = 4;
    while (next <= 65535 && kvfNewId() == next)
        ++next;
    EXPECT_EQ(next, 65536u);
    EXPECT_EQ(kvfNewId(), 0u);
    EXPECT_EQ(log.text(), "kvfNewId: all ID are used\n");
    EXPECT_TRUE(kvfReleaseId(40000));
    EXPECT_EQ(kvfNewId(), 40000u);
}
