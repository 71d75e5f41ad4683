// Node: registry, identity, hierarchy editing with its log lines, searches,
// world matrices against textbook products, the tree listing and cleanUp.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scene/scenefixture.h"
#include "scene/scenetestnode.h"

using pvtest::expectMatrixNear;
using pvtest::Mat4;
using pvtest::TestNode;

int TestNode::destroyed = 0;

namespace {

class Node : public pvtest::RecordingTest {
protected:
    void SetUp() override
    {
        PV_glMatrixMode(GL_MODELVIEW);
        PV_glLoadIdentity();
        TestNode::destroyed = 0;
    }
    void TearDown() override { PVNODE::cleanUp(); }

    // A node owned by the registry (released by cleanUp), under parent if given.
    static TestNode* make(const char* name, PVNODE* parent = nullptr)
    {
        TestNode* node = new TestNode(name);
        if (parent)
            node->link(parent);
        return node;
    }
    static std::vector<PVNODE*> childrenOf(PVNODE* node)
    {
        std::vector<PVNODE*> result;
        for (unsigned int i = 0; i < node->getNumberOfChildren(); i++)
            result.push_back(node->getChild(i));
        return result;
    }
    // A chain of depth ancestors above the returned leaf, each moving by 1 in x.
    static TestNode* chainWithAncestors(int depth)
    {
        TestNode* below = nullptr;
        for (int i = 0; i <= depth; i++) {
            below = make(nullptr, below);
            below->setPosition(1, 0, 0);
        }
        return below;
    }
};

TEST_F(Node, DefaultsIdsNamesAndTypeName)
{
    PVNODE* first = new PVNODE();
    PVNODE* second = new PVNODE(true);
    // Ids themselves are checked by the searches and by cleanUp.
    EXPECT_STREQ("[node 1]", first->getName());
    EXPECT_STREQ("[node 2]", second->getName());
    EXPECT_STREQ("node", first->getTypeName());
    EXPECT_FALSE(first->isShared());
    EXPECT_FALSE(second->isShared());  // the flag is ignored
    EXPECT_FALSE(first->render(nullptr));
    EXPECT_STREQ("vscrollbar", TestNode(nullptr, PV_TYPE_VSCROLLBAR).getTypeName());
    EXPECT_EQ("", log.fresh());

    // Names of up to 255 characters; the node's own name is a valid argument.
    const std::string longest(255, 'x');
    first->setName(longest.c_str());
    first->setName(std::string(256, 'y').c_str());
    first->setName(nullptr);
    EXPECT_EQ(longest, first->getName());
    first->setName(first->getName() + 250);
    EXPECT_STREQ("xxxxx", first->getName());
}

// The list itself is the registry template's business and ids the
// identifier table's: here, that nodes join it and are found by whole name
// or id.
TEST_F(Node, RegistryFindsByNameAndId)
{
    make("a");
    TestNode* b = make("b");
    TestNode* c = make("c");
    delete b;
    EXPECT_EQ(nullptr, PVNODE::findByName("b"));
    EXPECT_EQ(nullptr, PVNODE::findByName(nullptr));
    EXPECT_EQ(c, PVNODE::findById(3));
    EXPECT_EQ(nullptr, PVNODE::findById(4));

    // The first in registry order wins; names match whole.
    TestNode* first = make("twin");
    make("twin");
    EXPECT_EQ(first, PVNODE::findByName("twin"));
    EXPECT_EQ(nullptr, PVNODE::findByName("twi"));
}

// Two arguments leave z as it was.
TEST_F(Node, MovesAndRotationsAccumulateAndTwoArgumentsLeaveZ)
{
    TestNode* node = make("n");
    node->setPosition(1, 2, 3);
    node->setPosition(4, 5);
    node->move(1, 1);
    node->move(K3MVECTOR3D(1, 0, 1));
    EXPECT_TRUE(K3MVECTOR3D(6, 6, 4) == node->getPosition());
    node->setRotation(K3MVECTOR3D(10, 20, 30));
    node->setRotation(1, 2);
    node->rotate(1, 1, 5);
    EXPECT_TRUE(K3MVECTOR3D(2, 3, 35) == node->getRotation());
}

TEST_F(Node, LinkAppendsRefusesBadParentsAndGetChildChecksItsIndex)
{
    TestNode* parent = make("parent");
    TestNode* a = make("a");
    TestNode* b = make("b");
    EXPECT_TRUE(a->link(parent));
    EXPECT_TRUE(b->link(parent));
    EXPECT_EQ((std::vector<PVNODE*> {a, b}), childrenOf(parent));
    EXPECT_EQ("", log.fresh());

    EXPECT_FALSE(a->link(nullptr));
    EXPECT_FALSE(a->link(a));
    TestNode* other = make("other");
    EXPECT_FALSE(a->link(other));
    EXPECT_EQ("   [!] Invalid param @ PVNODE::link\n"
              "   [!] Invalid param @ PVNODE::link\n"
              "   [!] Node a has already a parent @ PVNODE::link\n",
              log.fresh());
    EXPECT_EQ(parent, a->getParent());
    EXPECT_EQ(0u, other->getNumberOfChildren());

    EXPECT_EQ(nullptr, parent->getChild(parent->getNumberOfChildren()));
    EXPECT_EQ(nullptr, a->getChild(0));
    EXPECT_EQ("   [!] Invalid params @ PVNODE::getChild\n"
              "   [!] Invalid params @ PVNODE::getChild\n",
              log.fresh());
}

TEST_F(Node, UnlinkKeepsTheOthersInOrderAndEmptiesAnOnlyChildsParentWithoutLookingItUp)
{
    TestNode* parent = make("parent");
    TestNode* a = make("a", parent);
    TestNode* b = make("b", parent);
    TestNode* c = make("c", parent);
    EXPECT_TRUE(b->unlink());
    EXPECT_EQ((std::vector<PVNODE*> {a, c}), childrenOf(parent));
    EXPECT_TRUE(b->isRoot());
    EXPECT_FALSE(b->unlink());
    EXPECT_EQ("   [!] Node b is already unlinked @ PVNODE::unlink\n", log.fresh());

    // A node claiming a parent that does not list it.
    TestNode* stray = make("stray");
    stray->forceParent(parent);
    EXPECT_FALSE(stray->unlink());
    EXPECT_EQ("   [!] Consistency problem with stray @ PVNODE::unlink\n", log.fresh());
    EXPECT_EQ((std::vector<PVNODE*> {a, c}), childrenOf(parent));

    // An only child is not looked up: the parent is emptied, whichever node
    // claimed it, and its real child is left dangling.
    c->unlink();
    EXPECT_TRUE(stray->unlink());
    EXPECT_EQ(0u, parent->getNumberOfChildren());
    EXPECT_TRUE(stray->isRoot());
    EXPECT_EQ(parent, a->getParent());
    EXPECT_EQ("", log.fresh());
    a->forceParent(nullptr);
}

// Links and unlinks across the storage's growth steps, in several orders,
// against a plain list: the children seen stay exactly the linked ones, in
// order; relinking after the parent emptied starts afresh, and the counted
// memory is all given back.
TEST_F(Node, ManyLinksAndUnlinksKeepExactlyTheLinkedChildrenInOrder)
{
    const int ratioBefore = kvfGetMemoryStats().ratio;
    // Unlinked: every third, the first half, all but the last.
    bool (*const patterns[])(int index, int count) = {
        [](int index, int) { return index % 3 == 0; },
        [](int index, int count) { return index < count / 2; },
        [](int index, int count) { return index != count - 1; },
    };
    TestNode* parent = make("parent");
    for (auto unlinks : patterns) {
        for (const int count : {1, 5, 257}) {
            SCOPED_TRACE(count);
            std::vector<PVNODE*> expected;
            for (int i = 0; i < count; i++)
                expected.push_back(make("child", parent));
            std::vector<PVNODE*> kept;
            for (int i = 0; i < count; i++) {
                if (unlinks(i, count))
                    EXPECT_TRUE(expected[size_t(i)]->unlink());
                else
                    kept.push_back(expected[size_t(i)]);
            }
            kept.push_back(make("late", parent));
            EXPECT_EQ(kept, childrenOf(parent));
            for (PVNODE* child : kept)
                EXPECT_TRUE(child->unlink());
            EXPECT_EQ(0u, parent->getNumberOfChildren());
        }
    }
    EXPECT_EQ("", log.fresh());
    PVNODE::cleanUp();
    EXPECT_EQ(ratioBefore, kvfGetMemoryStats().ratio);
}

TEST_F(Node, RemoveHandsTheChildrenToTheGrandparentInOrder)
{
    TestNode* grandparent = make("grandparent");
    TestNode* elder = make("elder", grandparent);
    TestNode* node = make("node", grandparent);
    TestNode* c1 = make("c1", node);
    TestNode* c2 = make("c2", node);
    TestNode* leaf = make("leaf", c1);

    EXPECT_TRUE(node->remove());
    EXPECT_EQ((std::vector<PVNODE*> {elder, c1, c2}), childrenOf(grandparent));
    EXPECT_EQ(
        (std::vector<PVNODE*> {grandparent, grandparent, c1, nullptr}),
        (std::vector<PVNODE*> {c1->getParent(), c2->getParent(), leaf->getParent(), node->getParent()}));
    EXPECT_EQ(0u, node->getNumberOfChildren());
    EXPECT_EQ("", log.fresh());

    EXPECT_FALSE(node->remove());
    EXPECT_EQ("   [!] Node node already unlinked @ PVNODE::remove\n", log.fresh());
}

TEST_F(Node, HierarchySearchesArePreOrder)
{
    TestNode* root = make("root");
    TestNode* a = make("a", root);
    TestNode* deep = make("x", a);
    TestNode* b = make("x", root);
    TestNode* outside = make("outside");
    EXPECT_EQ(root, root->findByNameInHierarchy("root"));
    EXPECT_EQ(deep, root->findByNameInHierarchy("x"));
    EXPECT_EQ(b, b->findByNameInHierarchy("x"));
    EXPECT_EQ(nullptr, root->findByNameInHierarchy("outside"));
    EXPECT_EQ(nullptr, root->findByNameInHierarchy(nullptr));
    EXPECT_EQ(deep, root->findByIdInHierarchy(deep->getId()));
    EXPECT_EQ(nullptr, root->findByIdInHierarchy(outside->getId()));
    EXPECT_EQ(nullptr, a->findByIdInHierarchy(b->getId()));
}

TEST_F(Node, FinalMatrixComposesAncestorsTopDown)
{
    TestNode* root = make("root");
    TestNode* arm = make("arm", root);
    TestNode* hand = make("hand", arm);
    const Mat4 rootM = pvtest::place(*root, {1, 2, 3}, {0.5, 0, 0}, {30, 0, 0});
    const Mat4 armM = pvtest::place(*arm, {0, 4, 0}, {0, 0, -1}, {0, 45, 10});
    const Mat4 handM = pvtest::place(*hand, {2, 0, 0}, {0, 0, 0}, {15, -20, 60});
    PV_glTranslatef(7, 8, 9);  // the wrapper's current matrix stays as it is
    expectMatrixNear(rootM * armM * handM, hand->getFinalMatrix(nullptr).m, "whole chain");
    K3MMATRIX current;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, current.m);
    expectMatrixNear(Mat4::translation(7, 8, 9), current.m, "current matrix after getFinalMatrix");
    expectMatrixNear(armM * handM, hand->getFinalMatrix("arm").m, "stopped at arm");
    expectMatrixNear(rootM * armM * handM, hand->getFinalMatrix("missing").m, "unknown stop name");

