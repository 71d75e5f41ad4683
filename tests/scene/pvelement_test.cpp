// Render list: capacity, what gets a record and with which matrix, distance
// clipping, minimised windows, the counts, the 3D, 2D and light sorts, and
// the GL calls a pass makes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "scene/scenefixture.h"
#include "scene/scenetestnode.h"

using namespace pvtest;

// Heap allocations made by the calling thread while counting is on (other
// threads, such as the GL driver's, are not counted).
static thread_local bool countingAllocations = false;
static thread_local int allocationCount = 0;

#if !defined(__SANITIZE_ADDRESS__)
// Every malloc of the process (the engine's, the C and C++ runtimes') binds
// to this definition in the executable, which counts and hands the request to
// the C library's allocator.
extern "C" void* __libc_malloc(size_t size);
extern "C" void* malloc(size_t size) noexcept
{
    if (countingAllocations)
        ++allocationCount;
    return __libc_malloc(size);
}
#endif

namespace {

// This thread's heap allocations while frame runs.
template <class Frame> int allocationsOf(Frame frame)
{
    allocationCount = 0;
    countingAllocations = true;
    frame();
    countingAllocations = false;
    return allocationCount;
}

class RenderList : public pvtest::GlContextTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GlContextTest::SetUp());
        PV_glMatrixMode(GL_MODELVIEW);
        PV_glLoadIdentity();
        PVELEMENT::clippingOff();
        PVELEMENT::setClippingRadius(128.0f);
    }
    void TearDown() override
    {
        PVELEMENT::free();
        PVNODE::cleanUp();
        PVMATERIAL::cleanUp();
    }

    static std::vector<PVNODE*> passedNodes()
    {
        std::vector<PVNODE*> nodes;
        for (unsigned int i = 0; i < PVELEMENT::getNumberOfPassedElements(); i++)
            nodes.push_back(PVELEMENT::getPassedElement(i)->getNode());
        return nodes;
    }
    // An active list of n records, its log line already read.
    void start(unsigned int n)
    {
        ASSERT_TRUE(PVELEMENT::init(n));
        log.fresh();
    }
};

TEST_F(RenderList, InitClampsTheCapacityAndRefusesASecondInit)
{
    EXPECT_FALSE(PVELEMENT::free());
    std::string expected;
    for (unsigned int asked : {0u, 5000u, 7u}) {
        const unsigned int kept = asked == 7 ? 7u : 1024u;
        EXPECT_TRUE(PVELEMENT::init(asked));
        EXPECT_EQ(kept, PVELEMENT::getNumberOfElements());
        EXPECT_FALSE(PVELEMENT::init(8));
        EXPECT_TRUE(PVELEMENT::free());
        EXPECT_FALSE(PVELEMENT::isActive());
        expected +=
            "   " + std::to_string(kept) + " elements allocated\n   [!] Already active @ PVELEMENT::init\n";
    }
    EXPECT_EQ(expected, log.fresh());
}

TEST_F(RenderList, AFullListStopsTheSubtree)
{
    start(2);
    PVNODE* root = make("root", PV_TYPE_NODE);
    PVNODE* m1 = make("m1", PV_TYPE_MESH, {}, root);
    PVNODE* m2 = make("m2", PV_TYPE_MESH, {}, root);
    PVNODE* m3 = make("m3", PV_TYPE_MESH, {}, root);
    PVNODE* below = make("below", PV_TYPE_MESH, {}, m3);
    EXPECT_TRUE(root->pass(false));
    EXPECT_EQ((std::vector<PVNODE*> {m1, m2}), passedNodes());
    EXPECT_EQ(nullptr, PVELEMENT::getPassedElement(2));
    EXPECT_EQ("   [!] Scene too complex @ PVELEMENT::pass\n", log.fresh());
    EXPECT_EQ(PEVRANO::getTimeStamp(), m3->getTimeStamp());
    EXPECT_EQ(0, below->getTimeStamp());  // never visited

    EXPECT_FALSE(PVELEMENT::pass(m1, false));
    EXPECT_FALSE(PVELEMENT::pass(nullptr, false));
    EXPECT_EQ("   [!] Scene too complex @ PVELEMENT::pass\n"
              "   [!] Invalid params @ PVELEMENT::pass\n",
              log.fresh());

    PVELEMENT::reset();
    m3->pass(false);
    EXPECT_EQ((std::vector<PVNODE*> {m3, below}), passedNodes());
}

