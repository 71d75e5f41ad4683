/// \file
/// Node: the base of every object that can stand in a scene (cameras, lights,
/// meshes, emitters, helpers and every 2D widget). It carries the object's
/// identity, its local transform, its place in a parent/child hierarchy and its
/// membership in the registry of all live nodes.
#ifndef PEVRANO_SCENE_PVNODE_H
#define PEVRANO_SCENE_PVNODE_H

#include <cstdint>

#include "core/pvregistry.h"
#include "math/k3mmatrix.h"
#include "math/k3mvector3d.h"

class KVFREADER;

/// Size of a node name, terminator included, and number of node types.
///@{
#define PV_NODE_NAME_SIZE 256
#define PV_NODE_TYPE_COUNT 19
///@}
/// Deepest ancestor chain getFinalMatrix accepts is one less than this.
#define PV_NODE_MAX_DEPTH 64

/// What a node is; the value indexes PVNODE::typeName. Values 1, 6, 7, 8, 10
/// and 18 are reserved: they have names but no class of their own.
enum PV_NODE_TYPE : int32_t {
    PV_TYPE_NODE = 0,
    PV_TYPE_ROOT = 1,
    PV_TYPE_LIGHT = 2,
    PV_TYPE_MESH = 3,
    PV_TYPE_CAMERA = 4,
    PV_TYPE_EMITTER = 5,
    PV_TYPE_SKYDOME = 6,
    PV_TYPE_WATER = 7,
    PV_TYPE_TERRAIN = 8,
    PV_TYPE_HELPER = 9,
    PV_TYPE_SOUND = 10,
    PV_TYPE_BOX = 11,
    PV_TYPE_LABEL = 12,
    PV_TYPE_BUTTON = 13,
    PV_TYPE_WINDOW = 14,
    PV_TYPE_TEXTFIELD = 15,
    PV_TYPE_HSCROLLBAR = 16,
    PV_TYPE_VSCROLLBAR = 17,
    PV_TYPE_CUSTOM = 18
};

/// Where the local transform comes from: the position, origin and rotation
/// vectors, or the node's own matrix. Any other value adds no local transform.
enum PV_NODE_POSITIONING : int32_t { PV_POSITIONING_VECTORS = 0, PV_POSITIONING_MATRIX = 1 };

/// A scene node: a name, an id, a local transform and children. Nodes
/// register themselves and belong to the engine: PEVRANO::free deletes every
/// node still alive (a node on the stack must be gone before that). Derive
/// from it and override render to draw something of your own.
class PVNODE {
public:
    /// A registered node with a new id, no parent and an identity transform.
    PVNODE();
    /// Same as the default constructor; the flag is not used.
    explicit PVNODE(bool);
    /// Shallow copies: every field as it stands (id, registry links, parent and
    /// children pointer included); the copy is not registered and takes no id.
    ///@{
    PVNODE(const PVNODE& other) = default;
    PVNODE& operator=(const PVNODE& other) = default;
    ///@}
    /// Releases the id and the children array and leaves the registry; the
    /// parent keeps its pointer to this node.
    virtual ~PVNODE();
    /// Draws the node for one render-list record (a PVELEMENT); a plain node
    /// draws nothing and returns false.
    virtual bool render(void* element);

    /// Identity: name (copied only when shorter than 256 characters), id
    /// (unique while the node lives), an auxiliary id of the application's,
    /// type and its printable name, the frame stamp of the last pass, a
    /// pointer of the application's (not owned) and the shared flag.
    ///@{
    void setName(const char* newName);
    const char* getName() const { return name; }
    unsigned int getId() const { return id; }
    void setAuxId(unsigned int value) { auxId = value; }
    unsigned int getAuxId() const { return auxId; }
    PV_NODE_TYPE getType() const { return type; }
    const char* getTypeName() const;
    long getTimeStamp() const { return timeStamp; }
    void setData(void* value) { data = value; }
    void* getData() const { return data; }
    bool isShared() const { return shared; }
    void setSharedStatus(bool status) { shared = status; }
    ///@}

