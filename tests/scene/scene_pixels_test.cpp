// Pixels on the real renderer, through the engine's whole frame: a custom
// quad node seen through a free or a following camera lands where the
// perspective set-up says, lit quads match the fixed-function lighting
// equation worked out here, colour picking reports the quad under the
// pointer, and an engine started again draws as the first did.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "scene/scenefixture.h"
#include "scene/scenetestnode.h"
#include "support/quadnode.h"
#include "support/switches.h"

using namespace pvtest;

namespace {

class ScenePixels : public RecordingTest {
protected:
    // Background and global ambient light are stored before the start-up,
    // which applies them.
    void SetUp() override
    {
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        PVOPENGL::setGlobalAmbientLight(float(global.r), float(global.g), float(global.b), 1.0f);
        ASSERT_NO_FATAL_FAILURE(start());
    }
    void TearDown() override { PEVRANO::free(); }

    // Starts the engine, keeping the GL calls and log lines of its start-up.
    void start()
    {
        const size_t logBefore = log.text().size();
        bool started = false;
        startCalls = record([&] { started = startEngineInWindow(); });
        ASSERT_TRUE(started) << log.text();
        startLog = log.text().substr(logBefore);
        root = new PVNODE();
    }
    QuadNode* addQuad(float halfSize, Vec3 at, bool lit = false)
    {
        QuadNode* quad = new QuadNode(halfSize);
        quad->setPosition(float(at.x), float(at.y), float(at.z));
        quad->setLit(lit);
        quad->link(root);
        return quad;
    }

    static void expectColourAt(Rgb expected, Vec3 at, const std::string& what)
    {
        const std::string where = what + " at (" + std::to_string(at.x) + ", " + std::to_string(at.y) + ")";
        expectColour(expected, pixelAt(int(std::floor(at.x)), int(std::floor(at.y))), where);
    }

    // The quad placed by model covers the projection of its centre and the
    // points 80% of the way to each projected corner; 125% of the way lies
    // outside it.
    void expectQuadOnScreen(const Mat4& view, const Mat4& model, double halfSize, Rgb colour,
                            const std::string& what)
    {
        const Vec3 mid = windowPoint(view, model.transformPoint({0, 0, 0}));
        expectColourAt(colour, mid, what + ", centre");
        for (const double c : {-1.0, 1.0}) {
            for (const double d : {-1.0, 1.0}) {
                const Vec3 corner = windowPoint(view, model.transformPoint({c * halfSize, d * halfSize, 0}));
                ASSERT_GT(std::hypot(corner.x - mid.x, corner.y - mid.y), 12.0) << what << ": quad too small";
                expectColourAt(colour, mid + (corner - mid) * 0.8, what + ", inside a corner");
                expectColourAt({0, 0, 0}, mid + (corner - mid) * 1.25, what + ", beyond a corner");
            }
        }
    }

    // A white quad, tilted so that each component of the light's direction
    // and its sign changes the shade, under a directional light; checked on
    // screen in the colour of the lighting equation.
    void drawAndCheckTiltedQuadUnderDirectionalLight(const std::string& what)
    {
        directionalLight(root, {0.48, -0.6, -0.64}, {0.1, 0.05, 0.0}, {0.5, 0.6, 0.7});
        const Mat4 model = place(*addQuad(2.0f, {0, 0, 0}, true), {0, 0, 0}, {0, 0, 0}, {20, -35, 0});
        PVCAMERA* camera = new PVCAMERA();
        camera->setPosition(0, 0, 12);
        drawFrame(root, camera);

        const double nDotL = dot(model.transformPoint({0, 0, 1}), {-0.48, 0.6, 0.64});
        const Rgb expected = litWhite(global, {{0.1, 0.05, 0.0}, {0.5, 0.6, 0.7}, 1.0, nDotL});
        expectQuadOnScreen(Mat4::translation(0, 0, -12), model, 2.0, expected, what);
    }

