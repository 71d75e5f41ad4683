#include <dlfcn.h>

#include "foundation/kvfplatform.h"
#include "foundation/logpattern.h"

using namespace pvtest;

// The library's readings of the physical memory in use resolve to this
// definition in the test executable, so a test can set the figure; while it
// is 0 the library's own reading answers.
static unsigned long long fakeInUse = 0;

unsigned long long kvfPhysicalMemoryInUse()
{
    if (fakeInUse)
        return fakeInUse;
    using Reading = unsigned long long (*)();
    static Reading real = reinterpret_cast<Reading>(dlsym(RTLD_NEXT, "_Z22kvfPhysicalMemoryInUsev"));
    return real ? real() : 0;
}

TEST(Memory, SummaryReportsBalanceCountsAndTotal)
{
    ScratchDir dir;
    restartLog("first.txt");
    kvfShutdown();
    LogSummary first = readSummary(readFile("first.txt"));
    ASSERT_TRUE(first.balanced()) << readFile("first.txt");

    // A new start takes the identifier table again; the shut-down gives it back.
    ASSERT_TRUE(kvfInit("second.txt"));
    void* kept = kvfMalloc(1000);
    kvfFree(kvfMalloc(48576));
    kvfShutdown();
    LogSummary second = readSummary(readFile("second.txt"));
    EXPECT_EQ(second.ratio, first.ratio + 1);
    EXPECT_EQ(second.allocations, first.allocations + 3);
    EXPECT_EQ(second.releases, first.releases + 2);
    EXPECT_EQ(second.totalBytes, first.totalBytes + 262144 + 1000 + 48576);
    EXPECT_GT(kvfGetMemoryStats().peakPhysical, 0u);
    kvfFree(kept);
}

// The start sets the peak to the use of the moment, even lower than before; an
// allocation raises it, a release does not look. The byte count is printed
// signed, so a peak above 2 GB reads negative.
TEST(Memory, PeakIsTakenAtInitAndAfterEachAllocation)
{
    ScratchDir dir;
    fakeInUse = 100000000;
    restartLog("peak.txt");
    EXPECT_EQ(kvfGetMemoryStats().peakPhysical, 100000000u);
    fakeInUse = 50000000;
    void* block = kvfMalloc(16);
    EXPECT_EQ(kvfGetMemoryStats().peakPhysical, 100000000u);
    fakeInUse = 300000000;
    kvfFree(block);
    EXPECT_EQ(kvfGetMemoryStats().peakPhysical, 100000000u);
    fakeInUse = 200000000;
    kvfFree(kvfMalloc(16));
    fakeInUse = 250000000;
    kvfShutdown();
    // 200,000,000 / 1,048,576 = 190.7348...
    EXPECT_EQ(readSummary(readFile("peak.txt")).peakLine,
              "Max. physical memory usage: 190.73 mb (200000000 bytes)");
    fakeInUse = 3000000000ULL;
    restartLog("high.txt");
    kvfShutdown();
    // 3,000,000,000 / 1,048,576 = 2861.0229...; 3,000,000,000 - 4,294,967,296.
    EXPECT_EQ(readSummary(readFile("high.txt")).peakLine,
              "Max. physical memory usage: 2861.02 mb (-1294967296 bytes)");
}