// Local transforms (vectors, matrix, none) are the node tests' business:
// here, records hold the view times the transforms of every ancestor.
TEST_F(RenderList, PlainNodesTransformTheirChildrenWithoutARecord)
{
    start(16);
    PVNODE* root = make("root", PV_TYPE_NODE, {1, 2, 3});
    root->setRotation(0, 90, 0);
    PVNODE* mesh = make("mesh", PV_TYPE_MESH, {4, 0, -2}, root);
    mesh->setAuxId(4242);
    PVNODE* plain = make("plain", PV_TYPE_NODE, {0, 0, 5}, mesh);
    PVNODE* leaf = make("leaf", PV_TYPE_CAMERA, {0, 0, 0}, plain);

    // A view as a camera would leave it.
    PV_glTranslatef(0, 0, -10);
    const Mat4 view = Mat4::translation(0, 0, -10);
    EXPECT_EQ(pvtest::Calls {}, record([&] { root->pass(false); }));  // matrices are worked out on the CPU

    ASSERT_EQ((std::vector<PVNODE*> {mesh, leaf}), passedNodes());
    const Mat4 meshView =
        view * Mat4::translation(1, 2, 3) * Mat4::rotationY(90) * Mat4::translation(4, 0, -2);
    expectMatrixNear(meshView, PVELEMENT::getPassedElement(0)->getMatrix()->m, "mesh record");
    expectMatrixNear(meshView, mesh->getCachedMatrix()->m, "mesh cached matrix");
    expectMatrixNear(meshView * Mat4::translation(0, 0, 5), PVELEMENT::getPassedElement(1)->getMatrix()->m,
                     "leaf under a plain node");
    EXPECT_EQ(4242u, PVELEMENT::getPassedElement(0)->getAuxId());
    K3MMATRIX after;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, after.m);
    expectMatrixNear(view, after.m, "current matrix after the pass");
    EXPECT_EQ("", log.fresh());
}

TEST_F(RenderList, DistanceClippingOfMeshLikeNodes)
{
    start(16);
    PVNODE* root = make("root", PV_TYPE_NODE, {0, 0, -100});
    // Eye distances: far 200 (limit 148 with its radius 10); edge, a child of
    // the clipped far, is still visited at |(0, 148, -300)| = 334.52; near 53;
    // limit exactly 148 (kept); helper 149; a light or an emitter is never clipped.
    PVNODE* far = make("far", PV_TYPE_MESH, {0, 0, -100}, root, 10);
    PVNODE* edge = make("edge", PV_TYPE_MESH, {0, 148, -100}, far, 10);
    PVNODE* near = make("near", PV_TYPE_TERRAIN, {0, 0, 47}, root);
    PVNODE* limit = make("limit", PV_TYPE_HELPER, {0, 0, -48}, root, 10);
    PVNODE* helper = make("helper", PV_TYPE_HELPER, {0, 0, -49}, root, 10);
    PVNODE* light = make("light", PV_TYPE_LIGHT, {0, 0, -900}, root);
    PVNODE* emitter = make("emitter", PV_TYPE_EMITTER, {0, 0, -900}, root);

    PVELEMENT::clippingOn();
    root->pass(false);
    EXPECT_EQ((std::vector<PVNODE*> {near, limit, light, emitter}), passedNodes());
    EXPECT_EQ(" (clipped) far at distance 200.00\n"
              " (clipped) edge at distance 334.52\n"
              " (clipped) helper at distance 149.00\n",
              log.fresh());

    PVELEMENT::reset();
    PVELEMENT::setClippingRadius(400);
    root->pass(false);
    EXPECT_EQ((std::vector<PVNODE*> {far, edge, near, limit, helper, light, emitter}), passedNodes());

    PVELEMENT::reset();
    PVELEMENT::clippingOff();
    EXPECT_FALSE(PVELEMENT::isClipping());
    // A hidden mesh gets no record; its children do.
    static_cast<PVMESH*>(far)->setDisplayStatus(false);
    root->pass(false);
    EXPECT_EQ((std::vector<PVNODE*> {edge, near, limit, helper, light, emitter}), passedNodes());
    EXPECT_EQ("", log.fresh());
}