    // A matrix-positioned ancestor contributes its matrix; any other
    // positioning value contributes nothing.
    const Mat4 armMatrix = Mat4::translation(5, 0, 0) * Mat4::rotationZ(90);
    K3MMATRIX engineArm;
    armMatrix.toGl(engineArm.m);
    arm->setMatrix(engineArm);
    arm->setPositioning(PV_POSITIONING_MATRIX);
    expectMatrixNear(rootM * armMatrix * handM, hand->getFinalMatrix(nullptr).m, "matrix arm");
    arm->setPositioning(PV_NODE_POSITIONING(2));
    expectMatrixNear(rootM * handM, hand->getFinalMatrix(nullptr).m, "arm without transform");
    EXPECT_EQ("", log.fresh());
}

TEST_F(Node, SixtyThreeAncestorsWorkSixtyFourOverflow)
{
    TestNode* leaf63 = chainWithAncestors(63);
    expectMatrixNear(Mat4::translation(64, 0, 0), leaf63->getFinalMatrix(nullptr).m, "63 ancestors");
    EXPECT_EQ("", log.fresh());

    TestNode* leaf64 = chainWithAncestors(64);
    leaf64->setPosition(5, 5, 5);
    expectMatrixNear(Mat4::identity(), leaf64->getFinalMatrix(nullptr).m, "64 ancestors");
    EXPECT_EQ("   [!] Depth overflow @ PVNODE::getFinalMatrix()\n", log.fresh());
    // A stop name below the overflow keeps the climb short.
    static_cast<TestNode*>(leaf64->getParent())->setName("near");
    expectMatrixNear(Mat4::translation(6, 5, 5), leaf64->getFinalMatrix("near").m, "stopped");
    EXPECT_EQ("", log.fresh());
}

