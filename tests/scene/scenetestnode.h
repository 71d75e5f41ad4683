// A node of any type with the properties the render list asks mesh-like
// nodes for (radius, hidden, transparent material), plus the textbook local transform the tests compare to.
#ifndef PEVRANO_TESTS_SCENETESTNODE_H
#define PEVRANO_TESTS_SCENETESTNODE_H

#include <pevrano.h>

#include "support/viewmath.h"

namespace pvtest {

class TestNode : public PVNODE {
public:
    explicit TestNode(const char* nodeName = nullptr, PV_NODE_TYPE nodeType = PV_TYPE_NODE)
    {
        type = nodeType;
        if (nodeName)
            setName(nodeName);
    }
    ~TestNode() override { ++destroyed; }
    bool render(void* element) override
    {
        lastElement = element;
        ++renders;
        return true;
    }
    // Breaks the hierarchy on purpose: a parent that does not list this node.
    void forceParent(PVNODE* node) { parent = node; }

    float radius = 0.0f;
    bool hidden = false;
    bool transparent = false;
    int renders = 0;
    void* lastElement = nullptr;
    static int destroyed;

    // Installs answers that read the fields above; every node the render
    // list asks about in these tests is a TestNode.
    static void installQueries()
    {
        PVELEMENT::QUERIES queries = {
            [](PVNODE* n) { return static_cast<TestNode*>(n)->radius; },
            [](PVNODE* n) { return static_cast<TestNode*>(n)->hidden; },
            [](PVNODE* n) { return static_cast<TestNode*>(n)->transparent; }};
        PVELEMENT::setQueries(queries);
    }
};

// Local transform of a node placed by its vectors: translate by position +
// origin, then rotate about X, Y and Z (each applied in the node's own frame).
inline Mat4 localTransform(Vec3 position, Vec3 origin, Vec3 rotation)
{
    const Vec3 at = position + origin;
    return Mat4::translation(at.x, at.y, at.z) * Mat4::rotationX(rotation.x) *
           Mat4::rotationY(rotation.y) * Mat4::rotationZ(rotation.z);
}

inline void place(PVNODE& node, Vec3 position, Vec3 origin, Vec3 rotation)
{
    node.setPosition(float(position.x), float(position.y), float(position.z));
    node.setOrigin(float(origin.x), float(origin.y), float(origin.z));
    node.setRotation(float(rotation.x), float(rotation.y), float(rotation.z));
}

}  // namespace pvtest

#endif
