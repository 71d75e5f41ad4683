// The engine's log as the tests see it. LogCapture collects what the engine
// logs from its construction on (as the log's sink, so the log file itself
// stays as it is); fresh() returns only what came since its
// previous call. expectLog compares a log text with the expected lines, each
// one exact, a regular expression or a prefix: nothing more, nothing less.
// Log texts are byte-exact: expect whole lines, never fragments.
#ifndef PEVRANO_TESTS_SUPPORT_LOGMATCH_H
#define PEVRANO_TESTS_SUPPORT_LOGMATCH_H

#include <string>
#include <vector>

namespace pvtest {

class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Everything logged since the capture started.
    const std::string& text() const { return text_; }
    // What was logged since the previous call.
    std::string fresh();

private:
    static void receive(const char* message, void* capture);

    std::string text_;
    size_t seen_ = 0;
};

struct LogLine {
    enum Kind { EXACT, PATTERN, PREFIX } kind;
    std::string text;
};
inline LogLine exact(const std::string& text) { return {LogLine::EXACT, text}; }
inline LogLine like(const std::string& pattern) { return {LogLine::PATTERN, pattern}; }
inline LogLine startingWith(const std::string& prefix) { return {LogLine::PREFIX, prefix}; }
inline void append(std::vector<LogLine>& to, const std::vector<LogLine>& lines)
{
    to.insert(to.end(), lines.begin(), lines.end());
}

// The expected lines of a file, one a line, each tagged by its first character
// and a space: '=' exact, '~' a regular expression, '>' a prefix.
std::vector<LogLine> readLogLines(const std::string& path);

// The text, line by line, against the expected lines; the text ends with a line feed.
void expectLog(const std::string& text, const std::vector<LogLine>& expected);

// The text as a regular expression matching exactly itself.
std::string literal(const std::string& text);
bool matchesWhole(const std::string& text, const std::string& pattern);

}  // namespace pvtest

#endif
