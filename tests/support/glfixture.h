// Test fixtures: a scratch directory, the log captured from the start of the
// case and a GL call recorder; optionally an off-screen GL context current.
#ifndef PEVRANO_TESTS_SUPPORT_GLFIXTURE_H
#define PEVRANO_TESTS_SUPPORT_GLFIXTURE_H

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/glcontext.h"
#include "support/glrecorder.h"
#include "support/logmatch.h"
#include "support/scratch.h"

namespace pvtest {

using Calls = std::vector<std::string>;

// The calls of a file, one a line.
inline Calls readCalls(const std::string& path)
{
    Calls calls;
    std::istringstream lines(readFile(path));
    for (std::string line; std::getline(lines, line);)
        calls.push_back(line);
    return calls;
}

class RecordingTest : public ::testing::Test {
protected:
    // Calls GL received while action ran.
    template <typename Action> Calls record(Action action)
    {
        recorder.start();
        action();
        recorder.stop();
        return recorder.calls();
    }

    ScratchDir dir;
    LogCapture log;
    GlRecorder recorder;
};

class GlContextTest : public RecordingTest {
protected:
    void SetUp() override { ASSERT_TRUE(context.ok()); }

    GlContext context;
};

}  // namespace pvtest

#endif
