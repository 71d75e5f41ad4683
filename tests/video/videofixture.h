// Shared by the video tests: the clips under tests/data/video, a fixture that
// points the video path at them, and a driver that steps a video one parse
// step at a time until it reopens its file at the end.
#ifndef PEVRANO_TESTS_VIDEO_VIDEOFIXTURE_H
#define PEVRANO_TESTS_VIDEO_VIDEOFIXTURE_H

#include <functional>
#include <string>

#include <pevrano.h>

#include "support/glfixture.h"

namespace pvtest {

inline std::string loadingLine(const std::string& name)
{
    return "\n   Loading MPG file '" + name + "'...\n";
}

inline size_t occurrences(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        count++;
    return count;
}

// Every video test finds its clips through the video path; the registry and
// the path are class-wide and are reset after each case.
template <class Base> class VideoFixture : public Base {
protected:
    void SetUp() override
    {
        Base::SetUp();
        PVVIDEO::setMPGPath(PEVRANO_VIDEO_DATA);
    }
    void TearDown() override
    {
        PVVIDEO::cleanUp();
        PVVIDEO::setMPGPath(nullptr);
        Base::TearDown();
    }

    // Runs single steps, each followed by afterStep when given, until the log
    // shows the file opened once more than before (the end of the file was
    // reached), at most 10000 steps. Returns the steps taken, or -1 when the
    // end never came.
    int stepsToEnd(PVVIDEO& video, const std::string& name, const std::function<void()>& afterStep = {})
    {
        const size_t loadsBefore = occurrences(this->log.text(), loadingLine(name));
        for (int steps = 1; steps <= 10000; steps++) {
            video.update(1);
            if (afterStep)
                afterStep();
            if (occurrences(this->log.text(), loadingLine(name)) > loadsBefore)
                return steps;
        }
        return -1;
    }
};

}  // namespace pvtest

#endif
