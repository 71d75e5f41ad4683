#include "skeletonpose.h"

#include <algorithm>
#include <cmath>

namespace {

// Engine names hold 255 characters; room is left for a "#n" suffix.
const size_t longestName = 240;

aiVector3D blend(const aiVector3D& from, const aiVector3D& to, float factor)
{
    return from + (to - from) * factor;
}

aiQuaternion blend(const aiQuaternion& from, const aiQuaternion& to, float factor)
{
    aiQuaternion result;
    aiQuaternion::Interpolate(result, from, to, factor);
    return result.Normalize();
}

const aiNodeAnim* channelOf(const aiAnimation& animation, const aiString& name)
{
    for (unsigned int c = 0; c < animation.mNumChannels; c++)
        if (animation.mChannels[c]->mNodeName == name)
            return animation.mChannels[c];
    return nullptr;
}

// Value at ticks, blended between the keys around it and held beyond the
// first and last keys.
template <class Key, class Value>
Value sample(const Key* keys, unsigned int count, double ticks, const Value& fallback)
{
    if (count == 0)
        return fallback;
    if (ticks <= keys[0].mTime)
        return keys[0].mValue;
    for (unsigned int k = 0; k + 1 < count; k++)
        if (ticks < keys[k + 1].mTime) {
            const double span = keys[k + 1].mTime - keys[k].mTime;
            return blend(keys[k].mValue, keys[k + 1].mValue,
                         span > 0 ? float((ticks - keys[k].mTime) / span) : 0.0f);
        }
    return keys[count - 1].mValue;
}

aiMatrix4x4 localAt(const aiNode* node, const aiNodeAnim* channel, double ticks)
{
    if (!channel)
        return node->mTransformation;
    aiVector3D scaling, position;
    aiQuaternion rotation;
    node->mTransformation.Decompose(scaling, rotation, position);
    return SkeletonPose::compose(sample(channel->mScalingKeys, channel->mNumScalingKeys, ticks, scaling),
                                 sample(channel->mRotationKeys, channel->mNumRotationKeys, ticks, rotation),
                                 sample(channel->mPositionKeys, channel->mNumPositionKeys, ticks, position));
}

}  // namespace

SkeletonPose::SkeletonPose(const aiScene* scene, const std::string& reservedName, float scale)
{
    aiMatrix4x4::Scaling(aiVector3D(scale, scale, scale), placement);
    usedNames.insert(reservedName);
    addNode(scene->mRootNode, -1);
    bindBones(scene);
    markAnimated(scene);
}

void SkeletonPose::addNode(const aiNode* node, int parent)
{
    PoseNode entry;
    entry.source = node;
    entry.sourceParent = parent;
    entry.parent = parent;
    entry.name = uniqueName(node->mName.C_Str());
    entry.sceneWorld = (parent < 0 ? placement : table[parent].sceneWorld) * node->mTransformation;
    const int index = static_cast<int>(table.size());
    table.push_back(entry);
    if (parent >= 0)
        table[parent].children.push_back(index);
    byNode[node] = index;
    bySourceName.emplace(node->mName.C_Str(), index);
    for (unsigned int m = 0; m < node->mNumMeshes; m++)
        meshOwners.emplace(node->mMeshes[m], index);
    for (unsigned int c = 0; c < node->mNumChildren; c++)
        addNode(node->mChildren[c], index);
}

std::string SkeletonPose::uniqueName(const std::string& wanted)
{
    std::string base = wanted.empty() ? "node" : wanted.substr(0, longestName);
    std::string name = base;
    for (int suffix = 1; usedNames.count(name); suffix++)
        name = base + "#" + std::to_string(suffix);
    usedNames.insert(name);
    return name;
}

// A bone's bind pose follows from its offset matrix and the world transform
// of the node holding the mesh; nodes below bones follow their parents.
void SkeletonPose::bindBones(const aiScene* scene)
{
    std::map<int, aiMatrix4x4> bindOf;
    for (unsigned int m = 0; m < scene->mNumMeshes; m++) {
        const aiMesh* mesh = scene->mMeshes[m];
        const int owner = meshOwner(m);
        if (owner < 0)
            continue;
        for (unsigned int b = 0; b < mesh->mNumBones; b++) {
            const int bone = indexOfName(mesh->mBones[b]->mName);
            if (bone < 0 || bindOf.count(bone))
                continue;
            aiMatrix4x4 offset = mesh->mBones[b]->mOffsetMatrix;
            bindOf[bone] = table[owner].sceneWorld * offset.Inverse();
            skinned = true;
        }
    }
    for (size_t i = 0; i < table.size(); i++) {
        PoseNode& node = table[i];
        auto bind = bindOf.find(static_cast<int>(i));
        node.bone = bind != bindOf.end();
        if (node.bone)
            node.bindWorld = bind->second;
        else
            node.bindWorld = (node.sourceParent < 0 ? placement : table[node.sourceParent].bindWorld) *
                             node.source->mTransformation;
    }
}

void SkeletonPose::markAnimated(const aiScene* scene)
{
    for (PoseNode& node : table)
        for (unsigned int a = 0; a < scene->mNumAnimations && !node.animated; a++)
            node.animated = channelOf(*scene->mAnimations[a], node.source->mName) != nullptr;
}

