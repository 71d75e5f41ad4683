// Fonts made with pevrano-font. At build time the tool turns a TrueType face
// (Debian's DejaVu Sans) into a glyph sheet (a 256 x 256 TGA of 16 x 16
// cells) and a kerning file, here at 10 and 16 pixels:
//     pevrano-font DejaVuSans.ttf sans16.tga sans16.txt 16
// The program makes a PVFONT from each pair and writes labels with them;
// ^cRGBA (digits 0-8) colours what follows, ^x/^y move the pen.
//
// The calls that matter: PVTEXTURE::load, PVTEXTURE::setFilter,
// PVFONT::setTexture, PVFONT::loadKerning, PVLABEL::setFont, PVLABEL::write.
#include "galleryrun.h"

#include <pevrano.h>

namespace {

// A font from a glyph sheet and kerning file made by pevrano-font.
PVFONT* makeFont(const char* sheet, const char* kerning)
{
    PVTEXTURE* texture = new PVTEXTURE();
    if (!texture->load(sheet))
        return nullptr;
    texture->setFilter(false, false, false);  // crisp glyphs: one texel per pixel
    PVFONT* font = new PVFONT();  // fonts belong to the engine
    font->setTexture(texture);
    font->loadKerning(kerning);  // per-character advances
    return font;
}

PVLABEL* addLabel(PVNODE* root, PVFONT* font, int x, int y, int width, const char* text)
{
    PVLABEL* label = new PVLABEL();
    label->setFont(font);
    label->setPosition(float(x), float(y), 0.0f);
    label->setSizes(width, int(font->getCharSizeY()) + 4);
    label->write("%s", text);
    label->link(root);
    return label;
}

}  // namespace

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "06_fonts");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.12f, 0.12f, 0.18f, 1.0f);
    PVTEXTURE::setPath(GALLERY_MADE);  // where the build wrote the fonts
    PVFONT::setPath(GALLERY_MADE);
    PVFONT* small = makeFont("sans10.tga", "sans10.txt");
    PVFONT* large = makeFont("sans16.tga", "sans16.txt");
    if (!small || !large)
        return run.finish();

    PVNODE* root = new PVNODE();  // widgets under one root, drawn in the 2D pass
    addLabel(root, large, 10, 10, 300, "DejaVu Sans at 16 pixels");
    addLabel(root, small, 10, 40, 300, "and at 10 pixels, kerned: AVATAR WAVE To");
    addLabel(root, large, 10, 70, 300, "^c8008red ^c0808green ^c3388blue ^c8888white");
    PVLABEL* counter = addLabel(root, small, 10, 100, 300, "");

    while (run.nextFrame()) {
        PVEVENT event;
        while (PEVRANO::pollEvent(&event))
            run.handle(event);
        counter->write("frame %d", run.frame());  // labels can be rewritten every frame

        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        root->pass(false);
        PEVRANO::end2D();
        run.endFrame();
    }
    return run.finish();
}