TEST_F(RenderList, AMinimisedWindowPassesItselfAndItsFirstChildOnly)
{
    start(16);
    PVWINDOW* window = new PVWINDOW();
    window->setPosition(10, 20, 0);
    PVNODE* title = window->getTitleBar();
    PVBOX* icon = new PVBOX();
    icon->setPosition(2, 2, 0);
    icon->link(title);
    PVBUTTON* body = new PVBUTTON();
    body->link(window);
    PVNODE* scrollBar = window->getChild(1);
    window->minmaximize();
    window->pass(false);
    EXPECT_EQ((std::vector<PVNODE*> {window, title, icon}), passedNodes());
    EXPECT_EQ(0, body->getTimeStamp());
    // The title bar sits 19 pixels above the window.
    expectMatrixNear(Mat4::translation(12, 3, 0), PVELEMENT::getPassedElement(2)->getMatrix()->m, "icon");

    PVELEMENT::reset();
    window->minmaximize();
    window->pass(false);
    EXPECT_EQ((std::vector<PVNODE*> {window, title, icon, scrollBar, scrollBar->getChild(0), body}),
              passedNodes());

    PVELEMENT::reset();
    title->unlink();
    scrollBar->unlink();
    body->unlink();
    window->minmaximize();
    EXPECT_TRUE(window->pass(false));  // no first child to pass
    EXPECT_EQ((std::vector<PVNODE*> {window}), passedNodes());
    EXPECT_EQ("", log.fresh());
}

// Lights are counted and sorted first, then opaque records, then see-through
// meshes, helpers and emitters back to front by their far side.
TEST_F(RenderList, CountsAndSort3DPutLightsFirstThenOpaqueThenTransparent)
{
    start(16);
    EXPECT_FALSE(PVELEMENT::sort3D());
    PVNODE* root = make("root", PV_TYPE_NODE);
    PVNODE* glass = make("glass", PV_TYPE_MESH, {0, 0, -1}, root);
    pvtest::makeTransparent(glass);
    PVNODE* near = make("near", PV_TYPE_MESH, {0, 0, -1}, root);
    PVNODE* light1 = make("light1", PV_TYPE_LIGHT, {}, root);
    PVNODE* far = make("far", PV_TYPE_MESH, {0, 0, -9}, root);
    PVNODE* light2 = make("light2", PV_TYPE_LIGHT, {}, root);
    PVNODE* box = make("box", PV_TYPE_BOX, {0, 0, -5}, root);
    PVNODE* emitter = make("emitter", PV_TYPE_EMITTER, {0, 0, -3}, root);
    PVNODE* helper =
        make("helper", PV_TYPE_HELPER, {0, 0, -2}, root, 5);  // its far side at -7 is the farthest
    root->pass(false);
    ASSERT_EQ(2u, PVELEMENT::getNumberOfLights());
    EXPECT_EQ(3u, PVELEMENT::getNumberOfTransparencies());
    EXPECT_EQ(nullptr, PVELEMENT::getLight(2));

    EXPECT_TRUE(PVELEMENT::sort3D());
    const std::vector<PVNODE*> order = passedNodes();
    EXPECT_EQ((std::set<PVNODE*> {light1, light2}), (std::set<PVNODE*> {order[0], order[1]}));
    EXPECT_EQ((std::set<PVNODE*> {near, far, box}), (std::set<PVNODE*> {order[2], order[3], order[4]}));
    EXPECT_EQ((std::vector<PVNODE*> {helper, emitter, glass}),
              std::vector<PVNODE*>(order.begin() + 5, order.end()));
    EXPECT_EQ(order[0], PVELEMENT::getLight(0)->getNode());

    PVELEMENT::reset();
    EXPECT_EQ(0u, PVELEMENT::getNumberOfLights());
    EXPECT_EQ(0u, PVELEMENT::getNumberOfTransparencies());
}

