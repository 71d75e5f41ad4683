// The event pump: pushed and window events polled one by one, each handed to
// the interface of the last 2D pass, and the key and pointer state they leave.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "gui/guifixture.h"

// Xlib (through SDL's window information) last: its macros clash with gtest.
#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>

using namespace pvtest;

namespace {

PVEVENT event(PV_EVENT_TYPE type, int x = 0, int y = 0, int button = 0) { return {type, 0, 0, x, y, button}; }

PVEVENT key(PV_EVENT_TYPE type, int symbol, unsigned int typed) { return {type, symbol, typed}; }

PVEVENT resize(int width, int height) { return {PV_EVENT_RESIZE, 0, 0, 0, 0, 0, 0, width, height}; }

// type key x y button unicode
std::array<int, 6> fieldsOf(const PVEVENT& e) { return {e.type, e.key, e.x, e.y, e.button, int(e.unicode)}; }

// Pushed events only: the engine draws off-screen even under X, where its
// window would add events of its own.
class Events : public GuiTest {
protected:
    bool startEngine() override
    {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        return startEngineInWindow();
    }
};

// Everything below is pushed within one frame, after one 2D pass.
TEST_F(Events, EachEventReachesTheInterfaceAsItComes)
{
    PVBOX* root = placed(0, 0, 0, 0);
    PVBUTTON* hello = placed<PVBUTTON>(10, 10, 20, 10, root);
    hello->setEventType(PV_BUTTON_ON_RELEASE);
    PVTEXTFIELD* name = placed<PVTEXTFIELD>(0, 40, 80, 20, root);
    name->setFont(solidFont());
    name->clear();
    drawFrame2D(root);

    const int left = PV_POINTER_LEFT, right = PV_POINTER_RIGHT;
    // The state once it is polled: the control clicked, the pointer over the
    // interface or not, where the event and getPointer put the pointer, the
    // buttons held, a key held or not.
    struct Step {
        PVEVENT in;
        unsigned int clickedId;
        int over, x, y, buttons, key, held;
    };
    const unsigned int id = hello->getId();
    const Step steps[] = {
        {event(PV_EVENT_POINTER_MOVE, 15, 15), 0, true, 15, 15, 0, 'a', false},
        {event(PV_EVENT_POINTER_DOWN, 15, 15, left), 0, true, 15, 15, 1, 'a', false},
        {event(PV_EVENT_POINTER_UP, 15, 15, left), id, true, 15, 15, 0, 'a', false},  // a tap clicks
        {event(PV_EVENT_POINTER_DOWN, 15, 15, right), 0, true, 15, 15, 4, 'a', false},  // not a press
        {event(PV_EVENT_POINTER_DOWN, 5, 45, left), 0, true, 5, 45, 5, 'a', false},  // focus to the field
        {event(PV_EVENT_POINTER_UP, 5, 45, left), name->getId(), true, 5, 45, 4, 'a', false},
        {event(PV_EVENT_POINTER_UP, 120, 100, right), 0, false, 120, 100, 0, 'a', false},
        {key(PV_EVENT_KEY_DOWN, 304, 0), 0, false, 120, 100, 0, 304, true},  // shift
        {key(PV_EVENT_KEY_DOWN, 'a', 'A'), 0, false, 120, 100, 0, 'a', true},
        {key(PV_EVENT_KEY_UP, 'a', 0), 0, false, 120, 100, 0, 'a', false},
        {key(PV_EVENT_KEY_UP, 304, 0), 0, false, 120, 100, 0, 304, false},
        {key(PV_EVENT_KEY_DOWN, 'd', 'd'), 0, false, 120, 100, 0, 'd', true},
        {key(PV_EVENT_KEY_DOWN, 'x', 0xE9), 0, false, 120, 100, 0, 'x', true},  // not ASCII: not typed
        {key(PV_EVENT_KEY_DOWN, 'a', 'a'), 0, false, 120, 100, 0, 'd', true},
        {key(PV_EVENT_KEY_DOWN, 8, 8), 0, false, 120, 100, 0, 8, true},  // backspace
        {key(PV_EVENT_KEY_DOWN, 'a', 'a'), 0, false, 120, 100, 0, 100000, false},
    };
    for (const Step& step : steps)
        ASSERT_TRUE(PEVRANO::pushEvent(&step.in));
    for (size_t i = 0; i < std::size(steps); i++) {
        const Step& step = steps[i];
        PVEVENT polled;
        ASSERT_TRUE(PEVRANO::pollEvent(&polled)) << "event " << i;
        int x = -1, y = -1, buttons = -1;
        PEVRANO::getPointer(&x, &y, &buttons);
        EXPECT_EQ(std::vector<int>({step.in.type, int(step.clickedId), step.over, step.x, step.y, step.x,
                                    step.y, step.buttons, step.held}),
                  std::vector<int>({polled.type, int(polled.clickedId), polled.overInterface, polled.x,
                                    polled.y, x, y, buttons, PEVRANO::isKeyDown(step.key)}))
            << "event " << i;
    }
    EXPECT_STREQ("Ada", name->getCaption());
}

TEST_F(Events, RefusedEventsSayWhy)
{
    PVEVENT pushed = key(PV_EVENT_KEY_DOWN, 0, 0);
    for (pushed.key = 0; pushed.key < 256; pushed.key++)
        ASSERT_TRUE(PEVRANO::pushEvent(&pushed)) << pushed.key;
    const PVEVENT invalidSize = resize(0, 10), invalidType = event(PV_EVENT_TYPE(PV_EVENT_QUIT + 1));
    const PVEVENT extra = event(PV_EVENT_QUIT);
    EXPECT_FALSE(PEVRANO::pushEvent(&invalidSize));
    EXPECT_FALSE(PEVRANO::pushEvent(&invalidType));
    EXPECT_FALSE(PEVRANO::pushEvent(nullptr));
    EXPECT_FALSE(PEVRANO::pushEvent(&extra));
    EXPECT_FALSE(PEVRANO::pollEvent(nullptr));
    const std::string invalid = "   [!] Invalid params @ PEVRANO::pushEvent\n";
    EXPECT_EQ(
        invalid + invalid + invalid +
            "   [!] Event queue full @ PEVRANO::pushEvent\n   [!] Invalid params @ PEVRANO::pollEvent\n",
        logged());

    // The queue keeps the order of the events it took.
    PVEVENT polled;
    for (int i = 0; i < 256; i++)
        EXPECT_TRUE(PEVRANO::pollEvent(&polled) && polled.key == i) << i;
    EXPECT_FALSE(PEVRANO::pollEvent(&polled));
    EXPECT_EQ("", logged());
}

// The next frame fills the new size: the viewport follows at once and the
// 2D projection at the next begin2D, so a box of the new size covers it (a
// stale viewport or projection leaves a corner black or lights outside it).
TEST_F(Events, AResizeMakesTheNextFrameFillTheNewSize)
{
    const int width = windowWidth / 2, height = windowHeight / 2;
    const PVEVENT resized = resize(width, height);
    ASSERT_TRUE(PEVRANO::pushEvent(&resized));
    PVEVENT polled;
    ASSERT_TRUE(PEVRANO::pollEvent(&polled));
    EXPECT_EQ(PV_EVENT_RESIZE, polled.type);
    EXPECT_EQ((std::vector<int> {width, height}),
              (std::vector<int> {PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY()}));

    PVBOX* box = placed(0, 0, width, height);
    box->setColor(1.0f, 1.0f, 1.0f, 1.0f);
    box->setThickness(0);
    drawFrame2D(box);
    const Rgb white = {1, 1, 1}, black = {0, 0, 0};
    // GL counts rows from the bottom: the new window is the lower-left part.
    expectColour(white, pixelAt(2, 2), "lower left corner");
    expectColour(white, pixelAt(width - 3, height - 3), "upper right corner");
    expectColour(black, pixelAt(width + 2, height + 2), "outside the new size");
}

using WindowEvents = GuiTest;

// Real X input sent to the engine's window comes out of pollEvent, after
// whatever the window reported as it opened.
TEST_F(WindowEvents, XInputIsPolled)
{
    if (!PVSETTINGS::getSDLWindow())
        GTEST_SKIP() << "no X display";
    // SDL 1.2 takes the pointer on its drawing window and the keys on the
    // window manager's one.
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    ASSERT_EQ(1, SDL_GetWMInfo(&info));
    auto send = [](unsigned long window, const std::string& input) {
        return std::system((PEVRANO_XINPUT " window " + std::to_string(window) + " " + input).c_str());
    };
    ASSERT_EQ(0, send(info.info.x11.window, "click 30 40"));
    ASSERT_EQ(0, send(info.info.x11.wmwindow, "key a"));

    using Fields = std::array<int, 6>;
    const Fields expected[] = {{2, 0, 30, 40, 0, 0},
                               {3, 0, 30, 40, 1, 0},
                               {4, 0, 30, 40, 1, 0},
                               {0, 97, 30, 40, 0, 97},
                               {1, 97, 30, 40, 0, 0}};
    std::vector<Fields> seen;
    auto found = [&] {
        return std::search(seen.begin(), seen.end(), std::begin(expected), std::end(expected)) != seen.end();
    };
    for (int wait = 0; wait < 500 && !found(); wait++) {
        PVEVENT polled;
        while (PEVRANO::pollEvent(&polled))
            seen.push_back(fieldsOf(polled));
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_TRUE(found()) << ::testing::PrintToString(seen);
}

}  // namespace
