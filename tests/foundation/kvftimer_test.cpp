#include <pevrano.h>

#include "foundation/kvfplatform.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <string>

#include "support/glfixture.h"

using namespace pvtest;

// Each case runs in a scratch folder with the log captured.
using Timers = RecordingTest;
using Ids = RecordingTest;

// The library's calls to the counter resolve to this definition in the test
// executable, so a test can hold the clock still or move it at will; without
// a fake value it answers with the library's own counter.
namespace {
bool fakeClock = false;
long long fakeNow = 0;
}  // namespace

long long kvfPerformanceCounter()
{
    if (fakeClock)
        return fakeNow;
    using Counter = long long (*)();
    static Counter real = reinterpret_cast<Counter>(dlsym(RTLD_NEXT, "_Z21kvfPerformanceCounterv"));
    return real ? real() : 0;
}

namespace {

struct FakeClock {
    explicit FakeClock(long long start)
    {
        fakeClock = true;
        fakeNow = start;
    }
    ~FakeClock() { fakeClock = false; }
};

}  // namespace

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
        if (handle == timer) {
            EXPECT_TRUE(kvfFreeTimer(timer));
        }
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
    FakeClock clock(5000000000LL);
    int timer = kvfNewTimer(2.0f);
    ASSERT_GE(timer, 0);
    // Never adjourned: a fresh slot reads 0.
    EXPECT_EQ(kvfGetTimerFactor(timer), 0.0f);
    EXPECT_EQ(kvfGetTimerFps(timer), 0.0f);
    // A quarter of a second at rate 2: factor 0.5, fps 4.
    fakeNow += 250000000LL;
    EXPECT_TRUE(kvfAdjournTimer(timer));
    EXPECT_FLOAT_EQ(kvfGetTimerFactor(timer), 0.5f);
    EXPECT_FLOAT_EQ(kvfGetTimerFps(timer), 4.0f);
    // Reading does not measure again.
    fakeNow += 1000000000LL;
    EXPECT_FLOAT_EQ(kvfGetTimerFactor(timer), 0.5f);
    // Two seconds since the previous adjourn: factor 4, fps 0.5.
    fakeNow += 1000000000LL;
    EXPECT_TRUE(kvfAdjournTimer(timer));
    EXPECT_FLOAT_EQ(kvfGetTimerFactor(timer), 4.0f);
    EXPECT_FLOAT_EQ(kvfGetTimerFps(timer), 0.5f);
    // Freed and taken again, the slot still reads its last figures.
    EXPECT_TRUE(kvfFreeTimer(timer));
    ASSERT_EQ(kvfNewTimer(2.0f), timer);
    EXPECT_FLOAT_EQ(kvfGetTimerFactor(timer), 4.0f);
    EXPECT_FLOAT_EQ(kvfGetTimerFps(timer), 0.5f);
    // Same tick, then a counter going back: factor 1, fps equal to the rate.
    EXPECT_TRUE(kvfAdjournTimer(timer));
    EXPECT_EQ(kvfGetTimerFactor(timer), 1.0f);
    EXPECT_EQ(kvfGetTimerFps(timer), 2.0f);
    fakeNow -= 10;
    EXPECT_TRUE(kvfAdjournTimer(timer));
    EXPECT_EQ(kvfGetTimerFactor(timer), 1.0f);
    EXPECT_EQ(log.text(), "");
}

TEST_F(Ids, ReleaseMessages)
{
    unsigned int id = kvfNewId();
    EXPECT_FALSE(kvfReleaseId(0));
    EXPECT_FALSE(kvfReleaseId(70000));
    EXPECT_FALSE(kvfReleaseId(65536));
    EXPECT_FALSE(kvfReleaseId(65535));
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
    unsigned int last = 0;
    for (unsigned int expected = 4; expected <= 65535; ++expected) {
        last = kvfNewId();
        if (last != expected)
            break;
    }
    EXPECT_EQ(last, 65535u);
    EXPECT_EQ(kvfNewId(), 0u);
    EXPECT_EQ(log.text(), "kvfNewId: all ID are used\n");
    EXPECT_TRUE(kvfReleaseId(40000));
    EXPECT_EQ(kvfNewId(), 40000u);
}
