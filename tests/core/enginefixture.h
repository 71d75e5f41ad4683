// Fixture of the tests that start the whole engine (scratch directory, log
// capture, GL call recorder; the engine is stopped at the end of the case),
// the expected log of its start-up, read from data/expected, and readers of
// the shadow and GL matrix tops.
#ifndef PEVRANO_TESTS_CORE_ENGINEFIXTURE_H
#define PEVRANO_TESTS_CORE_ENGINEFIXTURE_H

#include <GLES/gl.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/pevrano.h"
#include "core/pvgl.h"
#include "core/pvsettings.h"
#include "support/glfixture.h"
#include "support/viewmath.h"

namespace pvtest {

class EngineTest : public RecordingTest {
protected:
    void start(PVSETTINGS settings = PVSETTINGS()) { ASSERT_TRUE(PEVRANO::init(&settings)) << log.text(); }
    void TearDown() override
    {
        recorder.stop();
        PEVRANO::free();
    }
};

inline PVSETTINGS landscapeSettings()
{
    PVSETTINGS settings;
    settings.setLandscape(true);
    return settings;
}

// True when the tests run against an X server (SDL's X11 window path).
inline bool onX11() { return std::getenv("DISPLAY") && *std::getenv("DISPLAY"); }

// GL's viewport: x, y, width, height.
inline std::array<GLint, 4> viewportInForce()
{
    std::array<GLint, 4> viewport = {-1, -1, -1, -1};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    return viewport;
}

using Matrix = std::array<float, 16>;

// The top of a shadow matrix stack (PV_GL_MODELVIEW_STACK or
// PV_GL_PROJECTION_STACK); a stack the wrapper does not keep leaves -12345s.
inline Matrix shadowMatrix(int which)
{
    Matrix m;
    m.fill(-12345.0f);
    PV_glGetFloatv(which, m.data());
    return m;
}

// The top of one of GL's own matrix stacks (GL_*_MATRIX).
inline Matrix glMatrix(GLenum which)
{
    Matrix m {};
    glGetFloatv(which, m.data());
    return m;
}

inline void expectMatrixNear(const Matrix& actual, const Mat4& expected, double tolerance, const char* what)
{
    expectMatrixNear(expected, actual.data(), what, tolerance);
}

// The expected log of the engine's start-up with no settings given; given
// settings, there is no "Standard configuration used" line and the requested
// sizes are theirs.
inline std::vector<LogLine> initLines(PVSETTINGS* settings = nullptr)
{
    std::vector<LogLine> lines = readLogLines(PEVRANO_TEST_DATA "/expected/init.log");
    if (!settings)
        return lines;
    lines.erase(lines.begin() + 3);
    const auto number = [](int value) { return std::to_string(unsigned(value)); };
    lines[5] =
        exact("          X: " + number(settings->getWindowX()) + ", Y: " + number(settings->getWindowY()));
    lines[6] = exact("          depth: " + number(settings->getColorDepth()) + ", zeta: " +
                     number(settings->getZetaDepth()) + ", stencil: " + number(settings->getStencilDepth()));
    return lines;
}

}  // namespace pvtest

#endif
