// A film on a box. PVVIDEO decodes an MPEG-1 file (data/film.mpg, 256 x 192)
// into a texture; the box's material shows that texture, so the film plays
// on its faces. There is no clock in the decoder: each update(steps) runs
// that many decoder steps, and the program chooses how many per frame. The
// pictures fill the top 192 rows of the texture: the band below stays black.
//
// The calls that matter: PVTEXTURE::create, PVTEXTURE::setFilter,
// PVVIDEO::setMPGPath, PVVIDEO::load, PVVIDEO::setTexture, PVVIDEO::playLoop,
// PVVIDEO::update, PVMATERIAL::setTexture.
#include "galleryrun.h"

#include <pevrano.h>

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "07_film");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.1f, 0.1f, 0.1f, 1.0f);
    PVOPENGL::setGlobalAmbientLight(0.6f, 0.6f, 0.6f, 1.0f);

    // An empty RGB texture large enough for the pictures; no mipmaps, since
    // the decoder replaces only level 0.
    PVTEXTURE* screen = new PVTEXTURE();
    screen->create(256, 256, 3);
    screen->setFilter(true, false, true);
    PVVIDEO::setMPGPath(GALLERY_DATA);
    PVVIDEO* film = new PVVIDEO();  // videos belong to the engine
    if (!film->load("film.mpg"))
        return run.finish();  // the log says why
    film->setTexture(screen);
    film->playLoop();  // loaded videos are stopped; play() would stop at the end

    PVNODE* scene = new PVNODE();
    PVMESH* box = PVMESH::createBox(2.0f, 2.0f, 2.0f);
    box->getMaterial()->setTexture(0, screen);
    box->getMaterial()->setDiffuse(1.0f, 1.0f, 1.0f, 1.0f);
    box->setRotation(20.0f, 35.0f, 0.0f);
    box->link(scene);
    PVLIGHT* light = new PVLIGHT();
    light->setPosition(2.0f, 3.0f, 5.0f);
    light->link(scene);
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0.0f, 0.0f, 5.0f);

    while (run.nextFrame()) {
        run.pollEvents();  // PEVRANO::pollEvent until none is left; Escape ends the run
        film->update(33);  // decoder steps for this frame

        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);
        PEVRANO::end3D(false);
        run.endFrame();
    }
    return run.finish();
}
