// Emitters drawn through the engine's frame: particles land where their
// parent and the perspective put them, coloured and sized between birth and
// death; additive particles only add light, and only inside their cone; every
// emitter draws in one call; the pool takes its size from the settings.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "assets/tgafile.h"
#include "scene/scenefixture.h"

using namespace pvtest;

namespace {

class EmitterFrames : public RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        root = new PVNODE();
    }
    void TearDown() override { PEVRANO::free(); }

    PVEMITTER* addEmitter(const std::string& description, Vec3 at, PVNODE* parent = nullptr)
    {
        PVEMITTER* emitter = new PVEMITTER();
        EXPECT_TRUE(emitter->loadFromText(description.c_str(), "test")) << log.text();
        emitter->setAutoUpdate(false);
        emitter->setPosition(float(at.x), float(at.y), float(at.z));
        emitter->link(parent ? parent : root);
        return emitter;
    }

    PVNODE* root = nullptr;
};

TEST_F(EmitterFrames, ParticlesFollowTheirParentAndBlendFromBirthToDeath)
{
    PVNODE* parent = new PVNODE();
    parent->setPosition(1.0f, 0.5f, -5.0f);
    parent->link(root);
    PVEMITTER* emitter =
        addEmitter("<emitter particles='1' blending='alpha'><emission rate='0'><burst count='1'/>"
                   "</emission><life min='1' max='1'/><velocity speedMin='0' speedMax='0'/>"
                   "<birth r='1' g='0' b='0' a='1' size='1'/><death r='0' g='0' b='1' a='1' "
                   "size='0.5'/></emitter>",
                   {0, 0, 0}, parent);
    const struct {
        float step, t;  // seconds to advance, resulting fraction of life
    } ages[] = {{0.125f, 0.0f}, {0.5f, 0.5f}, {0.375f, 0.875f}};
    for (const auto& age : ages) {
        emitter->update(age.step);
        drawFrame(root, nullptr);
        const Rgb colour = {1.0 - age.t, 0.0, age.t};
        const double half = 0.5 * (1.0 - 0.5 * age.t);
        const std::string what = "at " + std::to_string(age.t) + " of its life";
        expectColour(colour, pixelOfPoint(1, 0.5, -5), what + ", centre");
        for (const Vec3 c : {Vec3 {-1, -1, 0}, Vec3 {1, 1, 0}, Vec3 {1, -1, 0}}) {
            expectColour(colour, pixelOfPoint(1 + 0.8 * half * c.x, 0.5 + 0.8 * half * c.y, -5),
                         what + ", inside");
            expectColour({0, 0, 0}, pixelOfPoint(1 + 1.2 * half * c.x, 0.5 + 1.2 * half * c.y, -5),
                         what + ", beyond");
        }
    }
}

TEST_F(EmitterFrames, AdditiveParticlesBrightenOnlyInsideTheirCone)
{
    const double grey = 0.25;
    PVOPENGL::setBackgroundColor(float(grey), float(grey), float(grey), 1.0f);
    PVEMITTER* emitter =
        addEmitter("<emitter particles='500' seed='9'><emission rate='200'/><life min='1' max='1.5'/>"
                   "<velocity x='0' y='1' z='0' speedMin='1' speedMax='2' spread='15'/>"
                   "<birth r='0' g='0.25' b='0' a='1' size='0.1'/>"
                   "<death r='0' g='0.25' b='0' a='1' size='0.1'/></emitter>",
                   {0, -1, -8});
    for (int frame = 0; frame < 12; frame++)
        emitter->update(0.125f);
    drawFrame(root, nullptr);

    // The cone, 3 units long, with the particles' half size around it, fits
    // in a box whose nearer face bounds every pixel the emitter may touch.
    const double reach = 3.0 * std::sin(15.0 * M_PI / 180.0) + 0.05;
    const Vec3 low = windowPoint(Mat4::identity(), {-reach, -1.05, -8 + reach});
    const Vec3 high = windowPoint(Mat4::identity(), {reach, 2.05, -8 + reach});
    int brightened = 0;
    for (int y = 0; y < windowHeight; y++)
        for (int x = 0; x < windowWidth; x++) {
            const Rgb got = pixelAt(x, y);
            if (x < low.x - 1 || x > high.x + 1 || y < low.y - 1 || y > high.y + 1)
                expectColour({grey, grey, grey}, got,
                             "outside the cone at " + std::to_string(x) + "," + std::to_string(y));
            else if (colourNear({grey, std::min(1.0, got.g), grey}, got) && got.g * 255 > grey * 255 + 30)
                brightened++;
        }
    EXPECT_GT(brightened, 40) << "pixels inside the cone made greener";
}

