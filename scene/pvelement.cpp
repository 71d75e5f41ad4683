#include "scene/pvelement.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "assets/pvmaterial.h"
#include "assets/pvmesh.h"
#include "core/pvgl.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "gui/pvbox.h"
#include "gui/pvinput.h"
#include "gui/pvwindow.h"
#include "scene/pvlight.h"
#include "scene/pvnode.h"

bool PVELEMENT::active = false;
bool PVELEMENT::clipping = false;
float PVELEMENT::clippingRadius = 128.0f;
unsigned int PVELEMENT::numberOfElements = 0;
unsigned int PVELEMENT::numberOfPassedElements = 0;
unsigned int PVELEMENT::numberOfLights = 0;
unsigned int PVELEMENT::numberOfTransparencies = 0;
PVELEMENT* PVELEMENT::element = nullptr;
PVELEMENT** PVELEMENT::elementPointer = nullptr;

PVELEMENT* PVELEMENT::getNearestLight(unsigned int slot) const
{
    return slot < PV_ELEMENT_LIGHTS ? nearestLight[slot] : nullptr;
}

void PVELEMENT::setNearestLight(unsigned int slot, PVELEMENT* light)
{
    if (slot < PV_ELEMENT_LIGHTS)
        nearestLight[slot] = light;
}

bool PVELEMENT::init(unsigned int n)
{
    if (active) {
        kvfLog("   [!] Already active @ PVELEMENT::init\n");
        return false;
    }
    if (n == 0 || n > PV_ELEMENT_MAX)
        n = PV_ELEMENT_MAX;
    void* records = kvfMalloc(n * sizeof(PVELEMENT));
    void* pointers = kvfMalloc(n * sizeof(PVELEMENT*));
    if (!records || !pointers) {
        if (records)
            kvfFree(records);
        if (pointers)
            kvfFree(pointers);
        kvfLog("   [!] Out of memory @ PVELEMENT::init\n");
        return false;
    }
    element = static_cast<PVELEMENT*>(records);
    elementPointer = static_cast<PVELEMENT**>(pointers);
    for (unsigned int i = 0; i < n; i++)
        elementPointer[i] = new (&element[i]) PVELEMENT();
    numberOfElements = n;
    reset();
    active = true;
    kvfLog("   %d elements allocated\n", static_cast<int>(n));
    return true;
}

bool PVELEMENT::free()
{
    if (!active)
        return false;
    // The records hold nothing that needs destroying.
    kvfFree(element);
    kvfFree(elementPointer);
    element = nullptr;
    elementPointer = nullptr;
    numberOfElements = 0;
    reset();
    active = false;
    return true;
}

void PVELEMENT::reset()
{
    numberOfPassedElements = 0;
    numberOfLights = 0;
    numberOfTransparencies = 0;
}

bool PVELEMENT::pass(PVNODE* node, bool flag)
{
    if (!node) {
        kvfLog("   [!] Invalid params @ PVELEMENT::pass\n");
        return false;
    }
    if (numberOfPassedElements >= numberOfElements) {
        kvfLog("   [!] Scene too complex @ PVELEMENT::pass\n");
        return false;
    }
    // Nothing is drawn during the pass: its matrices are worked out on the
    // CPU alone.
    const bool wasShadowOnly = PV_glShadowOnly(true);
    const bool passed = passNode(node, flag);
    PV_glShadowOnly(wasShadowOnly);
    return passed;
}

// The flag is not used: the first child of a minimised window is passed with
// it set, every other child with it clear.
bool PVELEMENT::passNode(PVNODE* node, bool)
{
    PV_glPushMatrix();
    node->applyLocalTransform();

    const PV_NODE_TYPE type = node->getType();
    const bool recorded = type != PV_TYPE_NODE && !isHiddenMesh(node) && !isClipped(node);
    if (recorded)
        addRecord(node);

    if (isMinimizedWindow(node)) {
        if (node->getNumberOfChildren())
            node->getChild(0)->pass(true);
    } else {
        passChildren(node);
    }
    PV_glPopMatrix();
    return true;
}