    /// Registry and hierarchy: the neighbours in the registry of every node,
    /// the children count, the parent (null for a root).
    ///@{
    PVNODE* getNextNode() const { return nextNode; }
    PVNODE* getPreviousNode() const { return previousNode; }
    unsigned int getNumberOfChildren() const { return numberOfChildren; }
    PVNODE* getParent() const { return parent; }
    bool isRoot() const { return parent == nullptr; }
    ///@}

    /// Local transform: where it comes from (vectors or matrix), the node a
    /// camera or light aims at (not owned), the node's own matrix and the
    /// world matrix the last pass cached.
    ///@{
    void setPositioning(PV_NODE_POSITIONING value) { positioning = value; }
    PV_NODE_POSITIONING getPositioning() const { return positioning; }
    void setTargetNode(PVNODE* node) { targetNode = node; }
    PVNODE* getTargetNode() const { return targetNode; }
    void setMatrix(K3MMATRIX value) { matrix = value; }
    K3MMATRIX getMatrix() const { return matrix; }
    K3MMATRIX* getCachedMatrix() { return &cachedMatrix; }
    ///@}

    /// Vector fields: position, rotation (degrees about x, y, z), origin
    /// (the pivot), direction and target point. The two-float forms keep the
    /// third component.
    ///@{
    void setPosition(float x, float y) { setXY(position, x, y); }
    void setPosition(float x, float y, float z) { position = K3MVECTOR3D(x, y, z); }
    void setPosition(K3MVECTOR3D value) { position = value; }
    K3MVECTOR3D getPosition() const { return position; }
    void setRotation(float x, float y) { setXY(rotation, x, y); }
    void setRotation(float x, float y, float z) { rotation = K3MVECTOR3D(x, y, z); }
    void setRotation(K3MVECTOR3D value) { rotation = value; }
    K3MVECTOR3D getRotation() const { return rotation; }
    void setOrigin(float x, float y) { setXY(origin, x, y); }
    void setOrigin(float x, float y, float z) { origin = K3MVECTOR3D(x, y, z); }
    void setOrigin(K3MVECTOR3D value) { origin = value; }
    K3MVECTOR3D getOrigin() const { return origin; }
    void setDirection(float x, float y) { setXY(direction, x, y); }
    void setDirection(float x, float y, float z) { direction = K3MVECTOR3D(x, y, z); }
    void setDirection(K3MVECTOR3D value) { direction = value; }
    K3MVECTOR3D getDirection() const { return direction; }
    void setTarget(float x, float y) { setXY(target, x, y); }
    void setTarget(float x, float y, float z) { target = K3MVECTOR3D(x, y, z); }
    void setTarget(K3MVECTOR3D value) { target = value; }
    K3MVECTOR3D getTarget() const { return target; }
    ///@}

    /// Relative changes of the position and the rotation; the two-float forms
    /// leave z alone.
    ///@{
    void move(float x, float y) { move(x, y, 0.0f); }
    void move(float x, float y, float z) { position += K3MVECTOR3D(x, y, z); }
    void move(K3MVECTOR3D delta) { position += delta; }
    void rotate(float x, float y) { rotate(x, y, 0.0f); }
    void rotate(float x, float y, float z) { rotation += K3MVECTOR3D(x, y, z); }
    void rotate(K3MVECTOR3D delta) { rotation += delta; }
    ///@}

    /// Makes this node the last child of parentNode.
    bool link(PVNODE* parentNode);
    /// Detaches this node from its parent.
    bool unlink();
    /// Detaches this node and hands its children, in order, to its parent.
    bool remove();
    /// Child number index, null when there is none.
    PVNODE* getChild(unsigned int index);
    /// Depth-first, pre-order searches starting with this node; null if none.
    ///@{
    PVNODE* findByNameInHierarchy(const char* wanted);
    PVNODE* findByIdInHierarchy(unsigned int wanted);
    ///@}
    /// World matrix built from the ancestors down to this node; with a stop
    /// name, the climb ends at the first ancestor of that name (included).
    K3MMATRIX getFinalMatrix(const char* stopName);
    /// Stamps the node with the frame stamp and puts it and its subtree into
    /// the render list.
    bool pass(bool flag);

