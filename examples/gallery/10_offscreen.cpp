// Rendering off-screen to a PNG file, as a server or a batch job would. With
// no X display the engine draws into an off-screen surface (Mesa's
// surfaceless platform): same calls, same pixels, no window. This program
// clears DISPLAY before starting the engine so that it renders off-screen
// even inside a desktop session, draws the brick panels of data/panels.pve
// under a spot light and writes the picture with PEVRANO::screenshot, which
// reads back the frame being drawn: call it before PEVRANO::swap.
//
// The calls that matter: PEVRANO::init (off-screen without DISPLAY),
// PEVRANO::load, PVLIGHT (PV_LIGHT_SPOT), PEVRANO::screenshot.
#include "galleryrun.h"

#include <pevrano.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    unsetenv("DISPLAY");  // no window, even on a desktop
    GalleryRun run(argc, argv, "10_offscreen");
    if (!run.start())
        return 1;  // without Mesa's surfaceless platform the log says so
    PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
    PVOPENGL::setGlobalAmbientLight(0.15f, 0.15f, 0.15f, 1.0f);

    PVNODE* scene = new PVNODE();
    PEVRANO::setPVEPath(GALLERY_DATA);
    PVTEXTURE::setPath(GALLERY_DATA);
    PVNODE* panels = PEVRANO::load("panels.pve");
    if (!panels)
        return run.finish();
    panels->link(scene);

    // A spot light aimed at the middle panel from above and in front.
    PVLIGHT* spot = new PVLIGHT();
    spot->setLightType(PV_LIGHT_SPOT);
    spot->setPosition(0.0f, 3.0f, 3.0f);
    spot->setTargetNode(spot);  // aims at its own target point
    spot->setTarget(0.0f, 0.75f, -1.0f);
    spot->setCutOff(25.0f);
    spot->setDiffuse(1.0f, 0.95f, 0.8f, 1.0f);
    spot->link(scene);

    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0.0f, 1.5f, 5.0f);
    camera->setTargetNode(camera);
    camera->setTarget(0.0f, 0.75f, -1.0f);

    while (run.nextFrame()) {  // off-screen runs are always scripted
        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);
        PEVRANO::end3D(false);
        run.endFrame();  // the last frame goes to the PNG before its swap
    }
    std::printf("rendered %d frames off-screen\n", run.frame());
    return run.finish();
}
