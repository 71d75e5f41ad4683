// Picking objects under the pointer. PEVRANO::select(x, y) draws the scene
// once more, each object in a colour that codes its id, reads the pixel under
// the pointer back and returns the id (0 over the background);
// PVNODE::findById turns it into the node. The object under the pointer
// glows and its name goes to the window's caption. Off-screen, a script
// moves the pointer onto the middle box.
//
// The calls that matter: PEVRANO::select, PVNODE::findById,
// PEVRANO::getPointer, PVMATERIAL::setEmission, PEVRANO::setCaption.
#include "galleryrun.h"

#include <pevrano.h>

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "09_picking");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.15f, 0.2f, 0.25f, 1.0f);

    PVNODE* scene = new PVNODE();
    PVLIGHT* light = new PVLIGHT();
    light->setPosition(0.0f, 3.0f, 5.0f);
    light->link(scene);
    const char* names[] = {"left box", "middle box", "right box"};
    PVMESH* boxes[3];
    for (int i = 0; i < 3; ++i) {
        boxes[i] = PVMESH::createBox(1.2f, 1.2f, 1.2f);
        boxes[i]->setName(names[i]);
        boxes[i]->setPosition(2.0f * float(i - 1), 0.0f, 0.0f);
        boxes[i]->setRotation(20.0f, 30.0f, 0.0f);
        boxes[i]->getMaterial()->setDiffuse(0.5f, 0.5f, 0.55f, 1.0f);
        boxes[i]->link(scene);
    }
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0.0f, 0.0f, 6.0f);

    if (run.scripted()) {  // a pointer over the middle of the window
        PVEVENT move;
        move.type = PV_EVENT_POINTER_MOVE;
        move.x = run.getWidth() / 2;
        move.y = run.getHeight() / 2;
        PEVRANO::pushEvent(&move);
    }

    PVNODE* picked = nullptr;
    while (run.nextFrame()) {
        run.pollEvents();  // PEVRANO::pollEvent until none is left; Escape ends the run

        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);
        PEVRANO::end3D(false);

        // After the 3D pass: select redraws the frame's objects in their codes.
        int x = 0, y = 0;
        PEVRANO::getPointer(&x, &y, nullptr);
        const unsigned int id = PEVRANO::select(x, y);
        PVNODE* under = id ? PVNODE::findById(id) : nullptr;
        if (under != picked) {
            PEVRANO::setCaption(under ? under->getName() : "09_picking");
            picked = under;
        }
        for (PVMESH* box : boxes)  // the glow shows from the next frame on
            box->getMaterial()->setEmission(box == picked ? 0.8f : 0.0f, box == picked ? 0.6f : 0.0f, 0.0f,
                                            1.0f);
        run.endFrame();
    }
    return run.finish();
}
