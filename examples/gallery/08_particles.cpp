// Particle effects. A PVEMITTER is a scene node described by an XML file
// (examples/effects: fire.xml, smoke.xml, sparks.xml): how many particles,
// how they are born, move, change colour and size, and die. Every emitter
// draws its particles as camera-facing quads in one call. Here the program
// moves them on by its own time step (setAutoUpdate(false) and update);
// left alone they follow the engine's frame time.
//
// The calls that matter: PVEMITTER::load, PVEMITTER::setAutoUpdate,
// PVEMITTER::update, PVTEXTURE::setPath (for the particles' texture).
#include "galleryrun.h"

#include <pevrano.h>

#include <string>
#include <vector>

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "08_particles");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.05f, 0.05f, 0.1f, 1.0f);
    PVTEXTURE::setPath(GALLERY_EFFECTS);  // the files name particle.tga

    PVNODE* scene = new PVNODE();
    const struct {
        const char* file;
        float x, y;
    } effects[] = {{"fire.xml", -1.2f, -1.0f}, {"smoke.xml", -1.2f, -0.1f}, {"sparks.xml", 1.5f, -1.0f}};
    std::vector<PVEMITTER*> emitters;
    for (const auto& effect : effects) {
        PVEMITTER* emitter = new PVEMITTER();
        if (!emitter->load((std::string(GALLERY_EFFECTS) + effect.file).c_str()))
            continue;  // the log says which element was wrong
        emitter->setPosition(effect.x, effect.y, 0.0f);
        emitter->setAutoUpdate(false);
        emitter->link(scene);
        emitters.push_back(emitter);
    }

    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0.0f, 0.0f, 5.0f);

    while (run.nextFrame()) {
        run.pollEvents();  // PEVRANO::pollEvent until none is left; Escape ends the run
        for (PVEMITTER* emitter : emitters)
            emitter->update(run.seconds());

        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);  // particles join the transparent objects,
        PEVRANO::end3D(false);  // drawn back to front after the opaque ones
        run.endFrame();
    }
    return run.finish();
}
