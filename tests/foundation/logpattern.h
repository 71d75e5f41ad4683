// Helpers of the foundation tests: whole-log patterns in which only the times
// and the physical memory figures vary, the lines of a memory summary and log
// restarts.
#ifndef PEVRANO_TESTS_FOUNDATION_LOGPATTERN_H
#define PEVRANO_TESTS_FOUNDATION_LOGPATTERN_H

#include <gtest/gtest.h>

#include <cstdio>
#include <pevrano.h>
#include <regex>
#include <string>

#include "support/logmatch.h"
#include "support/scratch.h"

namespace pvtest {

// Date and time as the banners print them: day/month/year h:m:s.ms, no zeros added.
const std::string dateTimePattern =
    "[0-9]{1,2}/[0-9]{1,2}/[0-9]{4} [0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\\.[0-9]{1,3}";
// Time of an error record: h:m:s.ms.
const std::string clockPattern = "[0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\\.[0-9]{1,3}";
const std::string dashes = "-------------------------------------------------------";

// The peak line: its byte count is printed signed, so a peak above 2 GB reads negative.
const std::string peakPattern = "Max\\. physical memory usage: ([0-9]+\\.[0-9]{2}) mb \\((-?[0-9]+) bytes\\)";

// Start banner of an HTML log, opening the page itself or not.
inline std::string htmlStartBanner(bool opensPage)
{
    return literal(std::string(opensPage ? "<HTML><BODY>" : "") + "<H4>[Kolvane foundation 0.4 started at ") +
           dateTimePattern + literal("]<BR>\n<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\"><BR>\n<BR>\n</H4>");
}

// The three lines of a log's memory summary, text or HTML, and the counts they give.
struct LogSummary {
    std::string ratioLine, peakLine, totalLine;
    long ratio = -1, allocations = 0, releases = 0;
    long long totalBytes = 0;
    bool balanced() const { return ratio == allocations - releases; }
};

inline LogSummary readSummary(const std::string& log)
{
    static const std::regex pattern("(Final memory ratio: [^<\n]*)(?:<BR>)?\n(Max\\. [^<\n]*)(?:<BR>)?\n"
                                    "(Total allocated memory \\(kvfMalloc\\): [^<\n]*)");
    LogSummary s;
    std::smatch m;
    if (std::regex_search(log, m, pattern)) {
        s = {m.str(1), m.str(2), m.str(3)};
        sscanf(s.ratioLine.c_str(), "Final memory ratio: %ld (%ld/%ld)", &s.ratio, &s.allocations,
               &s.releases);
        sscanf(s.totalLine.c_str(), "%*[^)]): %*f mb (%lld", &s.totalBytes);
    }
    return s;
}

// Closes whatever log is open and starts a new one, without console echo.
inline void restartLog(const char* name)
{
    kvfShutdown();
    kvfSetConsoleEcho(false);
    ASSERT_TRUE(kvfInit(name));
}

}  // namespace pvtest

#endif