void PVELEMENT::passChildren(PVNODE* node)
{
    for (unsigned int i = 0; i < node->getNumberOfChildren(); i++)
        node->getChild(i)->pass(false);
}

bool PVELEMENT::isHiddenMesh(PVNODE* node)
{
    return node->getType() == PV_TYPE_MESH && static_cast<PVMESH*>(node)->isHidden();
}

// Distance culling of mesh-like nodes against the eye at the origin of the
// current model-view space.
bool PVELEMENT::isClipped(PVNODE* node)
{
    const PV_NODE_TYPE type = node->getType();
    if (!clipping || (type != PV_TYPE_MESH && type != PV_TYPE_TERRAIN && type != PV_TYPE_HELPER))
        return false;
    const float limit = clippingRadius + 2.0f * PVMESH::radiusOf(node);
    K3MMATRIX modelView;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, modelView.m);
    const float distance = modelView.getTranslation().length();
    if (distance <= limit)
        return false;
    kvfLog(" (clipped) %s at distance %.2f\n", node->getName(), static_cast<double>(distance));
    return true;
}

void PVELEMENT::addRecord(PVNODE* node)
{
    PVELEMENT& record = element[numberOfPassedElements];
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, node->getCachedMatrix()->m);
    record.node = node;
    record.auxId = node->getAuxId();
    record.matrix = *node->getCachedMatrix();
    record.param1 = 0;
    for (PVELEMENT*& light : record.nearestLight)
        light = nullptr;
    elementPointer[numberOfPassedElements] = &record;
    if (node->getType() == PV_TYPE_MESH && static_cast<PVMESH*>(node)->isSkinned())
        record.param1 = takeSkeletonSlot(static_cast<PVMESH*>(node));
    numberOfPassedElements++;
    countRecord(node);
}

// The bones' matrices, relative to the mesh's parent, go into the next slot
// of the skeleton cache; a full cache leaves the mesh with slot 16.
unsigned int PVELEMENT::takeSkeletonSlot(PVMESH* mesh)
{
    if (PVMESH::getNumberOfSkeletons() >= PV_MESH_SKELETONS) {
        kvfLog("   [!] Skeleton cache full @ PVELEMENT::pass\n");
        return PV_MESH_SKELETONS;
    }
    PV_glPushMatrix();
    PV_glLoadIdentity();
    passSkeleton(mesh->getParent(), mesh);
    const unsigned int slot = PVMESH::claimSkeleton(mesh);
    PV_glPopMatrix();
    return slot;
}

bool PVELEMENT::passSkeleton(PVNODE* node, PVMESH* mesh)
{
    if (!node) {
        kvfLog("   [!] Invalid params @ PVELEMENT::skeletonPass\n");
        return false;
    }
    PV_glPushMatrix();
    node->applyLocalTransform();
    K3MMATRIX* skeleton = PVMESH::nextSkeleton();
    if (node->getType() == PV_TYPE_MESH && skeleton) {
        for (unsigned int b = 0; b < mesh->getNumberOfBones(); b++) {
            if (mesh->getBone(b)->node == node) {
                PV_glGetFloatv(PV_GL_MODELVIEW_STACK, skeleton[b].m);
                break;
            }
        }
    }
    for (unsigned int i = 0; i < node->getNumberOfChildren(); i++)
        passSkeleton(node->getChild(i), mesh);
    PV_glPopMatrix();
    return true;
}

void PVELEMENT::countRecord(PVNODE* node)
{
    if (node->getType() == PV_TYPE_LIGHT)
        numberOfLights++;
    else if (isTransparent(node))
        numberOfTransparencies++;
}

// Emitters and helpers always blend; a mesh blends when its material does.
bool PVELEMENT::isTransparent(PVNODE* node)
{
    switch (node->getType()) {
    case PV_TYPE_EMITTER:
    case PV_TYPE_HELPER:
        return true;
    case PV_TYPE_MESH: {
        PVMATERIAL* material = static_cast<PVMESH*>(node)->getMaterial();
        return material && material->isTransparent();
    }
    default:
        return false;
    }
}

