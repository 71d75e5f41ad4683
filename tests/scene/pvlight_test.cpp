// Light: the GL calls a light makes for its slot (fixed-point values worked
// out here from the lighting set-up), the choice of lights per object, and
// the log lines of the error paths.
#include <gtest/gtest.h>

#include <string>

#include <pevrano.h>

#include "support/glfixture.h"
#include "support/quadnode.h"

using pvtest::Calls;

namespace {

// What a default light (ambient and specular 0.2, diffuse 0.7, in 16.16) at
// the origin of an identity record programs into slot 1, in the order GL
// receives it, lighting being off before.
const Calls slot1Calls = {"glEnable(GL_LIGHTING)",
                          "glEnable(GL_LIGHT1)",
                          "glLightxv(GL_LIGHT1,GL_AMBIENT,{13107,13107,13107,65536})",
                          "glLightxv(GL_LIGHT1,GL_DIFFUSE,{45875,45875,45875,65536})",
                          "glLightxv(GL_LIGHT1,GL_SPECULAR,{13107,13107,13107,65536})",
                          "glLightx(GL_LIGHT1,GL_SPOT_CUTOFF,11796480)",
                          "glLightx(GL_LIGHT1,GL_SPOT_EXPONENT,0)",
                          "glLightx(GL_LIGHT1,GL_CONSTANT_ATTENUATION,65536)",
                          "glLightx(GL_LIGHT1,GL_LINEAR_ATTENUATION,0)",
                          "glLightx(GL_LIGHT1,GL_QUADRATIC_ATTENUATION,0)",
                          "glLoadMatrixx({65536,0,0,0,0,65536,0,0,0,0,65536,0,0,0,0,65536})",
                          "glLightxv(GL_LIGHT1,GL_POSITION,{0,0,0,65536})",
                          "glLightxv(GL_LIGHT1,GL_SPOT_DIRECTION,{0,0,0})"};

class Light : public pvtest::RecordingTest {
protected:
    // Every case starts with lighting off, whatever ran before it.
    void SetUp() override { PVLIGHT::lightingOff(); }

    // The GL calls of a successful render of the element.
    Calls renderCalls(PVLIGHT& light, PVELEMENT& element)
    {
        bool rendered = false;
        const Calls calls = record([&] { rendered = light.render(&element); });
        EXPECT_TRUE(rendered);
        return calls;
    }
};

TEST_F(Light, DefaultOmniLightProgramsItsSlot)
{
    PVLIGHT light;
    PVELEMENT record;
    record.setParam1(1);
    EXPECT_EQ(slot1Calls, renderCalls(light, record));
    EXPECT_TRUE(PVLIGHT::getLighting());

    // The slot already holds this light's record in this frame: no call.
    EXPECT_EQ(Calls {}, renderCalls(light, record));
    // A changed value forgets the slot: it is programmed again, lighting
    // being on already.
    light.setExponent(2);
    Calls expected(slot1Calls.begin() + 1, slot1Calls.end());
    expected[5] = "glLightx(GL_LIGHT1,GL_SPOT_EXPONENT,131072)";
    EXPECT_EQ(expected, renderCalls(light, record));
    EXPECT_EQ("", log.text());
}

// An unknown type is reported and lit as an omni light; a null record is refused.
TEST_F(Light, UnknownTypeIsLitAsOmniAndNullRecordsAreRefused)
{
    PVLIGHT light;
    light.setLightType(static_cast<PV_LIGHT_TYPE>(5));
    light.setName("lamp");
    light.setCutOff(42);
    light.setDirection(1, 2, 3);
    PVELEMENT record;
    record.setParam1(1);
    Calls expected = slot1Calls;
    expected[5] = "glLightx(GL_LIGHT1,GL_SPOT_CUTOFF,2752512)";
    EXPECT_EQ(expected, renderCalls(light, record));
    EXPECT_FALSE(light.render(nullptr));
    EXPECT_FALSE(PVLIGHT::activateNearest(nullptr));
    EXPECT_EQ("   [!] Consistency broken: unknow type for lamp @ PVLIGHT::render\n"
              "   [!] Invalid params @ PVLIGHT::render\n"
              "   [!] Invalid params @ PVLIGHT::activateNearest\n",
              log.text());
}

// A light that stops being one after the render list has counted it.
class Impostor : public PVLIGHT {
public:
    void becomeCustom() { type = PV_TYPE_CUSTOM; }
};

// Lights and one object passed through the render list, as in a frame.
class NearestLights : public Light {
protected:
    void SetUp() override
    {
        Light::SetUp();
        ASSERT_TRUE(PVELEMENT::init(16));
    }
    void TearDown() override { PVELEMENT::free(); }

