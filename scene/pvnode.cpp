#include "scene/pvnode.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "core/pvframestate.h"
#include "core/pvgl.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfreader.h"
#include "foundation/kvfstring.h"
#include "scene/pvelement.h"

PVNODE* PVNODE::firstNode = nullptr;

const char PVNODE::typeName[PV_NODE_TYPE_COUNT][PV_NODE_NAME_SIZE] = {
    "node",   "root",      "light",      "mesh",       "camera", "emitter", "skydome",
    "water",  "terrain",   "helper",     "sound",      "box",    "label",   "button",
    "window", "textfield", "hscrollbar", "vscrollbar", "custom"};

// Ancestors collected by getFinalMatrix, nearest first.
static PVNODE* ancestorStack[PV_NODE_MAX_DEPTH];

PVNODE::PVNODE() :
    id(kvfNewId()),
    auxId(0),
    type(PV_TYPE_NODE),
    timeStamp(0),
    shared(false),
    data(nullptr),
    positioning(PV_POSITIONING_VECTORS),
    targetNode(nullptr),
    previousNode(nullptr),
    nextNode(nullptr),
    numberOfChildren(0),
    parent(nullptr),
    children(nullptr),
    childCapacity(0)
{
    setDefaultName("[node %d]");
    Registry::append(this);
}

PVNODE::PVNODE(bool) : PVNODE() {}

PVNODE::~PVNODE()
{
    kvfReleaseId(id);
    releaseChildren();
    Registry::remove(this);
}

bool PVNODE::render(void*) { return false; }

PVNODE* PVNODE::getLastNode() { return Registry::last(); }

void PVNODE::setDefaultName(const char* format)
{
    snprintf(name, sizeof(name), format, static_cast<int>(id));
}

void PVNODE::setName(const char* newName)
{
    // The argument may be this node's own name (or a part of it).
    kvfCopyIfFits(name, sizeof name, newName);
}

const char* PVNODE::getTypeName() const
{
    if (type < 0 || type >= PV_NODE_TYPE_COUNT)
        return "";
    return typeName[type];
}

void PVNODE::applyLocalTransform() const
{
    if (positioning == PV_POSITIONING_VECTORS) {
        const K3MVECTOR3D at = position + origin;
        PV_glTranslatef(at.x, at.y, at.z);
        applyRotation(rotation);
    } else if (positioning == PV_POSITIONING_MATRIX) {
        PV_glMultMatrixf(matrix.m);
    }
}

K3MVECTOR3D PVNODE::placedPosition() const
{
    if (positioning == PV_POSITIONING_MATRIX)
        return matrix.getTranslation();
    return position;
}

void PVNODE::applyRotation(const K3MVECTOR3D& angles)
{
    PV_glRotatef(angles.x, 1.0f, 0.0f, 0.0f);
    PV_glRotatef(angles.y, 0.0f, 1.0f, 0.0f);
    PV_glRotatef(angles.z, 0.0f, 0.0f, 1.0f);
}

void PVNODE::releaseChildren()
{
    if (children)
        kvfFree(children);
    children = nullptr;
    numberOfChildren = childCapacity = 0;
}

// Room for count children, at least doubling the storage when it grows.
bool PVNODE::reserveChildren(unsigned int count)
{
    if (count <= childCapacity)
        return true;
    const size_t capacity = std::max<size_t>({count, 4, size_t(childCapacity) * 2});
    const size_t bytes = capacity * sizeof(PVNODE*);
    if (bytes > 0xFFFFFFFFu)
        return false;
    PVNODE** grown = static_cast<PVNODE**>(kvfMalloc(static_cast<unsigned int>(bytes)));
    if (!grown)
        return false;
    if (numberOfChildren)
        memcpy(grown, children, numberOfChildren * sizeof(PVNODE*));
    if (children)
        kvfFree(children);
    children = grown;
    childCapacity = static_cast<unsigned int>(capacity);
    return true;
}

// From the last child back: the newest children are the likeliest to go.
int PVNODE::findChildIndex(const PVNODE* child) const
{
    for (unsigned int i = numberOfChildren; children && i-- > 0;)
        if (children[i] == child)
            return static_cast<int>(i);
    return -1;
}

bool PVNODE::link(PVNODE* parentNode)
{
    if (!parentNode || parentNode == this) {
        kvfLog("   [!] Invalid param @ PVNODE::link\n");
        return false;
    }
    if (parent) {
        kvfLog("   [!] Node %s has already a parent @ PVNODE::link\n", name);
        return false;
    }
    if (!parentNode->reserveChildren(parentNode->numberOfChildren + 1)) {
        kvfLog("   [!] Out of memory @ PVNODE::link\n");
        return false;
    }
    parentNode->children[parentNode->numberOfChildren++] = this;
    parent = parentNode;
    return true;
}

bool PVNODE::unlink()
{
    if (!parent) {
        kvfLog("   [!] Node %s is already unlinked @ PVNODE::unlink\n", name);
        return false;
    }
    // An only child is taken out without looking it up.
    if (parent->numberOfChildren == 1) {
        parent->releaseChildren();
        parent = nullptr;
        return true;
    }
    const int index = parent->findChildIndex(this);
    if (index < 0) {
        kvfLog("   [!] Consistency problem with %s @ PVNODE::unlink\n", name);
        return false;
    }
    PVNODE** siblings = parent->children;
    const unsigned int following = parent->numberOfChildren - 1 - static_cast<unsigned int>(index);
    memmove(siblings + index, siblings + index + 1, following * sizeof(PVNODE*));
    parent->numberOfChildren--;
    parent = nullptr;
    return true;
}

