#include "support/logmatch.h"

#include <gtest/gtest.h>

#include <pevrano.h>

#include <fstream>
#include <regex>
#include <sstream>

#include "foundation/kvflogsink.h"

namespace pvtest {

// The capture is the log's sink for its lifetime: it receives every message
// exactly as the text log receives it. Echo to the console is turned off, so
// that the test output stays readable.
LogCapture::LogCapture()
{
    kvfSetConsoleEcho(false);
    kvfSetLogSink(&LogCapture::receive, this);
}

LogCapture::~LogCapture() { kvfSetLogSink(nullptr, nullptr); }

void LogCapture::receive(const char* message, void* capture)
{
    static_cast<LogCapture*>(capture)->text_ += message;
}

std::string LogCapture::fresh()
{
    const std::string recent = text_.substr(seen_);
    seen_ = text_.size();
    return recent;
}

static std::vector<std::string> splitLines(const std::string& text)
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

std::vector<LogLine> readLogLines(const std::string& path)
{
    std::ifstream file(path);
    EXPECT_TRUE(file.good()) << path;
    std::vector<LogLine> lines;
    std::string line;
    while (std::getline(file, line)) {
        const std::string text = line.size() > 2 ? line.substr(2) : "";
        lines.push_back(line[0] == '~' ? like(text) : line[0] == '>' ? startingWith(text) : exact(text));
    }
    return lines;
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
