/// \file
/// Box: the base of every 2D widget. A rectangle in screen pixels placed in
/// the scene tree, drawn in the 2D pass as one flat or textured quad with an
/// optional bevelled border, plus the widget state the whole interface shares
/// (hit testing, display, pressed look, move limits, window clipping).
#ifndef PEVRANO_GUI_PVBOX_H
#define PEVRANO_GUI_PVBOX_H

#include "math/k3mvector2d.h"
#include "math/k3mvector4d.h"
#include "scene/pvnode.h"

class PVTEXTURE;
class PVSHADER;
class PVWINDOW;

/// Texture coordinates of a quad's corners: top-left, top-right, bottom-left,
/// bottom-right, each (u, v).
class PVBOXCOORD {
public:
    /// The whole texture, row 0 of the image at the bottom of the quad.
    PVBOXCOORD();
    /// An image filling the lower-left u by v part of its texture; topDown
    /// for images stored from their first row down (decoded video frames).
    PVBOXCOORD(float u, float v, bool topDown);

    /// u, v of the four corners in that order.
    float coord[8];
};

/// One untextured quad of a box's drawing, in the box's own pixels.
struct PVBOXQUAD {
    /// Edges in pixels and the quad's colour.
    ///@{
    int left, top, right, bottom;
    K3MVECTOR4D color;
    ///@}
};

/// Pieces of each ring of the bevelled border: four edges, four corners.
#define PV_BOX_RING_PIECES 8
/// Limits within which the rings of a border are drawn as one shape per piece
/// (coordinates in quarter pixels stay inside 16.16).
///@{
#define PV_BOX_JOINED_RINGS 1024
#define PV_BOX_JOINED_SIZE 16384
///@}

/// A rectangle of the 2D interface, in pixels with y downwards: flat or
/// textured, with a bevelled border; the base of every widget.
class PVBOX : public PVNODE {
public:
    /// Creation and copying; nodes belong to the engine (PEVRANO::free deletes
    /// those left).
    ///@{
    PVBOX();
    PVBOX(const PVBOX& other) = default;
    PVBOX& operator=(const PVBOX& other) = default;
    ///@}
    /// Keeps its texture reference (the texture class releases textures).
    ~PVBOX() override = default;
    /// Draws the box and its border in the 2D pass.
    bool render(void* element) override;

    /// Width and height in pixels.
    ///@{
    void setSizeX(int value) { sizeX = value; }
    void setSizeY(int value) { sizeY = value; }
    void setSizes(int x, int y)
    {
        sizeX = x;
        sizeY = y;
    }
    int getSizeX() const { return sizeX; }
    int getSizeY() const { return sizeY; }
    K3MVECTOR2D getSizes() const { return K3MVECTOR2D(float(sizeX), float(sizeY)); }
    ///@}
    /// Fill colour (RGBA, 0 to 1); a box whose alpha is not 1 is transparent.
    ///@{
    void setColor(float r, float g, float b, float a) { color = K3MVECTOR4D(r, g, b, a); }
    void setColor(K3MVECTOR4D value) { color = value; }
    K3MVECTOR4D getColor() const { return color; }
    ///@}
    /// Width of the bevelled border in pixels, 0 for none.
    ///@{
    void setThickness(unsigned int value) { thickness = value; }
    unsigned int getThickness() const { return thickness; }
    ///@}
    /// Whether the pointer can hit the box (checkBoundaries).
    ///@{
    void setCheckStatus(bool value) { checkStatus = value; }
    bool getCheckStatus() const { return checkStatus; }
    ///@}
    /// Whether the box is drawn.
    ///@{
    void setDisplayStatus(bool value) { displayStatus = value; }
    bool getDisplayStatus() const { return displayStatus; }
    ///@}
    /// A static box does not move when dragged.
    ///@{
    void setStaticStatus(bool value) { staticStatus = value; }
    bool isStatic() const { return staticStatus; }
    ///@}
    /// Whether the box is pressed.
    ///@{
    void setClickedStatus(bool value) { clickedStatus = value; }
    bool isClicked() const { return clickedStatus; }
    bool getClickedStatus() const { return clickedStatus; }
    ///@}
    /// Whether drags are held inside the limit rectangle (checkLimits).
    ///@{
    void setLimitStatus(bool value) { limitStatus = value; }
    bool getLimitStatus() const { return limitStatus; }
    ///@}
    /// Whether drawing is clipped to the enclosing window.
    ///@{
    void setScissorStatus(bool value) { scissorStatus = value; }
    bool getScissorStatus() const { return scissorStatus; }
    ///@}
    /// The limit rectangle for drags, from (startX, startY) to (endX, endY).
    ///@{
    void setLimits(int x0, int y0, int x1, int y1);
    int getStartX() const { return startX; }
    int getStartY() const { return startY; }
    int getEndX() const { return endX; }
    int getEndY() const { return endY; }
    ///@}
    /// Texture coordinates of the corners.
    ///@{
    void setBoxCoords(PVBOXCOORD& coords) { boxCoord = coords; }
    PVBOXCOORD getBoxCoord() const { return boxCoord; }
    ///@}
    /// Stamp of the last time the box was brought to the front; the larger
    /// is drawn and hit first.
    long getForemostTimeStamp() const { return foremostTimeStamp; }
    /// True when the colour's alpha is not 1.
    bool isTransparent() const { return color.w != 1.0f; }
    /// The texture drawn on the box, null for none.
    PVTEXTURE* getTexture() const { return texture; }

