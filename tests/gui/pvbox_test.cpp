// Boxes: texture corners, hit tests, move limits, foremost stamps, the
// quad primitive and the bevelled border as GL calls and as pixels.
#include <algorithm>
#include <functional>

#include "gui/guifixture.h"

using namespace pvtest;

namespace {

class Box : public GuiTest {};

std::vector<float> cornersOf(const PVBOXCOORD& c) { return std::vector<float>(c.coord, c.coord + 8); }

TEST_F(Box, CornerCoordinatesFollowTheImageRowOrder)
{
    EXPECT_EQ((std::vector<float> {0, 1, 1, 1, 0, 0, 1, 0}), cornersOf(PVBOXCOORD()));
    EXPECT_EQ((std::vector<float> {0, 0, 0.5f, 0, 0, 0.25f, 0.5f, 0.25f}),
              cornersOf(PVBOXCOORD(0.5f, 0.25f, true)));
    EXPECT_EQ((std::vector<float> {0, 0.25f, 0.5f, 0.25f, 0, 0, 0.5f, 0}),
              cornersOf(PVBOXCOORD(0.5f, 0.25f, false)));
}

// The vertical bar keeps the horizontal one's name pattern and a button's
// caption starts as its name.
TEST_F(Box, WidgetNamesAndFirstCaption)
{
    PVVSCROLLBAR* bar = new PVVSCROLLBAR();
    EXPECT_EQ(PV_TYPE_VSCROLLBAR, bar->getType());
    EXPECT_EQ("[hscrollbar " + std::to_string(bar->getId()) + "]", std::string(bar->getName()));
    PVBUTTON button;
    EXPECT_STREQ(button.getName(), button.getCaption());
}

TEST_F(Box, HitTestsIncludeTheEdgesAndStayInsideTheWindow)
{
    PVWINDOW* window = new PVWINDOW();  // 128 x 128 at (0, 19), title bar above
    window->setPosition(10, 40);
    // Reaching 164, past the window's right side at 138.
    PVBUTTON* inside = placed<PVBUTTON>(100, 100, 64, 64, window);
    PVBOX* loose = placed(5, 6, 10, 20);
    PVBUTTON* title = window->getTitleBar();

    // Hit tests are off by default on a box.
    const std::tuple<PVBOX*, int, int, bool> cases[] = {
        {loose, 10, 10, false}, {inside, 110, 140, true}, {inside, 137, 140, true}, {inside, 139, 140, false},
        {title, 10, 21, true},  {title, 138, 40, true},   {title, 139, 40, false},  {title, 9, 30, false},
        {window, 10, 40, true}, {window, 138, 168, true}, {window, 138, 169, false}};
    for (const auto& [box, x, y, hit] : cases)
        EXPECT_EQ(hit, box->checkBoundaries(x, y)) << box->getName() << " at " << x << ", " << y;
    loose->setCheckStatus(true);
    EXPECT_TRUE(loose->checkBoundaries(15, 26));  // right and bottom edges included
    EXPECT_FALSE(loose->checkBoundaries(16, 26));
    // The title bar sits outside its window's rectangle and is still hit.
    window->minmaximize();
    EXPECT_TRUE(title->checkBoundaries(50, 30));
}

TEST_F(Box, LimitsClampMovesInTheParentsSpace)
{
    PVBOX parent;
    parent.setPosition(100, 50);
    PVBOX* box = placed(10, 10, 20, 10, &parent);
    // With limits off the move stands; a limit rectangle narrower than the
    // box puts it at endX - sizeX.
    const std::tuple<bool, int, std::pair<int, int>, std::pair<int, int>> cases[] = {
        {false, 100, {200, 200}, {200, 200}}, {true, 100, {5, 5}, {5, 5}},
        {true, 100, {-50, -50}, {-10, -10}},  {true, 100, {200, 200}, {70, 20}},
        {true, 100, {70, 20}, {70, 20}},      {true, 8, {0, 0}, {-22, 0}}};
    std::pair<int, int> move;
    for (const auto& [limited, endX, asked, allowed] : cases) {
        box->setLimitStatus(limited);
        box->setLimits(0, 0, endX, 40);
        move = asked;
        EXPECT_EQ(limited, box->checkLimits(&move.first, &move.second)) << asked.first;
        EXPECT_EQ(allowed, move) << asked.first;
    }
    EXPECT_FALSE(box->checkLimits(nullptr, &move.second));
    EXPECT_EQ("   [!] Invalid params @ PVBOX::checkLimits\n", logged());
}

TEST_F(Box, RaisingABoxDrawsTwoStampsPerChild)
{
    PVBOX* parent = new PVBOX();
    PVBOX* first = placed(0, 0, 64, 64, parent);
    PVBOX* second = placed(0, 0, 64, 64, parent);
    EXPECT_TRUE(parent->setForemost(0));
    const long base = parent->getForemostTimeStamp();
    EXPECT_EQ(base + 2, first->getForemostTimeStamp());
    EXPECT_EQ(base + 4, second->getForemostTimeStamp());
    EXPECT_EQ(base + 5, PVBOX::getNextCounter());
}

TEST_F(Box, TextureReferencesFollowTheBox)
{
    PVTEXTURE* a = new PVTEXTURE();
    PVTEXTURE* b = new PVTEXTURE();
    PVBOX box;
    EXPECT_TRUE(box.setTexture(a) && box.setTexture(b));
    EXPECT_EQ(std::make_pair(0, 1), std::make_pair(a->getReferences(), b->getReferences()));
    EXPECT_TRUE(box.setTexture(nullptr));
    EXPECT_EQ(0, b->getReferences());
}

// A box is one indexed draw of its fill and border pieces when they share
// their state; a texture, a shader or a blend function under which an
// opaque fill would change draws the fill apart first.
TEST_F(Box, ABoxIsOneDrawUnlessItsFillNeedsOtherState)
{
    PVBOX* box = placed(0, 0, 40, 30);
    const std::string fillStrip = "glDrawArrays(GL_TRIANGLE_STRIP,0,4)";
    auto quads = [](int count) {
        return "glDrawElements(GL_TRIANGLES," + std::to_string(count * 6) + ",GL_UNSIGNED_SHORT)";
    };
    // The rings of each border piece are one shape while they do not meet;
    // then the pieces are drawn ring by ring.
    const std::tuple<const char*, std::function<void()>, Calls> cases[] = {
        {"opaque", [] {}, {quads(9)}},
        {"transparent", [&] { box->setColor(0.5f, 0.25f, 0.75f, 0.5f); }, {quads(9)}},
        {"no border", [&] { box->setThickness(0); }, {fillStrip}},
        {"textured", [&] { box->setTexture(solidSheet()); }, {fillStrip, quads(8)}},
        {"rings that meet", [&] { box->setThickness(15); }, {quads(121)}},
        {"20 rings that meet", [&] { box->setThickness(20); }, {quads(129), quads(32)}},
        {"additive blending", [] { glBlendFunc(GL_SRC_ALPHA, GL_ONE); }, {fillStrip, quads(8)}},
    };
    for (const auto& [what, set, draws] : cases) {
        box->setColor(0.5f, 0.25f, 0.75f, 1.0f);
        box->setThickness(3);
        box->setTexture(nullptr);
        set();
        PEVRANO::begin2D();
        box->pass(false);
        record([&] { box->render(PVELEMENT::getPassedElement(0)); });
        PEVRANO::end2D();
        EXPECT_EQ(draws, recorder.filter(std::vector<std::string> {"glDrawArrays", "glDrawElements"}))
            << what;
        EXPECT_LE(recorder.countCall("glEnable(GL_BLEND)"), 1u) << what;
    }
}

// Every pixel of boxes whose rings are joined into one shape per piece, or
// meet and are drawn ring by ring, against the border drawn quad by quad
// and blended here: the fill, then per ring the top, left, bottom and right
// edges and the four corners.
TEST_F(Box, EveryBorderPixelIsThatOfTheQuadsRingByRing)
{
    struct Quad {
        int left, top, right, bottom;
        double released, pressed;
    };
    auto ringQuads = [](int i, int w, int h) {
        return std::vector<Quad> {{i + 1, i, w - i - 1, i + 1, 1.3, 0.7},
                                  {i, i + 1, i + 1, h - i - 1, 1.3, 0.7},
                                  {i + 1, h - i, w - i - 1, h - i - 1, 0.7, 1.3},
                                  {w - i, i + 1, w - i - 1, h - i - 1, 0.7, 1.3},
                                  {i, i, i + 1, i + 1, 1.6, 0.4},
                                  {i, h - i, i + 1, h - i - 1, 1.0, 1.0},
                                  {w - i, i, w - i - 1, i + 1, 1.0, 1.0},
                                  {w - i, h - i, w - i - 1, h - i - 1, 0.4, 1.6}};
    };
    const std::tuple<int, int, int, int, int, bool> cases[] = {
        {2, 2, 40, 30, 3, false},   {50, 2, 40, 30, 3, true}, {100, 2, 12, 10, 4, false},
        {120, 2, 9, 9, 4, false},   {2, 40, 60, 50, 1, true}, {70, 40, 31, 23, 11, false},
        {110, 40, 20, 50, 10, true}};
    const Rgb base {0.3, 0.6, 0.7};
    PVNODE* root = new PVNODE();
    for (const auto& [atX, atY, w, h, rings, pressed] : cases) {
        PVBOX* box = placed(float(atX), float(atY), w, h, root);
        box->setThickness(unsigned(rings));
        box->setColor(float(base.r), float(base.g), float(base.b), 1.0f);
        box->setClickedStatus(pressed);
    }
    drawFrame2D(root);
    for (const auto& [atX, atY, w, h, rings, pressed] : cases) {
        const double shade = pressed ? 0.9 : 1.0;
        std::vector<Rgb> expected(size_t(w * h), Rgb {base.r * shade, base.g * shade, base.b * shade});
        for (int i = 0; i < rings; i++)
            for (const Quad& q : ringQuads(i, w, h)) {
                const double f = pressed ? q.pressed : q.released;
                const Rgb over {std::min(1.0, base.r * f), std::min(1.0, base.g * f),
                                std::min(1.0, base.b * f)};
                for (int y = std::min(q.top, q.bottom); y < std::max(q.top, q.bottom); y++)
                    for (int x = std::min(q.left, q.right); x < std::max(q.left, q.right); x++) {
                        Rgb& pixel = expected[size_t(y * w + x)];
                        pixel = {(over.r + pixel.r) / 2, (over.g + pixel.g) / 2, (over.b + pixel.b) / 2};
                    }
            }
        int wrong = 0;
        for (int y = 0; y < h; y++)
            for (int x = 0; x < w; x++)
                wrong += !colourNear(expected[size_t(y * w + x)], screen(atX + x, atY + y));
        EXPECT_EQ(0, wrong) << w << " x " << h << ", " << rings << " rings at " << atX << ", " << atY;
    }
}

}  // namespace
