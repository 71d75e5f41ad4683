#include <pevrano.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <dlfcn.h>
#include <string>

#include "foundation/kvfplatform.h"
#include "foundation/logpattern.h"
#include "support/scratch.h"

using namespace pvtest;

// The library's readings of the physical memory in use resolve to this
// definition in the test executable, so a test can set the figure; otherwise
// it answers with the library's own reading.
namespace {
bool fakeMemory = false;
unsigned long long fakeInUse = 0;
}  // namespace

unsigned long long kvfPhysicalMemoryInUse()
{
    if (fakeMemory)
        return fakeInUse;
    using Reading = unsigned long long (*)();
    static Reading real = reinterpret_cast<Reading>(dlsym(RTLD_NEXT, "_Z22kvfPhysicalMemoryInUsev"));
    return real ? real() : 0;
}

namespace {

struct FakeMemory {
    explicit FakeMemory(unsigned long long inUse)
    {
        fakeMemory = true;
        fakeInUse = inUse;
    }
    ~FakeMemory() { fakeMemory = false; }
};

// Megabytes as the summary prints them: divided in single precision, two decimals.
double printedMegabytes(unsigned int bytes)
{
    char text[32];
    snprintf(text, sizeof text, "%.2f", static_cast<float>(bytes) / 1048576.0f);
    return std::stod(text);
}

// The 32-bit peak behind a byte count that the summary printed signed.
unsigned int peakFromPrinted(long long printed)
{
    return static_cast<unsigned int>(printed < 0 ? printed + 4294967296LL : printed);
}

const long idTableBytes = 262144;

}  // namespace

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
    void* released = kvfMalloc(48576);
    kvfFree(released);
    kvfShutdown();
    LogSummary second = readSummary(readFile("second.txt"));
    ASSERT_TRUE(second.found) << readFile("second.txt");
    EXPECT_EQ(second.ratio, first.ratio + 1);
    EXPECT_EQ(second.allocations, first.allocations + 3);
    EXPECT_EQ(second.releases, first.releases + 2);
    EXPECT_EQ(second.totalBytes, first.totalBytes + idTableBytes + 1000 + 48576);
    EXPECT_DOUBLE_EQ(second.totalMegabytes, printedMegabytes(second.totalBytes));
    EXPECT_NE(second.peakBytes, 0);
    EXPECT_DOUBLE_EQ(second.peakMegabytes, printedMegabytes(peakFromPrinted(second.peakBytes)));
    kvfFree(kept);
}

TEST(Memory, PeakIsTakenAtInitAndAfterEachAllocation)
{
    ScratchDir dir;
    FakeMemory memory(100000000);
    // The start sets the peak to the use of the moment, lower than before.
    restartLog("peak.txt");
    EXPECT_EQ(kvfGetMemoryStats().peakPhysical, 100000000u);
    fakeInUse = 50000000;
    void* block = kvfMalloc(16);
    EXPECT_EQ(kvfGetMemoryStats().peakPhysical, 100000000u);
    // A release does not look at the memory in use, an allocation does.
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
}

TEST(Memory, PeakAbove2GigabytesPrintsSigned)
{
    ScratchDir dir;
    FakeMemory memory(3000000000ULL);
    restartLog("peak.txt");
    kvfShutdown();
    // 3,000,000,000 / 1,048,576 = 2861.0229...; as a signed 32-bit number the
    // byte count is 3,000,000,000 - 4,294,967,296.
    EXPECT_EQ(readSummary(readFile("peak.txt")).peakLine,
              "Max. physical memory usage: 2861.02 mb (-1294967296 bytes)");
}
