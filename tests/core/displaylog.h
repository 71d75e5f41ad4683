// Expected log lines of the display tests: the engine's start and stop lines,
// read from data/expected.
#ifndef PEVRANO_TESTS_CORE_DISPLAYLOG_H
#define PEVRANO_TESTS_CORE_DISPLAYLOG_H

#include <cstdlib>
#include <string>
#include <vector>

#include "support/logmatch.h"

namespace pvtest {

// True when the tests run against an X server (SDL's X11 window path).
inline bool onX11()
{
    const char* display = std::getenv("DISPLAY");
    return display && *display;
}

// The expected log of the engine's start-up with no settings given, or with
// settings (no "Standard configuration used" line).
inline std::vector<LogLine> initLines(bool standard = true)
{
    std::vector<LogLine> lines = readLogLines(PEVRANO_TEST_DATA "/expected/init.log");
    if (!standard)
        lines.erase(lines.begin() + 3);
    return lines;
}

inline std::vector<LogLine> engineShutdownLines()
{
    return readLogLines(PEVRANO_TEST_DATA "/expected/shutdown.log");
}

// The lines with the first one reading old replaced.
inline std::vector<LogLine> replacing(std::vector<LogLine> lines, const std::string& old, const LogLine& line)
{
    for (LogLine& each : lines)
        if (each.text == old) {
            each = line;
            break;
        }
    return lines;
}

// The lines up to and including the first one expected to read last.
inline std::vector<LogLine> upTo(std::vector<LogLine> lines, const std::string& last)
{
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].text == last) {
            lines.resize(i + 1);
            break;
        }
    return lines;
}

}  // namespace pvtest

#endif
