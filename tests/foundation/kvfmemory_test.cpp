#include <pevrano.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <dlfcn.h>
#include <regex>
#include <string>

#include "foundation/kvfplatform.h"
#include "support/scratch.h"

using namespace pvtest;

// The library's readings of the physical memory in use resolve to this
// definition in the test executable, so a test can set the figure; otherwise
// it answers with the library's own reading.
namespace {
bool fakeMemory = false;
unsigned long long fakeInUse = 0;
}  // namespace

unsigned long long kvfPhysicalMemoryInUse() {
    if (fakeMemory) return fakeInUse;
    using Reading = unsigned long long (*)();
    static Reading real = reinterpret_cast<Reading>(dlsym(RTLD_NEXT, "_Z22kvfPhysicalMemoryInUsev"));
    return real ? real() : 0;
}

namespace {

struct FakeMemory {
    explicit FakeMemory(unsigned long long inUse) {
        fakeMemory = true;
        fakeInUse = inUse;
    }
    ~FakeMemory() { fakeMemory = false; }
};

// The figures of a log's memory summary.
struct SummaryFigures {
    long ratio = 0, allocations = 0, releases = 0;
    double peakMegabytes = 0, totalMegabytes = 0;
    long long peakBytes = 0, totalBytes = 0;
};

bool readSummary(const std::string& log, SummaryFigures& figures) {
    std::smatch m;
    std::regex pattern(
        "Final memory ratio: (-?[0-9]+) \\(([0-9]+)/([0-9]+)\\)\n"
        "Max\\. physical memory usage: ([0-9]+\\.[0-9]{2}) mb \\((-?[0-9]+) bytes\\)\n"
        "Total allocated memory \\(kvfMalloc\\): ([0-9]+\\.[0-9]{2}) mb \\(([0-9]+) bytes\\)\n");
    if (!std::regex_search(log, m, pattern)) return false;
    figures.ratio = std::stol(m.str(1));
    figures.allocations = std::stol(m.str(2));
    figures.releases = std::stol(m.str(3));
    figures.peakMegabytes = std::stod(m.str(4));
    figures.peakBytes = std::stoll(m.str(5));
    figures.totalMegabytes = std::stod(m.str(6));
    figures.totalBytes = std::stoll(m.str(7));
    return true;
}

// Megabytes as the summary prints them: divided in single precision, two decimals.
double printedMegabytes(unsigned int bytes) {
    char text[32];
    snprintf(text, sizeof text, "%.2f", static_cast<float>(bytes) / 1048576.0f);
    return std::stod(text);
}

// The 32-bit peak behind a byte count that the summary printed signed.
unsigned int peakFromPrinted(long long printed) {
    return static_cast<unsigned int>(printed < 0 ? printed + 4294967296LL : printed);
}

// The peak line of a text log ("" when there is none).
std::string peakLine(const std::string& log) {
    std::smatch m;
    std::regex pattern("Max\\. physical memory usage: [^\n]*\n");
    return std::regex_search(log, m, pattern) ? m.str(0) : "";
}

// Restarts the log in the current directory without console echo.
void restartLog(const char* name) {
    kvfShutdown();
    kvfSetConsoleEcho(false);
    ASSERT_TRUE(kvfInit(name));
}

const long idTableBytes = 262144;

}  // namespace

TEST(Memory, CountersAfterOneBlock) {
    kvfMemoryStats before = kvfGetMemoryStats();
    void* block = kvfMalloc(100);
    ASSERT_NE(block, nullptr);
    kvfFree(block);
    kvfMemoryStats after = kvfGetMemoryStats();
    EXPECT_EQ(after.ratio, before.ratio);
    EXPECT_EQ(after.allocations, before.allocations + 1);
    EXPECT_EQ(after.releases, before.releases + 1);
    EXPECT_EQ(after.totalBytes, before.totalBytes + 100);
}

TEST(Memory, SummaryReportsBalanceCountsAndTotal) {
    ScratchDir dir;
    LogCapture capture;
    kvfShutdown();
    SummaryFigures first;
    ASSERT_TRUE(readSummary(capture.whole(), first)) << capture.whole();

    // A new start takes the identifier table again; the shut-down gives it back.
    ASSERT_TRUE(kvfInit("second.txt"));
    void* kept = kvfMalloc(1000);
    void* released = kvfMalloc(48576);
    kvfFree(released);
    kvfShutdown();
    SummaryFigures second;
    ASSERT_TRUE(readSummary(readFile("second.txt"), second)) << readFile("second.txt");
    EXPECT_EQ(second.ratio, first.ratio + 1);
    EXPECT_EQ(second.allocations, first.allocations + 3);
    EXPECT_EQ(second.releases, first.releases + 2);
    EXPECT_EQ(second.totalBytes, first.totalBytes + idTableBytes + 1000 + 48576);
    EXPECT_DOUBLE_EQ(second.totalMegabytes, printedMegabytes(second.totalBytes));
    EXPECT_NE(second.peakBytes, 0);
    EXPECT_DOUBLE_EQ(second.peakMegabytes, printedMegabytes(peakFromPrinted(second.peakBytes)));
    kvfFree(kept);
}

TEST(Memory, PeakIsTakenAtInitAndAfterEachAllocation) {
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
    EXPECT_EQ(peakLine(readFile("peak.txt")), "Max. physical memory usage: 190.73 mb (200000000 bytes)\n");
}

TEST(Memory, PeakAbove2GigabytesPrintsSigned) {
    ScratchDir dir;
    FakeMemory memory(3000000000ULL);
    restartLog("peak.txt");
    kvfShutdown();
    // 3,000,000,000 / 1,048,576 = 2861.0229...; as a signed 32-bit number the
    // byte count is 3,000,000,000 - 4,294,967,296.
    EXPECT_EQ(peakLine(readFile("peak.txt")), "Max. physical memory usage: 2861.02 mb (-1294967296 bytes)\n");
}

TEST(Memory, PeakOfTheRealMemoryNeverFalls) {
    kvfInit(nullptr);
    unsigned int previous = kvfGetMemoryStats().peakPhysical;
    EXPECT_GT(previous, 0u);
    for (int i = 0; i < 20; ++i) {
        kvfFree(kvfMalloc(1 << 20));
        unsigned int peak = kvfGetMemoryStats().peakPhysical;
        EXPECT_GE(peak, previous);
        previous = peak;
    }
}