    const Rgb global = {0.1, 0.15, 0.05};
    PVNODE* root = nullptr;
    Calls startCalls;
    std::string startLog;
};

// An engine freed and started again in the same process draws on a new GL
// context, which starts with every capability and client array off. The
// cached switches must describe that context, not the one released: the
// second start-up issues the same GL calls and log as the first, every switch
// reaches GL the first time it is turned on, and the quad lit by a directional
// light matches the lighting equation under both engines.
TEST_F(ScenePixels, AnEngineStartedAgainStartsAndDrawsAsTheFirstTime)
{
    drawAndCheckTiltedQuadUnderDirectionalLight("first engine");
    for (const Switch& s : cachedSwitches)
        s.on();
    ASSERT_TRUE(PEVRANO::free());
    const Calls firstCalls = startCalls;
    const std::string firstLog = startLog;
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_EQ(firstCalls, startCalls);
    EXPECT_EQ(firstLog, startLog);

    // The start-up turns culling on; each other switch reaches GL at its first turn.
    EXPECT_TRUE(PVOPENGL::isCulled());
    Calls expected;
    for (const Switch& s : cachedSwitches)
        if (s.capability != GL_CULL_FACE)
            expected.push_back(s.onCall);
    EXPECT_EQ(expected, record([] {
                  for (const Switch& s : cachedSwitches)
                      s.on();
              }));
    for (const Switch& s : cachedSwitches)
        s.off();
    drawAndCheckTiltedQuadUnderDirectionalLight("second engine");
}

TEST_F(ScenePixels, SpotLightFollowsTheLightingEquation)
{
    PVLIGHT* spot = new PVLIGHT();
    spot->setLightType(PV_LIGHT_SPOT);
    spot->setPosition(0, 0, 5);
    spot->setTargetNode(spot);
    spot->setTarget(0, 0, 0);
    spot->setCutOff(35);
    spot->setExponent(2);
    spot->setAttenuation(1, 0.1f, 0);
    spot->setAmbient(0.1f, 0.1f, 0.1f, 1.0f);
    spot->setDiffuse(0.8f, 0.7f, 0.6f, 1.0f);
    spot->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    spot->link(root);
    addQuad(2.0f, {0, 0, 0}, true);  // in the cone
    addQuad(2.0f, {-7, 0, 0}, true);  // out of it
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0, 0, 20);
    drawFrame(root, camera);

    // Lit per vertex: every corner (+-2, +-2, 0) of the centred quad sees the
    // spot at distance sqrt(33), 5 / sqrt(33) off the axis in cosine, well
    // inside 35 degrees (0.870 against 0.819), so the whole quad has the corners' colour.
    const double d = std::sqrt(33.0);
    const double cosine = 5.0 / d;
    const double factor = std::pow(cosine, 2.0) / (1.0 + 0.1 * d);
    const Rgb lit = litWhite(global, {{0.1, 0.1, 0.1}, {0.8, 0.7, 0.6}, factor, cosine});
    const Mat4 view = Mat4::translation(0, 0, -20);
    expectQuadOnScreen(view, Mat4::identity(), 2.0, lit, "quad under the spot");

    // The other quad's corners are all more than 35 degrees off the axis
    // (cosine 5 / sqrt(54) against cos 35 degrees = 0.819): only
    // the global ambient light reaches it.
    expectQuadOnScreen(view, Mat4::translation(-7, 0, 0), 2.0, global, "quad outside the cone");
}

// The code select reports for a colour drawn from a 5-6-5 code: the code
// itself at 16 bits, the bytes of the colour otherwise.
unsigned int expectedCode(unsigned short code)
{
    if (PVSETTINGS::getSDLColorDepth() == 16)
        return code;
    const K3MVECTOR4D c = QuadNode::codeColour(code);
    auto byte = [](float v) { return static_cast<unsigned int>(std::lround(v * 255.0f)); };
    return byte(c.x) | byte(c.y) << 8 | byte(c.z) << 16;
}

TEST_F(ScenePixels, SelectReportsTheCodeUnderThePointer)
{
    QuadNode* left = addQuad(1.5f, {-3, 0, 0});
    QuadNode* right = addQuad(1.5f, {3, 1, 0});
    left->setSelectionCode((19 << 11) | (40 << 5) | 7);
    right->setSelectionCode((2 << 11) | (63 << 5) | 30);
    PVLIGHT* light = new PVLIGHT();  // lights are not selectable
    light->link(root);
    // The camera follows a node that a moved parent takes to (1, 1, 0).
    PVNODE* carrier = new PVNODE();
    carrier->setPosition(3, -2, -3);
    carrier->link(root);
    PVNODE* followed = new PVNODE();
    followed->setPosition(-2, 3, 3);
    followed->link(carrier);
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(-5, 2, 8);
    camera->setTargetNode(followed);
    drawFrame(root, camera);

    const Mat4 view = Mat4::lookAt({-5, 2, 8}, {1, 1, 0}, {0, 1, 0});
    auto pointerOver = [&](Vec3 world) {
        const Vec3 p = windowPoint(view, world);
        // select reads window row height - y, with y counted from the top.
        return PEVRANO::select(int(std::floor(p.x)), windowHeight - int(std::floor(p.y)));
    };
    EXPECT_EQ(expectedCode(left->getSelectionCode()), pointerOver({-3, 0, 0}));
    EXPECT_EQ(expectedCode(right->getSelectionCode()), pointerOver({3, 1, 0}));
    EXPECT_EQ(expectedCode(right->getSelectionCode()), pointerOver({4, 2, 0}));
    EXPECT_EQ(0u, pointerOver({0, 0, 0}));
    EXPECT_EQ(0u, pointerOver({-3, 2, 0}));
    EXPECT_EQ(0u, PEVRANO::select(0, 0));
}

}  // namespace
