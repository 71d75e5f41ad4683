#include "gui/pvbox.h"

#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"
#include "gui/pvwindow.h"
#include "scene/pvelement.h"

long PVBOX::counter = 0;

PVBOXCOORD::PVBOXCOORD() : coord {0.0f, 1.0f, 1.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f} {}

PVBOXCOORD::PVBOXCOORD(float u, float v, bool topDown)
{
    const float top = topDown ? 0.0f : v;
    const float bottom = topDown ? v : 0.0f;
    const float corners[8] = {0.0f, top, u, top, 0.0f, bottom, u, bottom};
    for (int i = 0; i < 8; i++)
        coord[i] = corners[i];
}

PVBOX::PVBOX() :
    sizeX(64),
    sizeY(64),
    startX(0),
    startY(0),
    endX(0),
    endY(0),
    thickness(3),
    color(0.5f, 0.5f, 0.5f, 1.0f),
    checkStatus(false),
    displayStatus(true),
    staticStatus(true),
    clickedStatus(false),
    limitStatus(false),
    scissorStatus(true),
    foremostTimeStamp(getNextCounter()),
    texture(nullptr),
    shader(nullptr)
{
    type = PV_TYPE_BOX;
    setDefaultName("[box %d]");
}

void PVBOX::setLimits(int x0, int y0, int x1, int y1)
{
    startX = x0;
    startY = y0;
    endX = x1;
    endY = y1;
}

bool PVBOX::setTexture(PVTEXTURE* newTexture)
{
    if (texture)
        texture->decReferences();
    texture = newTexture;
    if (texture)
        texture->incReferences();
    return true;
}

bool PVBOX::setShader(PVSHADER* newShader)
{
    shader = newShader;
    return true;
}

long PVBOX::getNextCounter() { return ++counter; }

// The texture class skips a texture already bound to the unit without
// turning texturing back on, and untextured widgets turn it off in between.
void PVBOX::bindTexture(PVTEXTURE* sheet)
{
    sheet->render(nullptr);
    PVTEXTURE::texturingOn(0);
}

K3MVECTOR3D PVBOX::ancestorsPosition() const
{
    K3MVECTOR3D sum(0.0f, 0.0f, 0.0f);
    for (PVNODE* node = parent; node; node = node->getParent())
        sum += node->getPosition();
    return sum;
}

PVWINDOW* PVBOX::enclosingWindow() const
{
    for (PVNODE* node = parent; node; node = node->getParent())
        if (node->getType() == PV_TYPE_WINDOW)
            return static_cast<PVWINDOW*>(node);
    return nullptr;
}

bool PVBOX::checkBoundaries(int x, int y)
{
    if (!checkStatus)
        return false;
    // Inside a window only the window's own rectangle can be hit, except for
    // its first child, the title bar, which stays reachable when minimised.
    if (type != PV_TYPE_WINDOW) {
        PVWINDOW* window = enclosingWindow();
        if (window && !window->checkBoundaries(x, y) && window->getChild(0) != this)
            return false;
    }
    const K3MVECTOR3D at = ancestorsPosition() + position;
    const float px = float(x);
    const float py = float(y);
    return px >= at.x && py >= at.y && px <= at.x + float(sizeX) && py <= at.y + float(sizeY);
}

bool PVBOX::checkLimits(int* dx, int* dy)
{
    if (!dx || !dy) {
        kvfLog("   [!] Invalid params @ PVBOX::checkLimits\n");
        return false;
    }
    if (!limitStatus)
        return false;
    const K3MVECTOR3D ancestors = ancestorsPosition();
    const int ax = int(ancestors.x);
    const int ay = int(ancestors.y);
    const int px = int(position.x);
    const int py = int(position.y);
    int nx = *dx + ax + px;
    int ny = *dy + ay + py;
    if (nx < startX + ax)
        nx = startX + ax;
    if (ny < startY + ay)
        ny = startY + ay;
    if (nx + sizeX > endX + ax)
        nx = endX - sizeX + ax;
    if (ny + sizeY > endY + ay)
        ny = endY - sizeY + ay;
    *dx = nx - ax - px;
    *dy = ny - ay - py;
    return true;
}

// Each child draws one counter value for the argument and one for its own
// stamp, so it always ends up in front of its parent.
bool PVBOX::setForemost(long)
{
    foremostTimeStamp = getNextCounter();
    for (unsigned int i = 0; i < numberOfChildren; i++) {
        const long ignored = getNextCounter();
        PVNODE* child = children[i];
        if (child->getType() >= PV_TYPE_BOX && child->getType() <= PV_TYPE_VSCROLLBAR)
            static_cast<PVBOX*>(child)->setForemost(ignored);
    }
    return true;
}

