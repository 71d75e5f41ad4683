#include "support/quadnode.h"

namespace pvtest {

QuadNode::QuadNode(float halfSize) : colour(1.0f, 1.0f, 1.0f, 1.0f), lit(false), selectionCode(0)
{
    type = PV_TYPE_CUSTOM;
    setDefaultName("[quad %d]");
    // Triangle strip: bottom left, bottom right, top left, top right (front
    // faces wind counter-clockwise seen from +z).
    const GLfixed h = PV_floatToFixed(halfSize);
    const GLfixed corners[12] = {-h, -h, 0, h, -h, 0, -h, h, 0, h, h, 0};
    for (int i = 0; i < 12; i++) {
        vertices[i] = corners[i];
        normals[i] = (i % 3 == 2) ? 65536 : 0;
    }
}

K3MVECTOR4D QuadNode::codeColour(unsigned short code)
{
    return K3MVECTOR4D((code >> 11) / 31.0f, ((code >> 5) & 63) / 63.0f, (code & 31) / 31.0f, 1.0f);
}

void QuadNode::applyLitMaterial()
{
    const float black[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, colour);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, colour);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, black);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, black);
}

void QuadNode::drawSquare()
{
    PVOPENGL::vertexArrayOn();
    PVOPENGL::normalArrayOn();
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
    glVertexPointer(3, GL_FIXED, 0, vertices);
    glNormalPointer(GL_FIXED, 0, normals);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

bool QuadNode::render(void* element)
{
    PVELEMENT* record = static_cast<PVELEMENT*>(element);
    if (record == nullptr)
        return false;
    const bool selecting = PVOPENGL::getProfile() == PV_OPENGL_PROFILE_SELECTION;
    if (lit && !selecting) {
        PVLIGHT::lightingOn();
        PVLIGHT::activateNearest(record);
        applyLitMaterial();
    } else {
        PVLIGHT::lightingOff();
        const K3MVECTOR4D flat = selecting ? codeColour(selectionCode) : colour;
        PV_glColor4f(flat.x, flat.y, flat.z, flat.w);
    }
    // The lights load their own matrices: load the quad's after them.
    PV_glLoadMatrixf(record->getMatrix()->m);
    drawSquare();
    return true;
}

}  // namespace pvtest
