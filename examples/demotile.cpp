#include "demotile.h"

DemoTile::DemoTile(float size, const K3MVECTOR4D& colour) : colour(colour)
{
    type = PV_TYPE_CUSTOM;
    setDefaultName("[tile %d]");
    const GLfixed h = PV_floatToFixed(size / 2.0f);
    const GLfixed corners[12] = {-h, -h, 0, h, -h, 0, -h, h, 0, h, h, 0};
    for (int i = 0; i < 12; ++i) {
        vertices[i] = corners[i];
        normals[i] = (i % 3 == 2) ? PV_floatToFixed(1.0f) : 0;
    }
}

// The engine calls render with the node's render-list record during end3D,
// and again in the selection profile when the application picks.
bool DemoTile::render(void* element)
{
    PVELEMENT* record = static_cast<PVELEMENT*>(element);
    if (PVOPENGL::getProfile() == PV_OPENGL_PROFILE_NORMAL) {
        PVLIGHT::lightingOn();
        PVLIGHT::activateNearest(record);
        PV_glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, colour);
        PV_glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, colour);
    } else {
        PVLIGHT::lightingOff();
        setSelectionColour(record);
    }
    PVTEXTURE::texturingOff(PV_TEXTURE_UNITS);
    PVOPENGL::blendingOff();  // particles leave it on; codes are drawn with alpha 0
    // The lights load their own matrices: the tile's comes after them.
    PV_glLoadMatrixf(record->getMatrix()->m);
    PVOPENGL::vertexArrayOn();
    PVOPENGL::normalArrayOn();
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
    glVertexPointer(3, GL_FIXED, 0, vertices);
    glNormalPointer(GL_FIXED, 0, normals);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    return true;
}

// The colour that PEVRANO::select reads back as this node's id: 5-6-5 on a
// 16-bit display, the code's bytes otherwise.
void DemoTile::setSelectionColour(const PVELEMENT* record)
{
    const unsigned int code = record->getAuxId() ? record->getAuxId() : id;
    if (PVSETTINGS::getSDLColorDepth() == 16)
        PV_glColor4f(float(code >> 11) / 31.0f, float((code & 0x7E0) >> 5) / 63.0f, float(code & 31) / 31.0f,
                     0.0f);
    else
        PV_glColor4f(float(code & 0xFF) / 255.0f, float((code >> 8) & 0xFF) / 255.0f,
                     float((code >> 16) & 0xFF) / 255.0f, float(code >> 24) / 255.0f);
}
