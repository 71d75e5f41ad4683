// A window and its events. The engine opens the window (or an off-screen
// surface on a server) and hands the application its events one by one:
// PEVRANO::pollEvent at the top of each frame, PEVRANO::getPointer for where
// the pointer is now. Here the pointer paints the background: red grows to
// the right, green upwards. A key press prints its key code and character.
//
// The calls that matter: PEVRANO::init, PEVRANO::pollEvent, PEVRANO::getPointer,
// PVOPENGL::setBackgroundColor, PEVRANO::clear, PEVRANO::swap, PEVRANO::free.
#include "galleryrun.h"

#include <pevrano.h>

#include <cstdio>

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "01_window");
    if (!run.start())
        return 1;  // pevrano_log.txt says why

    // Off-screen there is no user: a script pushes the events a user would
    // make, and they come back through pollEvent like the window's own.
    if (run.scripted()) {
        PVEVENT move;
        move.type = PV_EVENT_POINTER_MOVE;
        move.x = run.getWidth() * 3 / 4;
        move.y = run.getHeight() / 4;
        PEVRANO::pushEvent(&move);
    }

    while (run.nextFrame()) {
        PVEVENT event;
        while (PEVRANO::pollEvent(&event)) {
            run.handle(event);  // Escape or closing the window ends the run
            if (event.type == PV_EVENT_KEY_DOWN)
                std::printf("key %d typed '%c'\n", event.key, event.unicode ? char(event.unicode) : ' ');
        }
        int x = 0, y = 0;
        PEVRANO::getPointer(&x, &y, nullptr);  // pixels, y downwards
        const float red = float(x) / float(run.getWidth());
        const float green = 1.0f - float(y) / float(run.getHeight());
        PVOPENGL::setBackgroundColor(red, green, 0.3f, 1.0f);

        PEVRANO::clear(true, true, false);
        run.endFrame();  // PEVRANO::swap, after the screenshot in scripted runs
    }
    return run.finish();
}