// Nodes are listed parents first, so one pass gives every level: its
// written parent's plus one. The first node of the greatest level wins.
std::pair<int, unsigned int> SkeletonPose::deepestNode() const
{
    std::vector<unsigned int> levels(table.size());
    int deepestIndex = 0;
    for (size_t i = 0; i < table.size(); i++) {
        const int parent = table[i].parent;
        levels[i] = parent < 0 ? 1 : levels[parent] + 1;
        if (!table[i].folded && levels[i] > levels[deepestIndex])
            deepestIndex = static_cast<int>(i);
    }
    return {deepestIndex, levels[deepestIndex]};
}

const PoseNode& SkeletonPose::deepest() const { return table[deepestNode().first]; }

unsigned int SkeletonPose::depth() const { return deepestNode().second; }

unsigned int SkeletonPose::foldEmptyNodes()
{
    unsigned int count = 0;
    for (size_t i = 1; i < table.size(); i++) {
        PoseNode& node = table[i];
        node.folded = node.source->mNumMeshes == 0 && !node.animated && !node.bone;
        count += node.folded;
    }
    // Sources are listed parents first: every written parent is known in time.
    for (size_t i = 0; i < table.size(); i++) {
        PoseNode& node = table[i];
        if (node.sourceParent >= 0)
            node.parent =
                table[node.sourceParent].folded ? table[node.sourceParent].parent : node.sourceParent;
    }
    for (size_t i = 0; i < table.size(); i++)
        table[i].children = writtenBelow(static_cast<int>(i));
    return count;
}

std::vector<int> SkeletonPose::writtenBelow(int index) const
{
    std::vector<int> written;
    for (unsigned int c = 0; c < table[index].source->mNumChildren; c++) {
        const int child = indexOf(table[index].source->mChildren[c]);
        if (!table[child].folded) {
            written.push_back(child);
            continue;
        }
        const std::vector<int> below = writtenBelow(child);
        written.insert(written.end(), below.begin(), below.end());
    }
    return written;
}

int SkeletonPose::indexOf(const aiNode* node) const
{
    auto found = byNode.find(node);
    return found == byNode.end() ? -1 : found->second;
}

int SkeletonPose::indexOfName(const aiString& name) const
{
    auto found = bySourceName.find(name.C_Str());
    return found == bySourceName.end() ? -1 : found->second;
}

int SkeletonPose::meshOwner(unsigned int mesh) const
{
    auto found = meshOwners.find(mesh);
    return found == meshOwners.end() ? -1 : found->second;
}

aiMatrix4x4 SkeletonPose::bindLocal(int index) const
{
    const PoseNode& node = table[index];
    return rigidLocal(node.parent < 0 ? aiMatrix4x4() : table[node.parent].bindWorld, node.bindWorld);
}

std::vector<aiMatrix4x4> SkeletonPose::worldsAt(const aiAnimation& animation, double ticks) const
{
    std::vector<aiMatrix4x4> worlds(table.size());
    for (size_t i = 0; i < table.size(); i++) {
        const PoseNode& node = table[i];
        const aiMatrix4x4 local = localAt(node.source, channelOf(animation, node.source->mName), ticks);
        worlds[i] = (node.sourceParent < 0 ? placement : worlds[node.sourceParent]) * local;
    }
    return worlds;
}

std::vector<int> SkeletonPose::drivenNodes(const aiAnimation& animation) const
{
    std::vector<bool> driven(table.size(), false);
    for (size_t i = 0; i < table.size(); i++) {
        if (table[i].folded || (!table[i].bone && !channelOf(animation, table[i].source->mName)))
            continue;
        for (int n = static_cast<int>(i); n >= 0 && !driven[n]; n = table[n].parent)
            driven[n] = true;
    }
    std::vector<int> result;
    for (size_t i = 0; i < table.size(); i++)
        if (driven[i])
            result.push_back(static_cast<int>(i));
    return result;
}

aiMatrix4x4 SkeletonPose::rigid(const aiMatrix4x4& transform)
{
    aiVector3D scaling, position;
    aiQuaternion rotation;
    transform.Decompose(scaling, rotation, position);
    return compose(aiVector3D(1, 1, 1), rotation.Normalize(), position);
}

// Assimp's matrix constructor from scaling, rotation and position scales the
// rotation's rows, which is only right for a uniform scale.
aiMatrix4x4 SkeletonPose::compose(const aiVector3D& scaling, const aiQuaternion& rotation,
                                  const aiVector3D& position)
{
    aiMatrix4x4 translation, scale;
    aiMatrix4x4::Translation(position, translation);
    aiMatrix4x4::Scaling(scaling, scale);
    return translation * aiMatrix4x4(rotation.GetMatrix()) * scale;
}

aiMatrix4x4 SkeletonPose::rigidLocal(const aiMatrix4x4& parentWorld, const aiMatrix4x4& world)
{
    aiMatrix4x4 parent = rigid(parentWorld);
    return parent.Inverse() * rigid(world);
}

aiVector3D SkeletonPose::eulerDegrees(const aiMatrix4x4& r)
{
    const double toDegrees = 180.0 / M_PI;
    const double sinY = std::max(-1.0, std::min(1.0, double(r.a3)));
    double x, z;
    if (std::fabs(sinY) > 0.99999) {
        // Gimbal lock: only x + z (or x - z) is defined; z is set to 0.
        x = std::atan2(r.c2, r.b2);
        z = 0.0;
    } else {
        x = std::atan2(-r.b3, r.c3);
        z = std::atan2(-r.a2, r.a1);
    }
    return aiVector3D(float(x * toDegrees), float(std::asin(sinY) * toDegrees), float(z * toDegrees));
}

aiVector3D SkeletonPose::translation(const aiMatrix4x4& transform)
{
    return aiVector3D(transform.a4, transform.b4, transform.c4);
}
