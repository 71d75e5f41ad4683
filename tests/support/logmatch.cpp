#include "support/logmatch.h"

#include <gtest/gtest.h>

#include <pevrano.h>

#include <limits.h>
#include <regex>
#include <sstream>
#include <unistd.h>

#include "support/scratch.h"

namespace pvtest {

// Until the foundation hands its messages to a sink, the capture closes the
// log the library opened at load and opens "pevrano_log.txt" anew in the
// current working directory, without echo, and reads it back.
LogCapture::LogCapture()
{
    char cwd[PATH_MAX];
    path_ = std::string(getcwd(cwd, sizeof cwd) ? cwd : ".") + "/pevrano_log.txt";
    kvfShutdown();
    kvfSetConsoleEcho(false);
    kvfInit("pevrano_log.txt");
    start_ = readFile(path_).size();
}

LogCapture::~LogCapture() = default;

std::string LogCapture::text() const
{
    const std::string whole = readFile(path_);
    return whole.size() > start_ ? whole.substr(start_) : std::string();
}

std::string LogCapture::fresh()
{
    const std::string all = text();
    const std::string recent = all.substr(std::min(seen_, all.size()));
    seen_ = all.size();
    return recent;
}

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line))
        lines.push_back(line);
    return lines;
}

void expectLog(const std::string& text, const std::vector<LogLine>& expected)
{
    const std::vector<std::string> lines = splitLines(text);
    ASSERT_EQ(lines.size(), expected.size()) << text;
    for (size_t i = 0; i < lines.size(); ++i) {
        const LogLine& want = expected[i];
        bool matches = want.kind == LogLine::EXACT    ? lines[i] == want.text
                       : want.kind == LogLine::PREFIX ? lines[i].compare(0, want.text.size(), want.text) == 0
                                                      : matchesWhole(lines[i], want.text);
        EXPECT_TRUE(matches) << "line " << i << ": '" << lines[i] << "' against '" << want.text << "'";
    }
    EXPECT_EQ(text.empty() ? '\n' : text.back(), '\n');
}

std::string literal(const std::string& text)
{
    static const std::string special = "\\^$.|?*+()[]{}";
    std::string out;
    for (char c : text) {
        if (special.find(c) != std::string::npos)
            out += '\\';
        out += c;
    }
    return out;
}

bool matchesWhole(const std::string& text, const std::string& pattern)
{
    return std::regex_match(text, std::regex(pattern));
}

}  // namespace pvtest