    /// Holds one reference on the new texture and lets go of the old one;
    /// null leaves the box untextured. Always true.
    bool setTexture(PVTEXTURE* newTexture);
    /// Sets the shader used while drawing, null for none (not owned). Always true.
    bool setShader(PVSHADER* newShader);

    /// Whether the screen point (x, y) is on the box, inside its window.
    bool checkBoundaries(int x, int y);
    /// Clamps the proposed move (dx, dy) to the limit rectangle; false when
    /// the limits are off (the move is left as it is).
    bool checkLimits(int* dx, int* dy);
    /// Brings the box and its subtree to the front; the argument is not used.
    bool setForemost(long unused);

    /// The next front-to-back stamp (setForemost).
    static long getNextCounter();
    /// Binds a texture to unit 0 with texturing on, whatever was drawn since
    /// it was last bound.
    static void bindTexture(PVTEXTURE* sheet);

    /// Draws one quad in the current model-view space, in 16.16 fixed point,
    /// with one colour and the given texture coordinates.
    static void drawQuad(int left, int top, int right, int bottom, K3MVECTOR4D quadColor, PVBOXCOORD* coords);

protected:
    /// The sum of the positions of every ancestor, parent first.
    K3MVECTOR3D ancestorsPosition() const;
    /// The nearest ancestor that is a window, or null.
    PVWINDOW* enclosingWindow() const;
    /// Clips to the enclosing window (or the whole display) when scissorStatus
    /// is set.
    void applyScissor();
    /// The element's matrix, the scissor, shader, texture, and blending on or
    /// off.
    void beginDrawing(void* element, bool blended);
    /// The colour, darker while pressed (alpha kept).
    K3MVECTOR4D fillColor() const;
    /// Piece (0 to 7, in drawing order) of border ring i.
    PVBOXQUAD borderQuad(int ring, int piece) const;
    /// Every ring of the border, in one draw where they fit.
    void drawBorder();
    /// Whether the rings can be joined: they do not meet and stay in range.
    bool ringsJoinable() const;
    /// Piece p of every ring as one shape, into the batch.
    void addJoinedPiece(int piece);

    /// State of the box, for derived widgets: the values the accessors above
    /// read and write.
    ///@{
    int sizeX;
    int sizeY;
    int startX;
    int startY;
    int endX;
    int endY;
    unsigned int thickness;
    K3MVECTOR4D color;
    bool checkStatus;
    bool displayStatus;
    bool staticStatus;
    bool clickedStatus;
    bool limitStatus;
    bool scissorStatus;
    long foremostTimeStamp;
    PVTEXTURE* texture;
    PVSHADER* shader;
    PVBOXCOORD boxCoord;

    static long counter;
    ///@}
};

#endif
