#include <pevrano.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

#include "support/scratch.h"

using namespace pvtest;

namespace {

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
        "Max\\. physical memory usage: ([0-9]+\\.[0-9]{2}) mb \\(([0-9]+) bytes\\)\n"
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

// Megabytes as the summary prints them, with two decimals.
double printedMegabytes(long long bytes) {
    char text[32];
    snprintf(text, sizeof text, "%.2f", bytes / 1048576.0);
    return std::stod(text);
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
    EXPECT_GT(second.peakBytes, 0);
    EXPECT_DOUBLE_EQ(second.peakMegabytes, printedMegabytes(second.peakBytes));
    kvfFree(kept);
}

TEST(Memory, PeakOfPhysicalMemoryNeverFalls) {
    kvfInit(nullptr);
    unsigned long long previous = kvfGetMemoryStats().peakPhysical;
    EXPECT_GT(previous, 0u);
    for (int i = 0; i < 20; ++i) {
        kvfFree(kvfMalloc(1 << 20));
        unsigned long long peak = kvfGetMemoryStats().peakPhysical;
        EXPECT_GE(peak, previous);
        previous = peak;
    }
}
