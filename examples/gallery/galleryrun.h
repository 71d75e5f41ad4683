// The gallery's one shared piece: how an example runs. With a display and no
// arguments it runs live until Escape or the window is closed. With
// --frames N, or without a display (30 frames then), it draws N frames at a
// fixed step of 1/30 s and writes the last one as a PNG: --screenshot FILE
// (default <example>.png). --size WxH sets the window (default 640x480).
#ifndef PEVRANO_EXAMPLES_GALLERY_GALLERYRUN_H
#define PEVRANO_EXAMPLES_GALLERY_GALLERYRUN_H

#include <pevrano.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

class GalleryRun {
public:
    GalleryRun(int argc, char** argv, const char* name) : name(name), screenshot(std::string(name) + ".png")
    {
        for (int i = 1; i + 1 < argc; i += 2) {
            if (!std::strcmp(argv[i], "--frames"))
                frames = std::atoi(argv[i + 1]);
            else if (!std::strcmp(argv[i], "--screenshot"))
                screenshot = argv[i + 1];
            else if (!std::strcmp(argv[i], "--size"))
                std::sscanf(argv[i + 1], "%dx%d", &width, &height);
        }
    }

    // Starts the engine in a window, or off-screen when there is no display.
    bool start()
    {
        kvfSetConsoleEcho(false);
        PVSETTINGS settings;
        settings.setWindowX(width);
        settings.setWindowY(height);
        if (!PEVRANO::init(&settings))
            return false;
        if (!PVSETTINGS::getSDLWindow() && frames < 0)
            frames = 30;
        PEVRANO::setCaption(name);
        return true;
    }

    bool scripted() const { return frames >= 0; }
    int frame() const { return drawn; }
    int lastFrame() const { return frames - 1; }
    int getWidth() const { return PVSETTINGS::getSDLWindowX(); }
    int getHeight() const { return PVSETTINGS::getSDLWindowY(); }
    float seconds() const { return step; }

    // True while there is a frame to draw; measures its time step.
    bool nextFrame()
    {
        const auto now = std::chrono::steady_clock::now();
        step = scripted() ? 1.0f / 30.0f : std::chrono::duration<float>(now - last).count();
        step = drawn ? step : 0.0f;
        last = now;
        return scripted() ? drawn < frames : !quit;
    }

    // Escape or closing the window ends a live run.
    void handle(const PVEVENT& event)
    {
        quit = quit || event.type == PV_EVENT_QUIT || (event.type == PV_EVENT_KEY_DOWN && event.key == 27);
    }

    // Polls the frame's events when the example needs none but the quitting ones.
    void pollEvents()
    {
        PVEVENT event;
        while (PEVRANO::pollEvent(&event))
            handle(event);
    }

    // Saves the last scripted frame before it is shown, then shows it.
    void endFrame()
    {
        if (scripted() && drawn == lastFrame())
            saved = PEVRANO::screenshot(screenshot.c_str());
        PEVRANO::swap();
        ++drawn;
    }

    // Shuts the engine down; the exit status says whether the screenshot was written.
    int finish()
    {
        PEVRANO::free();
        if (scripted() && !saved) {
            std::fprintf(stderr, "%s: could not write %s\n", name, screenshot.c_str());
            return EXIT_FAILURE;
        }
        return EXIT_SUCCESS;
    }

private:
    const char* name;
    std::string screenshot;
    int frames = -1, width = 640, height = 480, drawn = 0;
    bool quit = false, saved = false;
    float step = 0.0f;
    std::chrono::steady_clock::time_point last = std::chrono::steady_clock::now();
};

#endif
