// An engine freed and started again in the same process draws on a new GL
// context, which starts with every capability and client array off. The
// cached switches must describe that context, not the one released: the
// second start-up issues the same GL calls and log as the first, every switch
// reaches GL the first time it is turned on, and a lit quad comes out in the
// colour the lighting equation gives, as it did the first time.
#include <gtest/gtest.h>

#include <string>

#include <pevrano.h>

#include "scene/scenefixture.h"
#include "support/quadnode.h"
#include "support/switches.h"

using namespace pvtest;

namespace {

// The scene: a white lit quad facing +z at the origin, a directional light
// shining straight at it along -z, a camera on the z axis.
const Rgb globalAmbient = {0.1, 0.1, 0.1};
const Rgb lightAmbient = {0.1, 0.0, 0.05};
const Rgb lightDiffuse = {0.3, 0.5, 0.2};

// Light along the normal (N.L = 1), no attenuation for a directional light.
// Far from the white an unlit quad would show.
const Rgb expectedLitColour = litWhite(globalAmbient, {lightAmbient, lightDiffuse, 1.0, 1.0});

class EngineStartedAgain : public RecordingTest {
protected:
    void SetUp() override
    {
        // Cases that drive the lighting switch without an engine may have
        // left it on; this case starts from a process as it was loaded.
        PVLIGHT::lightingOff();
        // Stored now, applied by every start-up.
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        PVOPENGL::setGlobalAmbientLight(float(globalAmbient.r), float(globalAmbient.g),
                                        float(globalAmbient.b), 1.0f);
    }
    void TearDown() override { PEVRANO::free(); }

    // Starts the engine: the GL calls of the start-up go to startCalls and
    // its log lines to startLog.
    void start(Calls& startCalls, std::string& startLog)
    {
        const size_t logBefore = log.text().size();
        bool started = false;
        startCalls = record([&] { started = startEngineInWindow(); });
        ASSERT_TRUE(started) << log.text();
        startLog = log.text().substr(logBefore);
    }

    // Builds the scene (the engine's shut-down deletes every node), draws
    // one 3D frame of it and reads the pixel at the quad's centre.
    static Rgb drawLitQuad()
    {
        PVNODE* root = new PVNODE();
        PVLIGHT* light = new PVLIGHT();
        light->setLightType(PV_LIGHT_DIRECTIONAL);
        light->setDirection(0.0f, 0.0f, -1.0f);
        light->setAmbient(float(lightAmbient.r), float(lightAmbient.g), float(lightAmbient.b), 1.0f);
        light->setDiffuse(float(lightDiffuse.r), float(lightDiffuse.g), float(lightDiffuse.b), 1.0f);
        light->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
        light->link(root);
        pvtest::QuadNode* quad = new pvtest::QuadNode(2.0f);
        quad->setLit(true);
        quad->link(root);
        PVCAMERA* camera = new PVCAMERA();
        camera->setPosition(0.0f, 0.0f, 12.0f);

        drawFrame(root, camera);
        // The camera looks at the quad's centre: the middle of the window.
        return pixelAt(windowWidth / 2, windowHeight / 2);
    }

    // A first engine that draws, leaves every cached switch on and shuts
    // down; then the second start-up.
    void startTwice()
    {
        ASSERT_NO_FATAL_FAILURE(start(firstCalls, firstLog));
        firstColour = drawLitQuad();
        for (const Switch& s : cachedSwitches)
            s.on();
        ASSERT_TRUE(PEVRANO::free());
        ASSERT_NO_FATAL_FAILURE(start(secondCalls, secondLog));
    }

    Calls firstCalls, secondCalls;
    std::string firstLog, secondLog;
    Rgb firstColour = {0, 0, 0};
};

TEST_F(EngineStartedAgain, StartsUpAsTheFirstTimeAndDrawsTheLitQuadInTheSameColour)
{
    ASSERT_NO_FATAL_FAILURE(startTwice());
    EXPECT_EQ(firstCalls, secondCalls);
    EXPECT_NE("", firstLog);
    EXPECT_EQ(firstLog, secondLog);

    // The start-up turns culling on; each other switch reaches GL at its first turn.
    EXPECT_TRUE(PVOPENGL::isCulled());
    Calls expected;
    for (const Switch& s : cachedSwitches)
        if (s.capability != GL_CULL_FACE)
            expected.push_back(s.onCall);
    EXPECT_EQ(expected, record([] {
                  for (const Switch& s : cachedSwitches)
                      s.on();
              }))
        << recorder.text();
    for (const Switch& s : cachedSwitches)
        s.off();

    expectColour(expectedLitColour, firstColour, "first engine");
    expectColour(expectedLitColour, drawLitQuad(), "second engine");
}

}  // namespace
