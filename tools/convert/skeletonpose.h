// The model's node tree as the engine will hold it: unique names, the pose
// written into the scene file (skin bones at their bind pose) and the pose at
// any time of an animation, the whole model scaled as asked. Engine nodes carry only a translation and Euler
// angles, so every world transform is split into its rigid part (what the
// nodes carry) and a remainder that is baked into the geometry.
#ifndef PEVRANO_TOOLS_CONVERT_SKELETONPOSE_H
#define PEVRANO_TOOLS_CONVERT_SKELETONPOSE_H

#include <assimp/anim.h>
#include <assimp/scene.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

struct PoseNode {
    const aiNode* source = nullptr;
    int sourceParent = -1;
    int parent = -1;  // nearest ancestor that is written, -1 for the root
    std::vector<int> children;  // the nodes written below this one, in order
    bool folded = false;  // not written: its transform goes to its children
    bool animated = false;  // some animation has a channel for it
    std::string name;
    aiMatrix4x4 sceneWorld;  // from the node transforms as stored
    aiMatrix4x4 bindWorld;  // skin bones moved to their bind pose
    bool bone = false;
};

class SkeletonPose {
public:
    // reservedName is kept free for a node the converter adds itself; the
    // whole model is scaled by scale.
    SkeletonPose(const aiScene* scene, const std::string& reservedName, float scale = 1.0f);

    const std::vector<PoseNode>& nodes() const { return table; }
    int indexOf(const aiNode* node) const;
    int indexOfName(const aiString& name) const;
    // First node that holds the mesh, or -1.
    int meshOwner(unsigned int mesh) const;
    bool hasSkin() const { return skinned; }

    // Levels of the written tree, the root being level 1.
    unsigned int depth() const;
    // Folds every node but the root that carries no geometry, no animation
    // and no bone into its children's transforms; returns how many were.
    unsigned int foldEmptyNodes();
    // The deepest written node.
    const PoseNode& deepest() const;

    // Rigid local transform of node index in the bind pose.
    aiMatrix4x4 bindLocal(int index) const;
    // World transform of every node at the given time (in ticks) of animation.
    std::vector<aiMatrix4x4> worldsAt(const aiAnimation& animation, double ticks) const;
    // Nodes an animation must drive: those it animates, the skin bones and
    // all their written ancestors, in tree order.
    std::vector<int> drivenNodes(const aiAnimation& animation) const;

    // Translation · rotation · scale, the order of a node's local transform.
    static aiMatrix4x4 compose(const aiVector3D& scaling, const aiQuaternion& rotation,
                               const aiVector3D& position);
    // Rotation and translation of a transform, its scale dropped.
    static aiMatrix4x4 rigid(const aiMatrix4x4& transform);
    // Rigid transform of child relative to parent, both world transforms.
    static aiMatrix4x4 rigidLocal(const aiMatrix4x4& parentWorld, const aiMatrix4x4& world);
    // Angles in degrees (x, y, z) such that rotation = Rx(x) · Ry(y) · Rz(z).
    static aiVector3D eulerDegrees(const aiMatrix4x4& rotation);
    static aiVector3D translation(const aiMatrix4x4& transform);

    // A name no node or earlier call has taken, made from wanted.
    std::string uniqueName(const std::string& wanted);

private:
    void addNode(const aiNode* node, int parent);
    void bindBones(const aiScene* scene);
    void markAnimated(const aiScene* scene);
    // Index and level of the deepest written node.
    std::pair<int, unsigned int> deepestNode() const;
    // Written nodes below index: its children, those of folded children in their place.
    std::vector<int> writtenBelow(int index) const;

    aiMatrix4x4 placement;  // the whole model's scale
    std::vector<PoseNode> table;
    std::map<const aiNode*, int> byNode;
    std::map<std::string, int> bySourceName;
    std::map<unsigned int, int> meshOwners;
    std::set<std::string> usedNames;
    bool skinned = false;
};

#endif