    /// Registry: the first live node, the count, and the first node with a
    /// name or id (null if none).
    ///@{
    static PVNODE* getFirstNode() { return firstNode; }
    // The most recently constructed live node, null when there is none.
    static PVNODE* getLastNode();
    static unsigned int getNumberOfNodes();
    static PVNODE* findByName(const char* wanted);
    static PVNODE* findById(unsigned int wanted);
    ///@}
    /// Deletes every live node; false (and no log line) for an empty registry.
    static bool cleanUp();
    /// Reads a plain node's scene-file record at the reader's position; its
    /// children count goes to children. Null (the node deleted again) when the
    /// record is cut short.
    static PVNODE* load(KVFREADER& reader, uint16_t& children);
    /// Logs the hierarchy under root, one indented line per node (the
    /// recursive step takes the indent).
    ///@{
    static bool displayTree(PVNODE* root);
    static PVNODE* displayTreeRecursive(PVNODE* node, int indent);
    ///@}

    /// Printable names of the node types, indexed by PV_NODE_TYPE.
    static const char typeName[PV_NODE_TYPE_COUNT][PV_NODE_NAME_SIZE];

protected:
    /// Derived constructors overwrite the name and the type.
    void setDefaultName(const char* format);
    /// Multiplies the wrapper's current matrix by this node's local transform.
    void applyLocalTransform() const;
    /// The node's location: its position, or with matrix positioning the
    /// translation of its matrix.
    K3MVECTOR3D placedPosition() const;
    /// Rotates the wrapper's current matrix about x, then y, then z (degrees),
    /// the order every node rotation uses.
    static void applyRotation(const K3MVECTOR3D& angles);
    /// Reads a name and three vectors, as scene-file records store them.
    ///@{
    bool readName(KVFREADER& reader);
    static bool readVector(KVFREADER& reader, K3MVECTOR3D& vector);
    ///@}

    /// The node's state, for derived classes: what the accessors above read
    /// and write, the registry links, the children array (owned) and the head
    /// of the registry.
    ///@{
    unsigned int id;
    unsigned int auxId;
    char name[PV_NODE_NAME_SIZE];
    PV_NODE_TYPE type;
    long timeStamp;
    bool shared;
    void* data;
    PV_NODE_POSITIONING positioning;
    K3MVECTOR3D position;
    K3MVECTOR3D rotation;
    K3MVECTOR3D origin;
    K3MVECTOR3D direction;
    K3MVECTOR3D target;
    PVNODE* targetNode;
    K3MMATRIX matrix;
    K3MMATRIX cachedMatrix;
    PVNODE* previousNode;
    PVNODE* nextNode;
    unsigned int numberOfChildren;
    PVNODE* parent;
    // The first numberOfChildren entries are the children; the storage holds
    // childCapacity and grows geometrically, so linking many siblings takes
    // linear time.
    PVNODE** children;
    unsigned int childCapacity;

    static PVNODE* firstNode;
    ///@}

private:
    using Registry = PVREGISTRY<PVNODE, &PVNODE::firstNode, &PVNODE::previousNode, &PVNODE::nextNode>;

    // The engine turns the skybox with the node rotation helper.
    friend class PEVRANO;
    // The render list applies local transforms while it walks a subtree.
    friend class PVELEMENT;

    static void setXY(K3MVECTOR3D& vector, float x, float y)
    {
        vector.x = x;
        vector.y = y;
    }
    int findChildIndex(const PVNODE* child) const;
    void releaseChildren();
    bool reserveChildren(unsigned int count);
};

#endif