// Orders floats strictly with NaN after every number, so that a corrupt
// matrix cannot break the sort's ordering contract.
static bool floatBefore(float a, float b) { return a < b || (std::isnan(b) && !std::isnan(a)); }

// Lights first (0), then opaque elements (1), then transparent ones (2).
int PVELEMENT::drawingRank(PVNODE* node)
{
    if (node->getType() == PV_TYPE_LIGHT)
        return 0;
    return isTransparent(node) ? 2 : 1;
}

bool PVELEMENT::before3D(const PVELEMENT* a, const PVELEMENT* b)
{
    return drawingRank(a->node) < drawingRank(b->node);
}

// Eye-space z of the element's nearest side: the most negative is farthest.
float PVELEMENT::sortDepth(const PVELEMENT* record)
{
    return record->matrix.m[14] - PVMESH::radiusOf(record->node);
}

bool PVELEMENT::fartherBefore(const PVELEMENT* a, const PVELEMENT* b)
{
    return floatBefore(sortDepth(a), sortDepth(b));
}

bool PVELEMENT::behindBefore(const PVELEMENT* a, const PVELEMENT* b)
{
    return foremostStamp(a->node) < foremostStamp(b->node);
}

long PVELEMENT::foremostStamp(PVNODE* node)
{
    const PV_NODE_TYPE type = node->getType();
    if (type < PV_TYPE_BOX || type > PV_TYPE_VSCROLLBAR)
        return 0;
    return static_cast<PVBOX*>(node)->getForemostTimeStamp();
}

bool PVELEMENT::isMinimizedWindow(PVNODE* node)
{
    return node->getType() == PV_TYPE_WINDOW && static_cast<PVWINDOW*>(node)->isMinimized();
}

bool PVELEMENT::manageGUIEvents(char key, int x, int y, int pointerDown, int, unsigned int* clickedId)
{
    return PVINPUT::manage(key, x, y, pointerDown, clickedId);
}

static bool isExclusiveLight(PVNODE* node)
{
    return node->getType() == PV_TYPE_LIGHT && static_cast<PVLIGHT*>(node)->isExclusive();
}

// Exclusive lights first, then nearest first.
bool PVELEMENT::lightBefore(const PVELEMENT* a, const PVELEMENT* b)
{
    const bool aExclusive = isExclusiveLight(a->node);
    const bool bExclusive = isExclusiveLight(b->node);
    if (aExclusive != bExclusive)
        return aExclusive;
    return floatBefore(a->distance, b->distance);
}

// The sorts permute record pointers in place. std::sort allocates nothing,
// where the C library's qsort takes a heap buffer once the list exceeds 1 KB
// of pointers; elements that compare equal come out in no particular order.
bool PVELEMENT::sort3D()
{
    if (!numberOfPassedElements)
        return false;
    PVELEMENT** const end = elementPointer + numberOfPassedElements;
    if (numberOfLights || numberOfTransparencies)
        std::sort(elementPointer, end, before3D);
    if (numberOfTransparencies > 1)
        std::sort(end - numberOfTransparencies, end, fartherBefore);
    return true;
}

bool PVELEMENT::sort2D()
{
    if (!numberOfPassedElements)
        return false;
    std::sort(elementPointer, elementPointer + numberOfPassedElements, behindBefore);
    return true;
}

bool PVELEMENT::sortLights(K3MVECTOR3D p)
{
    if (!numberOfPassedElements || !numberOfLights)
        return false;
    for (unsigned int i = 0; i < numberOfLights; i++) {
        PVELEMENT* light = elementPointer[i];
        light->distance = light->matrix.getTranslation().distance(p);
    }
    std::sort(elementPointer, elementPointer + numberOfLights, lightBefore);
    return true;
}

PVELEMENT* PVELEMENT::getLight(unsigned int i) { return i < numberOfLights ? elementPointer[i] : nullptr; }

PVELEMENT* PVELEMENT::getPassedElement(unsigned int i)
{
    return i < numberOfPassedElements ? elementPointer[i] : nullptr;
}
