// Pointer and keys scripted through the render list's dispatcher, over the
// widgets drawn in the last 2D pass.
#include "gui/guifixture.h"
#include "gui/pvinput.h"

using namespace pvtest;

namespace {

class Input : public GuiTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GuiTest::SetUp());
        PVINPUT::reset();
        root = placed(0, 0, 0, 0);
    }
    // One dispatcher call after a frame of everything under root; returns
    // the reported id, and whether the pointer was over a widget.
    unsigned int send(int x, int y, bool down, char key = 0)
    {
        drawFrame2D(root);
        unsigned int id = 12345;
        over = PVELEMENT::manageGUIEvents(key, x, y, down ? 1 : 0, 0, &id);
        return id;
    }
    PVBUTTON* button(int x, int y, PV_BUTTON_EVENT event)
    {
        PVBUTTON* made = placed<PVBUTTON>(float(x), float(y), 20, 10, root);
        made->setEventType(event);
        return made;
    }
    PVBOX* root = nullptr;
    bool over = false;
};

// Each case presses a new button at (10, 10): pressed, moved within, released
// inside or elsewhere (90, 90).
TEST_F(Input, EachEventTypeReportsItsButtonAtItsMoment)
{
    const PV_BUTTON_EVENT release = PV_BUTTON_ON_RELEASE, press = PV_BUTTON_ON_PRESS,
                          toggle = PV_BUTTON_TOGGLE;
    const std::tuple<PV_BUTTON_EVENT, int, int, bool, bool, bool> steps[] = {
        {release, 15, 15, 1, 0, 1}, {release, 16, 16, 1, 0, 1}, {release, 16, 16, 0, 1, 0},
        {press, 15, 15, 1, 1, 1},   {press, 15, 15, 1, 0, 1},   {press, 15, 15, 0, 0, 0},
        {toggle, 15, 15, 1, 1, 1},  {toggle, 15, 15, 0, 0, 1},  {toggle, 15, 15, 1, 1, 0},
        {toggle, 15, 15, 0, 0, 0},  {release, 15, 15, 1, 0, 1}, {release, 90, 90, 0, 0, 0}};
    PVBUTTON* pressed = nullptr;
    for (const auto& [event, x, y, down, reported, clicked] : steps) {
        if (!pressed || event != pressed->getEventType()) {
            if (pressed)
                pressed->unlink();
            pressed = button(10, 10, event);
        }
        EXPECT_EQ(reported ? pressed->getId() : 0u, send(x, y, down))
            << event << " at " << x << (down ? " down" : " up");
        EXPECT_EQ(clicked, pressed->isClicked()) << event << " at " << x << (down ? " down" : " up");
    }
}

// The pointer over a widget is reported, and the foremost of overlapping
// widgets wins.
TEST_F(Input, TheForemostOfOverlappingWidgetsWins)
{
    PVBUTTON* under = button(10, 10, PV_BUTTON_ON_PRESS);
    PVBUTTON* upper = button(15, 12, PV_BUTTON_ON_PRESS);
    (new PVBOX())->link(root);  // not hittable, and over everything
    send(35, 22, false);
    EXPECT_TRUE(over);
    send(36, 22, false);
    EXPECT_FALSE(over);
    EXPECT_TRUE(PVELEMENT::manageGUIEvents(0, 15, 15, 0, 0, nullptr));  // no id wanted
    EXPECT_EQ(upper->getId(), send(18, 15, true));
    send(18, 15, false);
    under->setForemost(0);
    EXPECT_EQ(under->getId(), send(18, 15, true));
    send(18, 15, false);
    EXPECT_EQ(upper->getId(), send(34, 21, true));  // only the upper one is there
}