TEST_F(RenderList, Sort2DDrawsTheForemostLast)
{
    start(16);
    EXPECT_FALSE(PVELEMENT::sort2D());
    // Stamps follow construction order; plain nodes answer 0.
    PVBOX* back = new PVBOX();
    PVBUTTON* middle = new PVBUTTON();
    PVBOX* desk = new PVBOX();
    PVTEXTFIELD* top = new PVTEXTFIELD();
    PVNODE* light = make("light", PV_TYPE_LIGHT);
    for (PVNODE* child : std::vector<PVNODE*> {top, light, back, middle})
        child->link(desk);
    desk->pass(false);
    EXPECT_TRUE(PVELEMENT::sort2D());
    EXPECT_EQ((std::vector<PVNODE*> {light, back, middle, desk, top}), passedNodes());
}

// A frame of several hundred records, well past the size at which the C
// library's qsort takes a heap buffer: passing and the three sorts must not
// allocate (the orders themselves are the sort tests' business).
TEST_F(RenderList, AFrameOfSeveralHundredElementsAllocatesNothing)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer owns malloc: the plain build counts";
#endif
    start(1024);
    const int count = 300;
    PVNODE* scene = make("scene", PV_TYPE_NODE);
    PVNODE* desk = make("desk", PV_TYPE_NODE);
    for (int i = 0; i < count; i++) {
        // Scattered depths and stamps, so that no order comes out by chance.
        const Vec3 at {double(i % 5), 0, -double((i * 97) % count)};
        if (i % 4 == 1) {
            PVLIGHT* light = new PVLIGHT();
            light->setExclusive(i % 8 == 1);
            light->setPosition(float(at.x), 0, float(at.z));
            light->link(scene);
        } else {
            PVNODE* node = make("n", i % 4 == 3 ? PV_TYPE_HELPER : PV_TYPE_MESH, at, scene, float(i % 4));
            if (i % 8 == 0)
                pvtest::makeTransparent(node);
        }
        (new PVBOX())->link(desk);
    }
    for (int i = 0; i < count; i++)
        static_cast<PVBOX*>(desk->getChild(unsigned((i * 131) % count)))->setForemost(0);
    PVELEMENT::clippingOn();
    PVELEMENT::setClippingRadius(10000.0f);
    auto frame3D = [&] {
        PVELEMENT::reset();
        scene->pass(false);
        PVELEMENT::sort3D();
        PVELEMENT::sortLights(K3MVECTOR3D(2, 0, -150));
    };
    auto frame2D = [&] {
        PVELEMENT::reset();
        desk->pass(false);
        PVELEMENT::sort2D();
    };
    // The first frame resolves GL entry points and lets the driver size its
    // matrix stacks; the count must see a malloc.
    frame3D();
    frame2D();
    ASSERT_EQ(1, allocationsOf([] {
                  void* volatile probe = std::malloc(64);
                  std::free(probe);
              }));
    EXPECT_EQ(0, allocationsOf(frame3D));
    EXPECT_EQ(0, allocationsOf(frame2D));
    EXPECT_EQ(size_t(count), passedNodes().size());
}

// A depth that is not a number (here a broken radius) leaves the sorts
// well-defined: every record stays in the list and the others keep their
// back-to-front order.
TEST_F(RenderList, ABrokenDepthDoesNotUpsetTheBackToFrontSort)
{
    start(64);
    PVNODE* root = make("root", PV_TYPE_NODE);
    std::vector<PVNODE*> helpers;
    for (int i = 0; i < 40; i++)
        helpers.push_back(make("h", PV_TYPE_HELPER, {0, 0, -float((i * 17) % 40)}, root));
    pvtest::setRadius(helpers[13], std::numeric_limits<float>::quiet_NaN());
    pvtest::setRadius(helpers[29], std::numeric_limits<float>::quiet_NaN());
    root->pass(false);
    EXPECT_TRUE(PVELEMENT::sort3D());
    std::vector<PVNODE*> order = passedNodes();
    EXPECT_EQ(std::set<PVNODE*>(helpers.begin(), helpers.end()),
              std::set<PVNODE*>(order.begin(), order.end()));
    order.erase(std::remove_if(order.begin(), order.end(),
                               [](PVNODE* node) { return std::isnan(PVMESH::radiusOf(node)); }),
                order.end());
    for (size_t i = 1; i < order.size(); i++)
        EXPECT_LT(order[i - 1]->getPosition().z, order[i]->getPosition().z) << "at " << i;
}

}  // namespace
