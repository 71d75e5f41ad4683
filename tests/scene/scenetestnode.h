// Test nodes of any type, recorded meshes and helpers, and the textbook local
// transform the scene tests compare to.
#ifndef PEVRANO_TESTS_SCENE_SCENETESTNODE_H
#define PEVRANO_TESTS_SCENE_SCENETESTNODE_H

#include <functional>

#include <pevrano.h>

#include "support/viewmath.h"

namespace pvtest {

// Called by every test object's render, when set (to record draw order).
inline std::function<void(PVNODE*, void*)> onRender;

// A mesh, helper, widget or plain node whose drawing is only recorded: the
// render list asks the real classes directly.
template <class Base> class Recorded : public Base {
public:
    // A null name keeps the default one.
    explicit Recorded(const char* nodeName = nullptr) { this->setName(nodeName); }
    bool render(void* element) override
    {
        if (onRender)
            onRender(this, element);
        return true;
    }
};

// A node of any type that records its drawing and counts its destruction.
class TestNode : public Recorded<PVNODE> {
public:
    explicit TestNode(const char* nodeName = nullptr, PV_NODE_TYPE nodeType = PV_TYPE_NODE) :
        Recorded<PVNODE>(nodeName)
    {
        type = nodeType;
    }
    ~TestNode() override { ++destroyed; }
    // Breaks the hierarchy on purpose: a parent that does not list this node.
    void forceParent(PVNODE* node) { parent = node; }

    static int destroyed;
};

// Radius of a mesh or helper.
inline void setRadius(PVNODE* node, float radius)
{
    if (node->getType() == PV_TYPE_MESH)
        static_cast<PVMESH*>(node)->setRadius(radius);
    else
        static_cast<PVHELPER*>(node)->setRadius(radius);
}

// A registry-owned node of the class its type calls for, at a position,
// under parent if given; a mesh or helper takes a radius when one is given.
inline PVNODE* make(const char* name, PV_NODE_TYPE type, Vec3 position = {0, 0, 0}, PVNODE* parent = nullptr,
                    float radius = 0)
{
    PVNODE* node = type == PV_TYPE_MESH     ? new Recorded<PVMESH>(name)
                   : type == PV_TYPE_HELPER ? static_cast<PVNODE*>(new Recorded<PVHELPER>(name))
                                            : new TestNode(name, type);
    node->setPosition(float(position.x), float(position.y), float(position.z));
    if (parent)
        node->link(parent);
    if (radius != 0)
        setRadius(node, radius);
    return node;
}

// Gives a mesh a half-transparent material of its own.
inline void makeTransparent(PVNODE* mesh)
{
    PVMATERIAL* glass = new PVMATERIAL();
    glass->setTransparency(0.5f);
    static_cast<PVMESH*>(mesh)->setMaterial(glass);
}

// Places the node by its vectors and returns its local transform: translate
// by position + origin, then rotate about X, Y and Z (each applied in the
// node's own frame).
inline Mat4 place(PVNODE& node, Vec3 position, Vec3 origin, Vec3 rotation)
{
    node.setPosition(float(position.x), float(position.y), float(position.z));
    node.setOrigin(float(origin.x), float(origin.y), float(origin.z));
    node.setRotation(float(rotation.x), float(rotation.y), float(rotation.z));
    const Vec3 at = position + origin;
    return Mat4::translation(at.x, at.y, at.z) * Mat4::rotationX(rotation.x) * Mat4::rotationY(rotation.y) *
           Mat4::rotationZ(rotation.z);
}

}  // namespace pvtest

#endif