TEST_F(Input, ATitleBarMinimisesOnReleaseAndMovesItsWindowWhenDragged)
{
    PVWINDOW* window = new PVWINDOW();  // title bar from y 0 to 19
    window->setCaption("Tools");
    window->link(root);
    PVWINDOW* front = placed<PVWINDOW>(100, 19, 128, 128, root);
    EXPECT_EQ(0u, send(50, 10, true));
    EXPECT_GT(window->getForemostTimeStamp(), front->getForemostTimeStamp());  // pressing raised it
    EXPECT_EQ(0u, send(50, 10, false));
    EXPECT_TRUE(window->isMinimized());
    EXPECT_STREQ("[+] Tools", window->getTitleBar()->getCaption());
    // Minimised, the body is not there: the pointer finds nothing.
    send(50, 60, false);
    EXPECT_FALSE(over);
    send(50, 10, true);
    send(50, 10, false);
    EXPECT_FALSE(window->isMinimized());

    send(50, 10, true);
    send(60, 15, true);
    send(65, 25, true);
    send(65, 25, false);
    EXPECT_EQ(K3MVECTOR3D(15, 34, 0), window->getPosition());
    EXPECT_FALSE(window->isMinimized());  // a drag only moves
}

TEST_F(Input, DraggingAScrollBarCursorStopsAtTheTrackEnds)
{
    PVHSCROLLBAR* bar = placed<PVHSCROLLBAR>(20, 50, 64, 4, root);  // cursor 16 x 8
    bar->setValue(0.5f);  // cursor from x 44 to 60
    send(50, 50, true);
    send(70, 52, true);  // 20 pixels right; no move across the track
    EXPECT_NEAR(0.5f + 20 / 64.0f, bar->getValue(), 1e-5);
    EXPECT_EQ(-2.0f, bar->getCursor()->getPosition().y);
    send(200, 52, true);
    EXPECT_EQ(1.0f, bar->getValue());
    EXPECT_EQ(56.0f, bar->getCursor()->getPosition().x);
    send(200, 52, false);
    send(20, 50, true);  // the cursor's left end, at 76 now, is not under the pointer
    send(-100, 50, true);
    EXPECT_EQ(1.0f, bar->getValue());
}

TEST_F(Input, TheLastPressedTextFieldTakesTheKeys)
{
    PVFONT* font = solidFont();
    PVTEXTFIELD* first = placed<PVTEXTFIELD>(0, 0, 80, 20, root);
    PVTEXTFIELD* second = placed<PVTEXTFIELD>(0, 30, 80, 20, root);
    for (PVTEXTFIELD* field : {first, second}) {
        field->setFont(font);
        field->clear();
    }
    send(5, 5, false, 'x');  // no focus yet
    EXPECT_EQ(nullptr, PVTEXTFIELD::getFocus());
    send(5, 5, true);
    EXPECT_EQ(first, PVTEXTFIELD::getFocus());
    send(5, 5, false, 'h');
    send(90, 90, false, 'i');
    EXPECT_STREQ("hi", first->getCaption());
    button(100, 0, PV_BUTTON_ON_RELEASE);
    send(105, 5, true);
    send(105, 5, false, '!');  // pressing a button keeps the focus
    EXPECT_STREQ("hi!", first->getCaption());
    send(5, 35, true, 'a');
    send(5, 35, false, 8);
    send(5, 35, false, 'b');
    EXPECT_STREQ("hi!", first->getCaption());
    EXPECT_STREQ("b", second->getCaption());
    EXPECT_TRUE(second->isEditing());  // every call keeps the caret alive
}

using LandscapeInterface = Landscape<Input>;

// The interface is turned a quarter: its x runs up the window from the
// bottom and its y along the window from the left. Windows clip with GL's
// origin at the bottom left: the scissor of a 50 x 40 window at (10, 20)
// exchanges its axes, then gives the display back.
TEST_F(LandscapeInterface, ThePointerAndTheScissorExchangeTheirAxes)
{
    PVBUTTON* pressed = button(10, 30, PV_BUTTON_ON_PRESS);  // x 10 to 30, y 30 to 40
    EXPECT_EQ(pressed->getId(), send(35, windowHeight - 15, true));
    send(35, windowHeight - 15, false);
    EXPECT_EQ(0u, send(15, windowHeight - 35, true));
    PVWINDOW* window = placed<PVWINDOW>(10, 20, 50, 40);
    record([&] {
        window->enableScissor();
        window->disableScissor();
    });
    EXPECT_EQ((Calls {"glScissor(20,10,40,50)", "glScissor(0,0,120,160)"}), recorder.filter("glScissor"));
    EXPECT_FALSE(glIsEnabled(GL_SCISSOR_TEST));
}

}  // namespace