TEST_F(EmitterFrames, EachEmitterDrawsItsParticlesInOneCallBackToFront)
{
    const std::string shape =
        "<emission rate='0'><burst count='3'/></emission><velocity speedMin='0' speedMax='0'/>";
    addEmitter("<emitter>" + shape + "</emitter>", {0, 0, -4})->update(0.125f);
    addEmitter("<emitter particles='2' blending='alpha'>" + shape + "</emitter>", {0, 0, -9})->update(0.125f);
    record([&] { drawFrame(root, nullptr); });
    // Farther first; each: blending, depth writes off, the arrays, one draw.
    EXPECT_EQ(recorder.filter({"glBlendFunc", "glDepthMask", "glVertexPointer", "glColorPointer",
                               "glTexCoordPointer", "glDrawElements"}),
              readCalls(PEVRANO_TEST_DATA "/expected/emitters.calls"));
}

TEST_F(EmitterFrames, EmittersShareOneTextureThatShapesTheirQuads)
{
    // Four texels in a row: two transparent, then two opaque white.
    const Bytes clear = {0, 0, 0, 0}, white = {255, 255, 255, 255};
    writeFile("half.tga", tgaFile(TGA_RAW, 4, 1, 32, 8, joined({repeated(clear, 2), repeated(white, 2)})));
    const std::string description = "<emitter blending='alpha'><texture file='half.tga'/><emission rate='0'>"
                                    "<burst count='1'/></emission><velocity speedMin='0' speedMax='0'/>"
                                    "<birth r='0.2' g='0.9' b='0.5' a='1' size='2'/>"
                                    "<death r='0.2' g='0.9' b='0.5' a='1' size='2'/></emitter>";
    PVEMITTER* first = addEmitter(description, {0, 0, -5});
    PVTEXTURE* texture = PVTEXTURE::getFirst();
    {
        PVEMITTER second;
        ASSERT_TRUE(second.loadFromText(description.c_str(), "test"));
        EXPECT_EQ(texture->getReferences(), 2);
    }
    EXPECT_EQ(texture->getReferences(), 1);

    first->update(0.125f);
    record([&] { drawFrame(root, nullptr); });
    EXPECT_EQ(recorder.countCall("glBindTexture(GL_TEXTURE_2D," + std::to_string(texture->getGLId()) + ")"),
              1u);
    // A quarter of the quad from each side: the transparent and the opaque half.
    expectColour({0, 0, 0}, pixelOfPoint(-0.5, 0, -5), "transparent texels");
    expectColour({0.2, 0.9, 0.5}, pixelOfPoint(0.5, 0, -5), "opaque texels");
    // The quad is the particle's size and no more, along its top and bottom edges.
    for (double y : {-1.0, 1.0}) {
        expectColour({0.2, 0.9, 0.5}, pixelOfPoint(0.75, 0.85 * y, -5),
                     "inside an edge at " + std::to_string(y));
        expectColour({0, 0, 0}, pixelOfPoint(0.75, 1.15 * y, -5), "outside an edge at " + std::to_string(y));
    }
}

// The engine hands the settings' pool size to the emitters and their folder
// to the animations at start-up (the examples' memory balance catches
// animations left at shut-down).
TEST(EmitterPool, SizeAndAnimationPathComeFromTheSettings)
{
    ScratchDir dir;
    const int cases[][2] = {{0, PV_EMITTER_DEFAULT_POOL}, {500, 500}, {100000, PV_EMITTER_MAX_POOL}};
    for (const auto& c : cases) {
        PVSETTINGS settings;
        settings.setParticles(c[0]);
        settings.setPVAPath("anims/");
        ASSERT_TRUE(PEVRANO::init(&settings));
        EXPECT_EQ(PVEMITTER::getPoolSize(), unsigned(c[1]));
        EXPECT_EQ(PVEMITTER::getFreeParticles(), unsigned(c[1]));
        EXPECT_STREQ(PVANIM::getPVAPath(), "anims/");
        PEVRANO::free();
        EXPECT_FALSE(PVEMITTER::isActive());
    }
    PVANIM::setPVAPath(nullptr);
}

}  // namespace