void PVBOX::drawQuad(int left, int top, int right, int bottom, K3MVECTOR4D quadColor, PVBOXCOORD* coords)
{
    const GLfixed vertices[8] = {PV_floatToFixed(float(left)),  PV_floatToFixed(float(top)),
                                 PV_floatToFixed(float(right)), PV_floatToFixed(float(top)),
                                 PV_floatToFixed(float(left)),  PV_floatToFixed(float(bottom)),
                                 PV_floatToFixed(float(right)), PV_floatToFixed(float(bottom))};
    GLfixed colors[16];
    GLfixed texCoords[8];
    for (int i = 0; i < 4; i++)
        for (int c = 0; c < 4; c++)
            colors[i * 4 + c] = PV_floatToFixed(quadColor[c]);
    const PVBOXCOORD whole;
    const float* uv = coords ? coords->coord : whole.coord;
    for (int i = 0; i < 8; i++)
        texCoords[i] = PV_floatToFixed(uv[i]);
    glVertexPointer(2, GL_FIXED, 0, vertices);
    glColorPointer(4, GL_FIXED, 0, colors);
    glTexCoordPointer(2, GL_FIXED, 0, texCoords);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void PVBOX::applyScissor()
{
    if (!scissorStatus)
        return;
    PVWINDOW* window = type == PV_TYPE_WINDOW ? static_cast<PVWINDOW*>(this) : enclosingWindow();
    if (window)
        window->enableScissor();
    else
        glScissor(0, 0, PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY());
}

bool PVBOX::render(void* element)
{
    if (!displayStatus)
        return false;
    PV_glLoadMatrixf(static_cast<PVELEMENT*>(element)->getMatrix()->m);
    applyScissor();
    if (shader)
        shader->render(nullptr);
    else
        PVSHADER::disable();
    if (texture)
        bindTexture(texture);
    else
        PVTEXTURE::texturingOff(0);
    if (isTransparent())
        PVOPENGL::blendingOn();
    else
        PVOPENGL::blendingOff();
    K3MVECTOR4D fill = color;
    if (clickedStatus) {
        fill = color * 0.9f;
        fill.w = color.w;
    }
    drawQuad(0, 0, sizeX, sizeY, fill, &boxCoord);
    if (thickness > 0)
        drawBorder(color);
    if (scissorStatus)
        PVOPENGL::scissorOff();
    return true;
}

namespace {

// One piece of a border ring: its rectangle as offsets (a value v stands for
// i + v measured from the near edge, or from the far edge when far is set)
// and its colour factors when released and when pressed.
struct BorderPiece {
    int left, top, right, bottom;
    bool farLeft, farTop, farRight, farBottom;
    float released, pressed;
};

// Per ring i, in drawing order: top, left, bottom and right edges, then the
// corners top-left, bottom-left, top-right and bottom-right.
const BorderPiece borderPieces[8] = {
    {1, 0, -1, 1, false, false, true, false, 1.3f, 0.7f},
    {0, 1, 1, -1, false, false, false, true, 1.3f, 0.7f},
    {1, 0, -1, -1, false, true, true, true, 0.7f, 1.3f},
    {0, 1, -1, -1, true, false, true, true, 0.7f, 1.3f},
    {0, 0, 1, 1, false, false, false, false, 1.6f, 0.4f},
    {0, 0, 1, -1, false, true, false, true, 1.0f, 1.0f},
    {0, 0, -1, 1, true, false, true, false, 1.0f, 1.0f},
    {0, 0, -1, -1, true, true, true, true, 0.4f, 1.6f},
};

// i + offset from the near edge (0), or far - i + offset from the far edge.
int ringCoordinate(int i, int offset, bool fromFar, int far)
{
    return fromFar ? far - i + offset : i + offset;
}

}  // namespace

void PVBOX::drawBorder(const K3MVECTOR4D& baseColor)
{
    PVTEXTURE::texturingOff(0);
    PVOPENGL::blendingOn();
    for (int i = 0; i < int(thickness); i++) {
        for (const BorderPiece& piece : borderPieces) {
            K3MVECTOR4D shade = baseColor * (clickedStatus ? piece.pressed : piece.released);
            shade.w = 0.5f;
            drawQuad(ringCoordinate(i, piece.left, piece.farLeft, sizeX),
                     ringCoordinate(i, piece.top, piece.farTop, sizeY),
                     ringCoordinate(i, piece.right, piece.farRight, sizeX),
                     ringCoordinate(i, piece.bottom, piece.farBottom, sizeY), shade, nullptr);
        }
    }
}
