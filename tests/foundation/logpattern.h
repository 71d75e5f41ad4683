// Helpers of the foundation tests: whole-log patterns in which only the times
// and the physical memory figures vary, the figures of a memory summary, log
// restarts and a capture of standard output.
#ifndef PEVRANO_TESTS_FOUNDATION_LOGPATTERN_H
#define PEVRANO_TESTS_FOUNDATION_LOGPATTERN_H

#include <gtest/gtest.h>

#include <cstdio>
#include <pevrano.h>
#include <regex>
#include <string>
#include <unistd.h>

#include "support/logmatch.h"
#include "support/scratch.h"

namespace pvtest {

// Date and time as the banners print them: day/month/year h:m:s.ms, no zeros added.
const std::string dateTimePattern =
    "[0-9]{1,2}/[0-9]{1,2}/[0-9]{4} [0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\\.[0-9]{1,3}";
// Time of an error record: h:m:s.ms.
const std::string clockPattern = "[0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\\.[0-9]{1,3}";
const std::string dashes = "-------------------------------------------------------";

inline std::string textStartBanner()
{
    return literal("[Kolvane foundation 0.4 started at ") + dateTimePattern +
           literal("]\n" + dashes + "\n\n");
}

// The peak line: its byte count is printed signed, so a peak above 2 GB reads negative.
const std::string peakPattern = "Max\\. physical memory usage: ([0-9]+\\.[0-9]{2}) mb \\((-?[0-9]+) bytes\\)";

// End of a text log: separator, memory summary with the given ratio line and
// total line, terminated banner. The peak line's figures are left open.
inline std::string textSummary(const std::string& ratioLine, const std::string& totalLine)
{
    return literal("\n" + dashes + "\n" + ratioLine + "\n") + peakPattern + "\n" +
           literal(totalLine + "\n[Kolvane foundation 0.4 terminated at ") + dateTimePattern + literal("]\n");
}

// Start banner of an HTML log, opening the page itself or not.
inline std::string htmlStartBanner(bool opensPage)
{
    return literal(std::string(opensPage ? "<HTML><BODY>" : "") + "<H4>[Kolvane foundation 0.4 started at ") +
           dateTimePattern + literal("]<BR>\n<HR ALIGN=CENTER WIDTH=\"100%\" SIZE=\"2\"><BR>\n<BR>\n</H4>");
}

// The lines and figures of a log's memory summary.
struct LogSummary {
    bool found = false;
    std::string ratioLine, peakLine, totalLine;
    long ratio = 0, allocations = 0, releases = 0;
    double peakMegabytes = 0, totalMegabytes = 0;
    long long peakBytes = 0, totalBytes = 0;
    bool balanced() const { return found && ratio == allocations - releases; }
};

// Reads the three summary lines, in a text log or an HTML one.
inline LogSummary readSummary(const std::string& log)
{
    static const std::regex pattern("(Final memory ratio: (-?[0-9]+) \\(([0-9]+)/([0-9]+)\\))(?:<BR>)?\n(" +
                                    peakPattern + ")(?:<BR>)?\n(Total allocated memory \\(kvfMalloc\\): " +
                                    "([0-9]+\\.[0-9]{2}) mb \\(([0-9]+) bytes\\))");
    LogSummary s;
    std::smatch m;
    if (!(s.found = std::regex_search(log, m, pattern)))
        return s;
    s.ratioLine = m.str(1);
    s.ratio = std::stol(m.str(2));
    s.allocations = std::stol(m.str(3));
    s.releases = std::stol(m.str(4));
    s.peakLine = m.str(5);
    s.peakMegabytes = std::stod(m.str(6));
    s.peakBytes = std::stoll(m.str(7));
    s.totalLine = m.str(8);
    s.totalMegabytes = std::stod(m.str(9));
    s.totalBytes = std::stoll(m.str(10));
    return s;
}

// Closes whatever log is open and starts a new one, without console echo.
inline void restartLog(const char* name)
{
    kvfShutdown();
    kvfSetConsoleEcho(false);
    ASSERT_TRUE(kvfInit(name));
}

// Redirects standard output into a file for its lifetime.
class StdoutCapture {
public:
    StdoutCapture() : path_(std::string(P_tmpdir) + "/pevrano-stdout-XXXXXX")
    {
        fflush(stdout);
        saved_ = dup(1);
        int fd = mkstemp(&path_[0]);
        dup2(fd, 1);
        close(fd);
    }
    ~StdoutCapture()
    {
        restore();
        unlink(path_.c_str());
    }
    // Everything written so far; standard output is restored first.
    std::string text()
    {
        restore();
        return readFile(path_);
    }

private:
    void restore()
    {
        if (saved_ < 0)
            return;
        fflush(stdout);
        dup2(saved_, 1);
        close(saved_);
        saved_ = -1;
    }
    std::string path_;
    int saved_ = -1;
};

}  // namespace pvtest

#endif