    void addLight(PVLIGHT* light, float x)
    {
        light->setPosition(x, 0, 0);
        light->link(&root);
    }
    // Links the object under the lights, passes the scene and returns the
    // object's record.
    PVELEMENT* passScene()
    {
        if (object.isRoot())
            object.link(&root);
        PV_glMatrixMode(GL_MODELVIEW);
        PV_glLoadIdentity();
        PVELEMENT::reset();
        root.pass(false);
        PVELEMENT::sort3D();
        for (unsigned int i = 0; i < PVELEMENT::getNumberOfPassedElements(); i++)
            if (PVELEMENT::getPassedElement(i)->getNode() == &object)
                return PVELEMENT::getPassedElement(i);
        return nullptr;
    }
    // What the render list logs when it starts.
    const std::string allocated = "   16 elements allocated\n";
    PVNODE root;
    pvtest::QuadNode object {1.0f};
};

TEST_F(NearestLights, ExclusiveFirstThenNearestUpToFour)
{
    // The object stands at x = 3; distances: 3, 2, 0.5, 1.5, 4 and 23.
    PVLIGHT lights[6];
    const float xs[6] = {0.0f, 1.0f, 2.5f, 4.5f, 7.0f, -20.0f};
    for (int i = 0; i < 6; i++)
        addLight(&lights[i], xs[i]);
    lights[5].setExclusive(true);
    object.setPosition(3, 0, 0);

    PVELEMENT* record = passScene();
    PVLIGHT::lightingOn();
    recorder.start();
    ASSERT_TRUE(PVLIGHT::activateNearest(record));

    EXPECT_EQ(
        (Calls {"glEnable(GL_LIGHT0)", "glEnable(GL_LIGHT1)", "glEnable(GL_LIGHT2)", "glEnable(GL_LIGHT3)"}),
        recorder.filter("glEnable"));
    const PVLIGHT* nearest[4] = {&lights[5], &lights[2], &lights[3], &lights[1]};
    for (unsigned int i = 0; i < 4; i++) {
        EXPECT_EQ(nearest[i], record->getNearestLight(i)->getNode()) << "slot " << i;
        EXPECT_EQ(i, record->getNearestLight(i)->getParam1()) << "slot " << i;
    }
    record->setNearestLight(4, PVELEMENT::getLight(0));  // no such slot
    EXPECT_EQ(nullptr, record->getNearestLight(4));
    // Each slot is placed with its light's own model-view matrix.
    Calls placements;
    for (const char* x : {"-1310720", "163840", "294912", "65536"})  // -20, 2.5, 4.5 and 1 in 16.16
        placements.push_back(std::string("glLoadMatrixx({65536,0,0,0,0,65536,0,0,0,0,65536,0,") + x +
                             ",0,0,65536})");
    EXPECT_EQ(placements, recorder.filter("glLoadMatrixx"));
    EXPECT_EQ(allocated, log.text());
}

// No light in the list is no failure; with one light, lighting off chooses
// nothing, on fills slot 0 and leaves the rest alone.
TEST_F(NearestLights, NoLightOrOneLightWithLightingOffThenOn)
{
    PVELEMENT* record = passScene();
    PVLIGHT::lightingOn();
    EXPECT_EQ(Calls {}, this->record([&] { EXPECT_TRUE(PVLIGHT::activateNearest(record)); }));

    PVLIGHT lamp;
    addLight(&lamp, 1.0f);
    record = passScene();
    PVLIGHT::lightingOff();
    EXPECT_EQ(Calls {}, this->record([&] { EXPECT_FALSE(PVLIGHT::activateNearest(record)); }));

    PVLIGHT::lightingOn();
    recorder.start();
    ASSERT_TRUE(PVLIGHT::activateNearest(record));
    EXPECT_EQ(Calls {"glEnable(GL_LIGHT0)"}, recorder.filter("glEnable"));
    EXPECT_EQ(&lamp, record->getNearestLight(0)->getNode());
    EXPECT_EQ(allocated, log.text());
}

TEST_F(NearestLights, AnObjectAmongTheLightsAbortsTheActivation)
{
    PVLIGHT nearest;
    Impostor impostor;
    PVLIGHT farthest;
    addLight(&nearest, 1.0f);
    addLight(&impostor, 2.0f);
    addLight(&farthest, 3.0f);
    PVELEMENT* record = passScene();
    impostor.becomeCustom();
    PVLIGHT::lightingOn();
    recorder.start();
    EXPECT_FALSE(PVLIGHT::activateNearest(record));
    EXPECT_EQ(allocated +
                  "   [!] Consistency error: invalid object passed as light @ PVLIGHT::activateNearest\n",
              log.text());
    // The slot programmed before the impostor stays programmed.
    EXPECT_EQ(Calls {"glEnable(GL_LIGHT0)"}, recorder.filter("glEnable"));
    EXPECT_EQ(&nearest, record->getNearestLight(0)->getNode());
}

}  // namespace
