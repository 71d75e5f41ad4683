// Helpers of the foundation tests: whole-log patterns in which only the times
// and the physical memory figures vary, and a capture of standard output.
#ifndef PEVRANO_TESTS_FOUNDATION_LOGPATTERN_H
#define PEVRANO_TESTS_FOUNDATION_LOGPATTERN_H

#include <cstdio>
#include <regex>
#include <string>
#include <unistd.h>

#include "support/scratch.h"

namespace pvtest {

// The text as a regular expression matching exactly itself.
inline std::string literal(const std::string& text) {
    static const std::string special = "\\^$.|?*+()[]{}";
    std::string out;
    for (char c : text) {
        if (special.find(c) != std::string::npos) out += '\\';
        out += c;
    }
    return out;
}

// Date and time as the banners print them: day/month/year h:m:s.ms, no zeros added.
const std::string dateTimePattern =
    "[0-9]{1,2}/[0-9]{1,2}/[0-9]{4} [0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\\.[0-9]{1,3}";
// Time of an error record: h:m:s.ms.
const std::string clockPattern = "[0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}\\.[0-9]{1,3}";
const std::string dashes = "-------------------------------------------------------";

inline std::string textStartBanner() {
    return literal("[Kolvane foundation 0.4 started at ") + dateTimePattern +
           literal("]\n" + dashes + "\n\n");
}

// End of a text log: separator, memory summary with the given ratio line and
// total line, terminated banner. The peak line's figures are left open; its
// byte count is printed signed, so a peak above 2 GB reads negative.
inline std::string textSummary(const std::string& ratioLine, const std::string& totalLine) {
    return literal("\n" + dashes + "\n" + ratioLine + "\n") +
           "Max\\. physical memory usage: [0-9]+\\.[0-9]{2} mb \\(-?[0-9]+ bytes\\)\n" +
           literal(totalLine + "\n[Kolvane foundation 0.4 terminated at ") + dateTimePattern +
           literal("]\n");
}

inline bool matchesWhole(const std::string& text, const std::string& pattern) {
    return std::regex_match(text, std::regex(pattern));
}

// Redirects standard output into a file for its lifetime.
class StdoutCapture {
public:
    StdoutCapture() : path_(std::string(P_tmpdir) + "/pevrano-stdout-XXXXXX") {
        fflush(stdout);
        saved_ = dup(1);
        int fd = mkstemp(&path_[0]);
        dup2(fd, 1);
        close(fd);
    }
    ~StdoutCapture() {
        restore();
        unlink(path_.c_str());
    }
    // Everything written so far; standard output is restored first.
    std::string text() {
        restore();
        return readFile(path_);
    }

private:
    void restore() {
        if (saved_ < 0) return;
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
