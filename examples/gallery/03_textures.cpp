// Textures and materials. A texture is read from a file (TGA, PNG or JPEG,
// recognised by its first bytes), uploaded with mipmaps, and shown by the
// material of whatever mesh carries it. Left: a turning box in bricks read
// from a TGA file, filtered through its mipmaps. Right: a pane of glass read
// from a PNG file with an alpha channel; its material is transparent, so the
// red ball behind it shows through, tinted, inside the pane's opaque frame.
//
// The calls that matter: PVTEXTURE::setPath, PVTEXTURE::load,
// PVTEXTURE::setFilter, PVMESH::createBox, PVMESH::createSphere,
// PVMATERIAL (setTexture, setDiffuse, setTransparency).
#include "galleryrun.h"

#include <pevrano.h>

namespace {

// A box whose own material shows a texture read from a file.
PVMESH* texturedBox(const char* file, float width, float height, float depth)
{
    PVTEXTURE* texture = new PVTEXTURE();  // textures belong to the engine too
    if (!texture->load(file))
        return nullptr;  // the log says why
    texture->setFilter(true, true, false);  // trilinear, mipmapped, repeating
    PVMESH* box = PVMESH::createBox(width, height, depth);
    box->getMaterial()->setTexture(0, texture);
    box->getMaterial()->setDiffuse(1.0f, 1.0f, 1.0f, 1.0f);
    return box;
}

}  // namespace

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "03_textures");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.25f, 1.0f);
    PVOPENGL::setGlobalAmbientLight(0.4f, 0.4f, 0.4f, 1.0f);
    PVTEXTURE::setPath(GALLERY_DATA);  // texture files are read from here

    PVNODE* scene = new PVNODE();
    PVLIGHT* light = new PVLIGHT();  // an omni light in front, up to the left
    light->setPosition(-2.0f, 3.0f, 5.0f);
    light->link(scene);

    PVMESH* bricks = texturedBox("bricks.tga", 1.8f, 1.8f, 1.8f);
    PVMESH* glass = texturedBox("glass.png", 1.8f, 1.8f, 0.05f);
    if (!bricks || !glass)
        return run.finish();
    bricks->setPosition(-1.5f, 0.0f, 0.0f);
    bricks->link(scene);
    // Transparent materials are drawn after the opaque ones, blended with
    // what is behind them by the texture's alpha.
    glass->getMaterial()->setTransparency(0.5f);
    glass->setPosition(1.5f, 0.0f, 1.0f);
    glass->link(scene);

    PVMESH* ball = PVMESH::createSphere(0.6f, 20, 12);
    ball->getMaterial()->setDiffuse(1.0f, 0.1f, 0.1f, 1.0f);
    ball->setPosition(1.5f, 0.0f, -0.5f);
    ball->link(scene);

    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0.0f, 0.5f, 6.0f);
    camera->setTargetNode(camera);
    camera->setTarget(0.0f, 0.0f, 0.0f);

    float turn = 30.0f;  // degrees
    while (run.nextFrame()) {
        run.pollEvents();  // PEVRANO::pollEvent until none is left; Escape ends the run
        turn += 20.0f * run.seconds();
        bricks->setRotation(20.0f, turn, 0.0f);

        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);
        PEVRANO::end3D(false);
        run.endFrame();
    }
    return run.finish();
}