bool PVNODE::remove()
{
    if (!parent) {
        kvfLog("   [!] Node %s already unlinked @ PVNODE::remove\n", name);
        return false;
    }
    // The children array changes under the loop, so walk a copy.
    const std::vector<PVNODE*> orphans(children, children ? children + numberOfChildren : children);
    for (PVNODE* child : orphans) {
        child->unlink();
        child->link(parent);
    }
    return unlink();
}

PVNODE* PVNODE::getChild(unsigned int index)
{
    if (index >= numberOfChildren) {
        kvfLog("   [!] Invalid params @ PVNODE::getChild\n");
        return nullptr;
    }
    return children ? children[index] : nullptr;
}

PVNODE* PVNODE::findByNameInHierarchy(const char* wanted)
{
    if (!wanted)
        return nullptr;
    if (strcmp(name, wanted) == 0)
        return this;
    for (unsigned int i = 0; children && i < numberOfChildren; i++)
        if (PVNODE* found = children[i]->findByNameInHierarchy(wanted))
            return found;
    return nullptr;
}

PVNODE* PVNODE::findByIdInHierarchy(unsigned int wanted)
{
    if (id == wanted)
        return this;
    for (unsigned int i = 0; children && i < numberOfChildren; i++)
        if (PVNODE* found = children[i]->findByIdInHierarchy(wanted))
            return found;
    return nullptr;
}

K3MMATRIX PVNODE::getFinalMatrix(const char* stopName)
{
    int depth = 0;
    for (PVNODE* ancestor = parent; ancestor; ancestor = ancestor->parent) {
        ancestorStack[depth++] = ancestor;
        if (depth == PV_NODE_MAX_DEPTH) {
            kvfLog("   [!] Depth overflow @ PVNODE::getFinalMatrix()\n");
            return K3MMATRIX();
        }
        if (stopName && strcmp(ancestor->name, stopName) == 0)
            break;
    }

    // Worked out on the CPU alone: GL's matrices are left as they are.
    const bool wasShadowOnly = PV_glShadowOnly(true);
    PV_glPushMatrix();
    PV_glLoadIdentity();
    while (depth > 0)
        ancestorStack[--depth]->applyLocalTransform();
    applyLocalTransform();
    K3MMATRIX world;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, world.m);
    PV_glPopMatrix();
    PV_glShadowOnly(wasShadowOnly);
    return world;
}

bool PVNODE::pass(bool flag)
{
    timeStamp = PVFRAMESTATE::getTimeStamp();
    PVELEMENT::pass(this, flag);
    return true;
}

unsigned int PVNODE::getNumberOfNodes() { return Registry::count(); }

PVNODE* PVNODE::findByName(const char* wanted) { return Registry::findByText(&PVNODE::name, wanted); }

PVNODE* PVNODE::findById(unsigned int wanted) { return Registry::findByValue(&PVNODE::id, wanted); }

bool PVNODE::cleanUp()
{
    if (!firstNode)
        return false;
    const int count = Registry::deleteAll();
    kvfLog("   %d node(s) released @ PVNODE::cleanUp\n", count);
    return true;
}

bool PVNODE::displayTree(PVNODE* root)
{
    if (!root) {
        kvfLog("   [!] Invalid params @ PVNODE::displayTree\n");
        return false;
    }
    kvfLog("   Tree for %s:\n", root->name);
    if (root->numberOfChildren)
        displayTreeRecursive(root, 3);
    else
        kvfLog("   empty\n");
    kvfLog("\n");
    return true;
}

PVNODE* PVNODE::displayTreeRecursive(PVNODE* node, int indent)
{
    if (!node)
        return nullptr;
    kvfLog("%*s+ %s [id: %d]\n", indent, "", node->name, static_cast<int>(node->id));
    for (unsigned int i = 0; node->children && i < node->numberOfChildren; i++)
        displayTreeRecursive(node->children[i], indent + 2);
    return nullptr;
}

bool PVNODE::readName(KVFREADER& reader)
{
    char text[PV_NODE_NAME_SIZE];
    if (!reader.readString(text, sizeof text))
        return false;
    setName(text);
    return true;
}

bool PVNODE::readVector(KVFREADER& reader, K3MVECTOR3D& vector)
{
    float v[3];
    if (!reader.readFloats(v, 3))
        return false;
    vector = K3MVECTOR3D(v[0], v[1], v[2]);
    return true;
}

PVNODE* PVNODE::load(KVFREADER& reader, uint16_t& children)
{
    PVNODE* node = new (std::nothrow) PVNODE();
    if (!node) {
        kvfLog("   [!] Consistency error: node == NULL @ PVNODE::load\n");
        return nullptr;
    }
    uint32_t aux;
    if (reader.readU32(aux) && node->readName(reader) && readVector(reader, node->position) &&
        readVector(reader, node->origin) && reader.readU16(children)) {
        node->auxId = aux;
        return node;
    }
    delete node;
    return nullptr;
}
