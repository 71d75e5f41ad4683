#include "gui/pvbox.h"

#include <algorithm>
#include <cstring>

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

namespace {

// A rectangle's corners in the order of a strip: top-left, top-right,
// bottom-left, bottom-right, as (x, y) in 16.16.
void stripCorners(int left, int top, int right, int bottom, GLfixed corners[8])
{
    const GLfixed x0 = PV_floatToFixed(float(left));
    const GLfixed y0 = PV_floatToFixed(float(top));
    const GLfixed x1 = PV_floatToFixed(float(right));
    const GLfixed y1 = PV_floatToFixed(float(bottom));
    const GLfixed ordered[8] = {x0, y0, x1, y0, x0, y1, x1, y1};
    memcpy(corners, ordered, sizeof(ordered));
}

// One colour in 16.16 at each of a quad's four corners.
void cornerColors(const K3MVECTOR4D& color, GLfixed colors[16])
{
    for (int corner = 0; corner < 4; corner++)
        for (int c = 0; c < 4; c++)
            colors[corner * 4 + c] = PV_floatToFixed(color[c]);
}

}  // namespace

void PVBOX::drawQuad(int left, int top, int right, int bottom, K3MVECTOR4D quadColor, PVBOXCOORD* coords)
{
    GLfixed vertices[8];
    stripCorners(left, top, right, bottom, vertices);
    GLfixed colors[16];
    cornerColors(quadColor, colors);
    GLfixed texCoords[8];
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

void PVBOX::beginDrawing(void* element, bool blended)
{
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
    if (blended)
        PVOPENGL::blendingOn();
    else
        PVOPENGL::blendingOff();
}

K3MVECTOR4D PVBOX::fillColor() const
{
    if (!clickedStatus)
        return color;
    K3MVECTOR4D darker = color * 0.9f;
    darker.w = color.w;
    return darker;
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
const BorderPiece borderPieces[PV_BOX_RING_PIECES] = {
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

// Untextured quads gathered for one indexed draw: the fill and the border
// pieces of a box. A border of more rings than fit is drawn in several.
class QuadBatch {
public:
    // Corners in the order of a strip: top-left, top-right, bottom-left,
    // bottom-right, as (x, y) in 16.16.
    void add(const GLfixed corners[8], const K3MVECTOR4D& color)
    {
        if (count == capacity)
            flush();
        memcpy(vertices + count * 8, corners, 8 * sizeof(GLfixed));
        cornerColors(color, colors + count * 16);
        count++;
    }

    void add(const PVBOXQUAD& quad)
    {
        GLfixed corners[8];
        stripCorners(quad.left, quad.top, quad.right, quad.bottom, corners);
        add(corners, quad.color);
    }

    void flush()
    {
        if (count == 0)
            return;
        glVertexPointer(2, GL_FIXED, 0, vertices);
        glColorPointer(4, GL_FIXED, 0, colors);
        glTexCoordPointer(2, GL_FIXED, 0, texCoords);
        glDrawElements(GL_TRIANGLES, GLsizei(count * 6), GL_UNSIGNED_SHORT, indices());
        count = 0;
    }

private:
    // The fill and 16 rings of border.
    static const unsigned int capacity = 1 + 16 * PV_BOX_RING_PIECES;

    // Each quad as the two triangles of its strip, in the strip's winding.
    static const GLushort* indices()
    {
        static GLushort table[capacity * 6];
        static const bool filled = [] {
            static const GLushort strip[6] = {0, 1, 2, 2, 1, 3};
            for (unsigned int quad = 0; quad < capacity; quad++)
                for (int i = 0; i < 6; i++)
                    table[quad * 6 + i] = GLushort(quad * 4 + strip[i]);
            return true;
        }();
        (void)filled;
        return table;
    }

    unsigned int count = 0;
    GLfixed vertices[capacity * 8];
    GLfixed colors[capacity * 16];
    // Texturing is off for these quads; the array is read all the same.
    GLfixed texCoords[capacity * 8] = {};
};

QuadBatch batch;

// The pieces of every ring joined: piece p of all t rings covers exactly the
// pixels of the t separate quads when the rings do not meet (each side at
// least 2t + 2 long). An edge's rings form a band whose slanted ends pass a
// quarter pixel outside the first and last pixel centre of each row; a
// corner's rings form a thin slanted strip through their pixel centres. Both
// are drawn for the top-left sides and mirrored or turned for the others.
// Quarter pixels are exact in 16.16.
struct JoinedPiece {
    bool band;  // an edge's band, else a corner's strip
    bool turned;  // x and y exchanged (the left and right sides)
    bool mirrorX;
    bool mirrorY;
};

// In the order of the pieces: top, left, bottom and right edges, then the
// top-left, bottom-left, top-right and bottom-right corners.
const JoinedPiece joinedPieces[PV_BOX_RING_PIECES] = {
    {true, false, false, false}, {true, true, false, false},   {true, false, false, true},
    {true, true, true, false},   {false, false, false, false}, {false, false, false, true},
    {false, false, true, false}, {false, false, true, true},
};

// Corners of a top band along an edge of the given length, or of the
// top-left corner strip, in quarter pixels.
void joinedShape(bool band, int length, int rings, int quarters[8])
{
    const int l = length * 4;
    const int t = rings * 4;
    const int bandCorners[8] = {3, 0, l - 3, 0, t + 3, t, l - t - 3, t};
    const int stripCorners[8] = {-1, 0, 1, 0, t - 1, t, t + 1, t};
    memcpy(quarters, band ? bandCorners : stripCorners, sizeof(bandCorners));
}

}  // namespace

bool PVBOX::ringsJoinable() const
{
    const int shortest = 2 * int(thickness) + 2;
    return thickness <= PV_BOX_JOINED_RINGS && sizeX >= shortest && sizeY >= shortest &&
           sizeX <= PV_BOX_JOINED_SIZE && sizeY <= PV_BOX_JOINED_SIZE;
}

void PVBOX::addJoinedPiece(int piece)
{
    const JoinedPiece& joined = joinedPieces[piece];
    int quarters[8];
    joinedShape(joined.band, joined.turned ? sizeY : sizeX, int(thickness), quarters);
    GLfixed corners[8];
    for (int corner = 0; corner < 4; corner++) {
        int x = quarters[corner * 2];
        int y = quarters[corner * 2 + 1];
        if (joined.turned)
            std::swap(x, y);
        if (joined.mirrorX)
            x = sizeX * 4 - x;
        if (joined.mirrorY)
            y = sizeY * 4 - y;
        corners[corner * 2] = GLfixed(x) * 16384;
        corners[corner * 2 + 1] = GLfixed(y) * 16384;
    }
    batch.add(corners, borderQuad(0, piece).color);
}

namespace {

// Under the usual blend function an opaque colour covers what is beneath
// exactly as with blending off, so the fill can join the blended border.
bool opaqueCoversWhenBlended()
{
    GLint source = 0;
    GLint destination = 0;
    glGetIntegerv(GL_BLEND_SRC, &source);
    glGetIntegerv(GL_BLEND_DST, &destination);
    return source == GL_SRC_ALPHA && destination == GL_ONE_MINUS_SRC_ALPHA;
}

}  // namespace

PVBOXQUAD PVBOX::borderQuad(int ring, int piece) const
{
    const BorderPiece& shape = borderPieces[piece];
    K3MVECTOR4D shade = color * (clickedStatus ? shape.pressed : shape.released);
    shade.w = 0.5f;
    return {ringCoordinate(ring, shape.left, shape.farLeft, sizeX),
            ringCoordinate(ring, shape.top, shape.farTop, sizeY),
            ringCoordinate(ring, shape.right, shape.farRight, sizeX),
            ringCoordinate(ring, shape.bottom, shape.farBottom, sizeY), shade};
}

// The fill and every border piece in one indexed draw when they share their
// state (no texture, no shader, and blending that leaves an opaque fill as
// it is); otherwise the fill on its own, then the border in one draw.
bool PVBOX::render(void* element)
{
    if (!displayStatus)
        return false;
    const bool fillJoinsBorder =
        thickness > 0 && !texture && !shader && (isTransparent() || opaqueCoversWhenBlended());
    beginDrawing(element, isTransparent() || fillJoinsBorder);
    if (fillJoinsBorder)
        batch.add({0, 0, sizeX, sizeY, fillColor()});
    else
        drawQuad(0, 0, sizeX, sizeY, fillColor(), &boxCoord);
    if (thickness > 0)
        drawBorder();
    if (scissorStatus)
        PVOPENGL::scissorOff();
    return true;
}

void PVBOX::drawBorder()
{
    PVTEXTURE::texturingOff(0);
    PVOPENGL::blendingOn();
    if (ringsJoinable()) {
        for (int piece = 0; piece < PV_BOX_RING_PIECES; piece++)
            addJoinedPiece(piece);
    } else {
        for (int ring = 0; ring < int(thickness); ring++)
            for (int piece = 0; piece < PV_BOX_RING_PIECES; piece++)
                batch.add(borderQuad(ring, piece));
    }
    batch.flush();
}
