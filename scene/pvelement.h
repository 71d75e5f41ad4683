/// \file
/// Render list: one record per node drawn in the current frame, kept in fixed
/// arrays allocated once at start-up. Passing a subtree fills the records with
/// each node's model-view matrix; the sorts order them for drawing (lights
/// first, opaque, transparent back to front; widgets by their foremost stamp).
#ifndef PEVRANO_SCENE_PVELEMENT_H
#define PEVRANO_SCENE_PVELEMENT_H

#include "math/k3mmatrix.h"
#include "math/k3mvector3d.h"

class PVNODE;
class PVMESH;

/// Largest number of records the list holds.
#define PV_ELEMENT_MAX 1024
/// Lights an element can be lit by.
#define PV_ELEMENT_LIGHTS 4

/// The render list: one record per node passed in a frame (its node, model-view
/// matrix, distance and nearest lights), sorted and drawn by the engine. The
/// records live in one class-wide array that init allocates; nodes are not owned.
class PVELEMENT {
public:
    /// An empty record.
    PVELEMENT() : node(nullptr), auxId(0), distance(0.0f), nearestLight(), param1(0) {}
    /// A record for a node drawn outside the list (the skybox).
    PVELEMENT(PVNODE* drawn, const K3MMATRIX& modelView) :
        node(drawn),
        matrix(modelView),
        auxId(0),
        distance(0.0f),
        nearestLight(),
        param1(0)
    {
    }
    /// Records copy as plain values.
    ///@{
    PVELEMENT(const PVELEMENT& other) = default;
    PVELEMENT& operator=(const PVELEMENT& other) = default;
    ///@}

    /// The record: the node passed, its model-view matrix, its distance from
    /// the camera (or from the point of sortLights), the node's auxiliary id,
    /// and a value the drawing code keeps with it (a mesh's skeleton slot).
    ///@{
    PVNODE* getNode() const { return node; }
    K3MMATRIX* getMatrix() { return &matrix; }
    float getDistance() const { return distance; }
    unsigned int getAuxId() const { return auxId; }
    unsigned int getParam1() const { return param1; }
    void setParam1(unsigned int value) { param1 = value; }
    ///@}
    /// The lights nearest to the record, slots 0 to 3; other slots read null
    /// and ignore writes.
    ///@{
    PVELEMENT* getNearestLight(unsigned int slot) const;
    void setNearestLight(unsigned int slot, PVELEMENT* light);
    ///@}

    /// Life of the list, for the engine: init allocates n records (0 or more
    /// than 1024 means 1024; false with "Already active" or "Out of memory"),
    /// free releases them, isActive between the two.
    ///@{
    static bool init(unsigned int n);
    static bool free();
    static bool isActive() { return active; }
    ///@}
    /// Starts a frame: no record passed, no light, no transparency.
    static void reset();

    /// Records node and its subtree, depth first; false for a null node or a
    /// full list (the rest of that subtree is then left out).
    static bool pass(PVNODE* node, bool flag);
    /// Fills the next skeleton cache slot with the model-view matrices of
    /// mesh's bones found under node (relative to the current matrix).
    static bool passSkeleton(PVNODE* node, PVMESH* mesh);

    /// Orders the passed records for drawing: in 3D lights first, then opaque
    /// records, then transparent ones farthest first; in 2D the widgets behind
    /// first. False when nothing was passed.
    ///@{
    static bool sort3D();
    static bool sort2D();
    ///@}
    /// Sets each light's distance to p and orders the lights: exclusive
    /// first, then nearest first.
    static bool sortLights(K3MVECTOR3D p);

    /// Light i of the sorted list, null when i is not below the light count.
    static PVELEMENT* getLight(unsigned int i);
    /// Record i in drawing order, null when i is not below the passed count.
    static PVELEMENT* getPassedElement(unsigned int i);

    /// Counts: records the list holds, records passed this frame, lights and
    /// transparent records among them.
    ///@{
    static unsigned int getNumberOfElements() { return numberOfElements; }
    static unsigned int getNumberOfPassedElements() { return numberOfPassedElements; }
    static unsigned int getNumberOfLights() { return numberOfLights; }
    static unsigned int getNumberOfTransparencies() { return numberOfTransparencies; }
    ///@}
    /// Distance clipping of meshes, terrains and helpers: when on, one farther
    /// from the camera than the radius plus twice its own is left out of the
    /// list (with a "(clipped)" log line).
    ///@{
    static void clippingOn() { clipping = true; }
    static void clippingOff() { clipping = false; }
    static bool isClipping() { return clipping; }
    static void setClippingRadius(float radius) { clippingRadius = radius; }
    static float getClippingRadius() { return clippingRadius; }
    ///@}

    /// Pointer and keyboard input for the widgets of the last 2D pass: key
    /// pressed this call (0 for none), pointer (x, y) in window pixels with y
    /// downwards, pointerDown non-zero while held; the fifth argument is not
    /// used. True when the pointer is over a displayed widget; *clickedId
    /// (when not null) gets the id of the button reported by this call, or 0.
    static bool manageGUIEvents(char key, int x, int y, int pointerDown, int unused, unsigned int* clickedId);

private:
    static bool passNode(PVNODE* node, bool flag);
    static bool isClipped(PVNODE* node);
    static void addRecord(PVNODE* node);
    static unsigned int takeSkeletonSlot(PVMESH* mesh);
    static void countRecord(PVNODE* node);
    static void passChildren(PVNODE* node);
    static bool isTransparent(PVNODE* node);
    static bool isHiddenMesh(PVNODE* node);
    static int drawingRank(PVNODE* node);
    static float sortDepth(const PVELEMENT* record);
    /// Drawing order of 2D widgets (greatest last); 0 for other nodes.
    static long foremostStamp(PVNODE* node);
    /// A minimised window passes only its first child (its title bar).
    static bool isMinimizedWindow(PVNODE* node);
    /// Strict orderings for the sorts: true when a is drawn (or chosen) before b.
    static bool before3D(const PVELEMENT* a, const PVELEMENT* b);
    static bool fartherBefore(const PVELEMENT* a, const PVELEMENT* b);
    static bool behindBefore(const PVELEMENT* a, const PVELEMENT* b);
    static bool lightBefore(const PVELEMENT* a, const PVELEMENT* b);

    PVNODE* node;
    K3MMATRIX matrix;
    unsigned int auxId;
    float distance;
    PVELEMENT* nearestLight[PV_ELEMENT_LIGHTS];
    /// Skeleton cache slot of a skinned mesh (16 when the cache was full).
    unsigned int param1;

    static bool active;
    static bool clipping;
    static float clippingRadius;
    static unsigned int numberOfElements;
    static unsigned int numberOfPassedElements;
    static unsigned int numberOfLights;
    static unsigned int numberOfTransparencies;
    static PVELEMENT* element;
    static PVELEMENT** elementPointer;
};

#endif