// Nested trees are listed by every scene load (the loader tests); a lone
// node lists as empty.
TEST_F(Node, DisplayTreeOfALoneNodeIsEmpty)
{
    EXPECT_TRUE(PVNODE::displayTree(make("lonely")));
    EXPECT_EQ("   Tree for lonely:\n"
              "   empty\n"
              "\n",
              log.fresh());
    EXPECT_EQ(nullptr, PVNODE::displayTreeRecursive(nullptr, 3));
    EXPECT_EQ("", log.fresh());
}

TEST_F(Node, CleanUpDeletesEveryNodeThroughItsDestructor)
{
    const int allocationsBefore = kvfGetMemoryStats().ratio;

    TestNode* root = make("root");
    make("child", root);
    make("loose");
    EXPECT_TRUE(PVNODE::cleanUp());
    EXPECT_EQ("   3 node(s) released @ PVNODE::cleanUp\n", log.fresh());
    EXPECT_EQ(3, TestNode::destroyed);
    EXPECT_EQ(nullptr, PVNODE::getFirstNode());
    EXPECT_EQ(0u, PVNODE::getNumberOfNodes());
    EXPECT_EQ(allocationsBefore, kvfGetMemoryStats().ratio);  // children arrays freed
    EXPECT_FALSE(PVNODE::cleanUp());
    EXPECT_EQ("", log.fresh());
    EXPECT_EQ(1u, make("again")->getId());  // ids were given back
}

}  // namespace
