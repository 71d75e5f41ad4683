// Fixture of the tests that start the whole engine: scratch directory, log
// capture and GL call recorder; the engine is stopped at the end of the case.
#ifndef PEVRANO_TESTS_CORE_ENGINEFIXTURE_H
#define PEVRANO_TESTS_CORE_ENGINEFIXTURE_H

#include <GLES/gl.h>

#include <array>

#include "core/pevrano.h"
#include "core/pvsettings.h"
#include "displaylog.h"
#include "support/glfixture.h"

namespace pvtest {

class EngineTest : public RecordingTest {
protected:
    void start(PVSETTINGS settings = PVSETTINGS()) { ASSERT_TRUE(PEVRANO::init(&settings)) << log.text(); }
    // The effect switches are class-wide: they are turned back off.
    void TearDown() override
    {
        recorder.stop();
        PEVRANO::wireframeOff();
        PEVRANO::bloomingOff();
        PEVRANO::DOFOff();
        PEVRANO::free();
    }
};

inline PVSETTINGS landscapeSettings()
{
    PVSETTINGS settings;
    settings.setLandscape(true);
    return settings;
}

// GL's viewport: x, y, width, height.
inline std::array<GLint, 4> viewportInForce()
{
    std::array<GLint, 4> viewport = {-1, -1, -1, -1};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    return viewport;
}

}  // namespace pvtest

#endif
