// A lit scene loaded from a file, seen by a camera that orbits it. Three
// brick panels come from a PVE scene file (data/panels.pve); a sphere made
// in code stands in front of them. One directional light shines along +x, so
// the sphere's -x half (the left of the picture) is lit and the other half
// dark, while the camera circles the sphere and keeps looking at it.
//
// The calls that matter: PEVRANO::setPVEPath, PVTEXTURE::setPath, PEVRANO::load,
// PVMESH::createSphere, PVLIGHT (setLightType, setDirection, setDiffuse),
// PVCAMERA (setTargetNode, setTarget, setPosition), PEVRANO::begin3D,
// PVNODE::pass, PEVRANO::end3D.
#include "galleryrun.h"

#include <pevrano.h>

#include <cmath>

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "02_lit_scene");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.1f, 0.1f, 0.15f, 1.0f);
    PVOPENGL::setGlobalAmbientLight(0.1f, 0.1f, 0.1f, 1.0f);

    // Every node hangs under one root: passing the root draws the scene.
    PVNODE* scene = new PVNODE();
    PEVRANO::setPVEPath(GALLERY_DATA);  // where scene files are read
    PVTEXTURE::setPath(GALLERY_DATA);  // and the textures they name
    PVNODE* panels = PEVRANO::load("panels.pve");
    if (panels)
        panels->link(scene);

    PVMESH* sphere = PVMESH::createSphere(1.0f, 24, 16);  // with a material of its own
    sphere->getMaterial()->setDiffuse(0.9f, 0.9f, 0.9f, 1.0f);
    sphere->setPosition(0.0f, 0.75f, 1.5f);
    sphere->link(scene);

    // A directional light has no position, only the direction it shines along.
    PVLIGHT* sun = new PVLIGHT();
    sun->setLightType(PV_LIGHT_DIRECTIONAL);
    K3MVECTOR3D along(1.0f, -0.3f, 0.0f);
    sun->setDirection(along.normalize());
    sun->setDiffuse(1.0f, 1.0f, 0.9f, 1.0f);
    sun->link(scene);

    // A camera that is its own target node looks at the point set by setTarget.
    PVCAMERA* camera = new PVCAMERA();
    camera->setTargetNode(camera);
    camera->setTarget(0.0f, 0.75f, 1.5f);

    float angle = 0.0f;  // radians around the sphere
    while (run.nextFrame()) {
        run.pollEvents();  // PEVRANO::pollEvent until none is left; Escape ends the run
        angle += 0.3f * run.seconds();
        camera->setPosition(5.0f * std::sin(angle), 2.0f, 1.5f + 5.0f * std::cos(angle));

        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);  // fills the frame's render list
        PEVRANO::end3D(false);  // sorts and draws it
        run.endFrame();
    }
    return run.finish();  // PEVRANO::free deletes every node
}
