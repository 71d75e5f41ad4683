// The engine's showcase: a lit and textured scene with an animated skinned
// character, particle effects and a 2D interface loaded from XML (a window
// with text, buttons, a text field and a slider setting the running speed, a
// box playing a film), with colour picking naming the object under the
// pointer. The display comes from the default configuration at 640 x 480, or
// from a PEVRANO_* configuration file given as the first argument.
//
// Under X it runs until Escape, the Quit button or closing the window.
// Without a display it draws a fixed number of frames off-screen, picking at a
// marked point, and writes the last one as screenshot.png in the working
// directory. Either way it prints the frame rate it reached.
#include "demointerface.h"
#include "demoworld.h"

#include <pevrano.h>

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

namespace {

const int offScreenFrames = 150;
const float offScreenStep = 1.0f / 30.0f;

class FrameClock {
public:
    // Seconds since the previous call (0 on the first).
    float tick()
    {
        const auto now = std::chrono::steady_clock::now();
        const float step = frames ? std::chrono::duration<float>(now - last).count() : 0.0f;
        if (!frames)
            first = now;
        last = now;
        ++frames;
        return step;
    }
    float framesPerSecond() const
    {
        const float seconds = std::chrono::duration<float>(last - first).count();
        return frames > 1 && seconds > 0.0f ? float(frames - 1) / seconds : 0.0f;
    }
    int count() const { return frames; }

private:
    std::chrono::steady_clock::time_point first, last;
    int frames = 0;
};

std::string workingDirectory()
{
    char directory[PATH_MAX];
    return getcwd(directory, sizeof directory) ? directory : ".";
}

// One frame without the swap: the world moves on by the given seconds, then
// the object at the pointer (if it is in the window) is picked and named;
// returns its name (null over the background).
const char* drawFrame(DemoWorld& world, DemoInterface& interface, float seconds, int pointerX, int pointerY,
                      float framesPerSecond)
{
    PEVRANO::clear(true, true, false);
    world.advance(seconds, interface.getAnimationSpeed());
    world.draw();
    const bool inside = pointerX >= 0 && pointerY >= 0 && pointerX < PVSETTINGS::getSDLWindowX() &&
                        pointerY < PVSETTINGS::getSDLWindowY();
    const char* picked = inside ? world.pick(pointerX, pointerY) : nullptr;
    interface.showPicked(picked);
    interface.showFrameRate(framesPerSecond);
    interface.draw(int(seconds * 1000.0f + 0.5f));
    return picked;
}

// Without a display: a fixed number of frames at a fixed step, picking at a
// point on the character, with a visitor using the interface half-way; the
// last frame is saved before its swap and described.
bool runOffScreen(DemoWorld& world, DemoInterface& interface, FrameClock& clock,
                  const std::string& screenshot)
{
    const int width = PVSETTINGS::getSDLWindowX();
    const int height = PVSETTINGS::getSDLWindowY();
    const int pickX = width * 50 / 100;
    const int pickY = height * 52 / 100;
    interface.showMarker(pickX, pickY);
    bool saved = false;
    for (int frame = 0; frame < offScreenFrames; ++frame) {
        clock.tick();
        if (frame == offScreenFrames / 2)
            interface.visit("Ada");
        interface.handleEvents();
        const char* picked =
            drawFrame(world, interface, frame ? offScreenStep : 0.0f, pickX, pickY, clock.framesPerSecond());
        if (frame == offScreenFrames - 1) {
            saved = PEVRANO::screenshot(screenshot.c_str());
            std::printf("Last frame: pointer on %s, running speed %.2fx, name typed '%s'\n",
                        picked ? picked : "nothing", interface.getAnimationSpeed(), interface.getTypedName());
        }
        PEVRANO::swap();
    }
    return saved;
}

// In an X window: real time, the window's events, until the user quits.
void runLive(DemoWorld& world, DemoInterface& interface, FrameClock& clock)
{
    std::printf("Interface live: Escape, Quit or closing the window ends the demo\n");
    while (interface.handleEvents()) {
        const float seconds = clock.tick();
        int pointerX = 0, pointerY = 0;
        PEVRANO::getPointer(&pointerX, &pointerY, nullptr);
        drawFrame(world, interface, seconds, pointerX, pointerY, clock.framesPerSecond());
        PEVRANO::swap();
    }
}

}  // namespace

int main(int argc, char** argv)
{
    kvfSetConsoleEcho(false);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);  // each line as it comes, into a pipe too
    PVSETTINGS settings;
    settings.setWindowX(640);
    settings.setWindowY(480);
    if (argc > 1 && !settings.load(argv[1])) {
        std::fprintf(stderr, "cannot read the configuration file %s\n", argv[1]);
        return EXIT_FAILURE;
    }
    const std::string log = workingDirectory() + "/pevrano_log.txt";
    if (!PEVRANO::init(&settings)) {
        std::fprintf(stderr, "the engine did not start; see %s\n", log.c_str());
        return EXIT_FAILURE;
    }
    const bool live = PVSETTINGS::getSDLWindow() != 0;
    std::printf("display %dx%d, %d-bit colour, %s\n", PVSETTINGS::getSDLWindowX(),
                PVSETTINGS::getSDLWindowY(), PVSETTINGS::getSDLColorDepth(),
                live ? "X11 window" : "off-screen");

    PVOPENGL::setGlobalAmbientLight(0.15f, 0.15f, 0.2f, 1.0f);
    PVOPENGL::setBackgroundColor(0.25f, 0.45f, 0.75f, 1.0f);
    DemoWorld world;
    world.build();
    DemoInterface interface;
    if (!interface.build()) {
        std::fprintf(stderr, "the interface file did not load; see %s\n", log.c_str());
        PEVRANO::free();
        return EXIT_FAILURE;
    }
    std::printf("%s\n", world.hasCharacter() ? "animated character shown"
                                             : "no converted character in the working directory");

    FrameClock clock;
    const std::string screenshot = workingDirectory() + "/screenshot.png";
    bool saved = true;
    if (live)
        runLive(world, interface, clock);
    else
        saved = runOffScreen(world, interface, clock, screenshot);
    std::printf("%d frames at %.1f frames per second\n", clock.count(), clock.framesPerSecond());
    PEVRANO::free();

    if (!saved) {
        std::fprintf(stderr, "could not write %s\n", screenshot.c_str());
        return EXIT_FAILURE;
    }
    if (!live)
        std::printf("Screenshot written to %s\n", screenshot.c_str());
    std::printf("Log written to %s\n", log.c_str());
    return EXIT_SUCCESS;
}
