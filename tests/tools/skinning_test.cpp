// Converted skinned characters move as their source models say: at several
// frames of each animation, the vertices the engine's skinning computes from
// the converted files match those computed from Assimp's scene of the source
// (bone world transforms at the same time, offset matrices, weights).

#include <algorithm>
#include <iterator>

#include "tools/runtool.h"

namespace {

using pvtest::models;
const int framesPerSecond = 24;

// Key value at ticks: linear between the keys around it, held outside them.
template <class Key, class Value, class Blend>
Value keyAt(const Key* keys, unsigned int count, double ticks, Value rest, Blend blend)
{
    if (count == 0)
        return rest;
    const Key* after =
        std::upper_bound(keys, keys + count, ticks, [](double t, const Key& k) { return t < k.mTime; });
    if (after == keys)
        return keys[0].mValue;
    if (after == keys + count)
        return keys[count - 1].mValue;
    const Key* before = after - 1;
    return blend(before->mValue, after->mValue,
                 float((ticks - before->mTime) / (after->mTime - before->mTime)));
}

aiMatrix4x4 animatedLocal(const aiNode* node, const aiAnimation& animation, double ticks)
{
    for (unsigned int c = 0; c < animation.mNumChannels; c++) {
        const aiNodeAnim* channel = animation.mChannels[c];
        if (channel->mNodeName != node->mName)
            continue;
        aiVector3D scale, position;
        aiQuaternion rotation;
        node->mTransformation.Decompose(scale, rotation, position);
        auto lerp = [](const aiVector3D& a, const aiVector3D& b, float t) { return a + (b - a) * t; };
        auto slerp = [](const aiQuaternion& a, const aiQuaternion& b, float t) {
            aiQuaternion out;
            aiQuaternion::Interpolate(out, a, b, t);
            return out.Normalize();
        };
        // Scale first, then turn, then move (Assimp's matrix constructor scales
        // the turned axes, right only for a uniform scale).
        aiMatrix4x4 translation, scaling;
        aiMatrix4x4::Translation(
            keyAt(channel->mPositionKeys, channel->mNumPositionKeys, ticks, position, lerp), translation);
        aiMatrix4x4::Scaling(keyAt(channel->mScalingKeys, channel->mNumScalingKeys, ticks, scale, lerp),
                             scaling);
        const aiQuaternion turn =
            keyAt(channel->mRotationKeys, channel->mNumRotationKeys, ticks, rotation, slerp);
        return translation * aiMatrix4x4(turn.GetMatrix()) * scaling;
    }
    return node->mTransformation;
}

aiMatrix4x4 worldAt(const aiNode* node, const aiAnimation& animation, double ticks)
{
    const aiMatrix4x4 local = animatedLocal(node, animation, ticks);
    return node->mParent ? worldAt(node->mParent, animation, ticks) * local : local;
}

// Linear-blend skinning of the source mesh, in world space. Some sources'
// weights do not sum to 1; the converted files carry them renormalised, so
// the sum here is divided by the vertex's total weight.
std::vector<aiVector3D> sourcePositions(const aiScene* scene, const aiMesh* mesh,
                                        const aiAnimation& animation, double ticks)
{
    std::vector<aiVector3D> positions(mesh->mNumVertices, aiVector3D(0, 0, 0));
    std::vector<float> totals(mesh->mNumVertices, 0.0f);
    for (unsigned int b = 0; b < mesh->mNumBones; b++) {
        const aiBone* bone = mesh->mBones[b];
        const aiMatrix4x4 skin =
            worldAt(scene->mRootNode->FindNode(bone->mName), animation, ticks) * bone->mOffsetMatrix;
        for (unsigned int w = 0; w < bone->mNumWeights; w++) {
            const aiVertexWeight& weight = bone->mWeights[w];
            positions[weight.mVertexId] += (skin * mesh->mVertices[weight.mVertexId]) * weight.mWeight;
            totals[weight.mVertexId] += weight.mWeight;
        }
    }
    for (size_t v = 0; v < positions.size(); v++)
        if (totals[v] > 0)
            positions[v] /= totals[v];
    return positions;
}

using SkinnedModels = pvtest::RecordingTest;

TEST_F(SkinnedModels, EngineSkinningFollowsTheSourceAnimation)
{
    const struct {
        const char* model;
        unsigned int animation;
        float scale;  // of the converted model
    } cases[] = {{"X/Testwuson.X", 0, 1},
                 {"X/Testwuson.X", 1, 0.25f},
                 {"X/BCN_Epileptic.X", 0, 1},
                 {"Collada/box_nested_animation.dae", 0, 1},
                 {"glTF2/simple_skin/simple_skin.gltf", 0, 3},
                 {"FBX/huesitos.fbx", 0, 1}};
    PVSETTINGS settings;
    ASSERT_TRUE(PEVRANO::init(&settings)) << log.text();
    PVCAMERA* camera = new PVCAMERA();  // the engine deletes its nodes at shut-down
    for (size_t i = 0; i < std::size(cases); i++) {
        const auto& c = cases[i];
        SCOPED_TRACE(std::string(c.model) + " animation " + std::to_string(c.animation));
        Assimp::Importer importer;
        const aiScene* scene = pvtest::importSource(importer, models + c.model);
        const aiAnimation& animation = *scene->mAnimations[c.animation];

        const std::string name = "skin" + std::to_string(i) + ".pve";
        const std::string options =
            "--fps " + std::to_string(framesPerSecond) + " --scale " + std::to_string(c.scale);
        PVNODE* root = pvtest::convertAndLoad(c.model, name, dir, options);
        ASSERT_NE(root, nullptr);
        PVANIM anim;
        std::string pva = ModelConverter::animationFileName(dir.file(name), animation, c.animation);
        ASSERT_TRUE(anim.load(&pva[0]));
        anim.setTranslating(true);

        // Skinned meshes follow the model's tree below the root, in source order.
        std::vector<const aiMesh*> skins;
        for (unsigned int m = 0; m < scene->mNumMeshes; m++)
            if (scene->mMeshes[m]->HasBones())
                skins.push_back(scene->mMeshes[m]);
        ASSERT_EQ(root->getNumberOfChildren(), 1 + skins.size());

        const unsigned int last = anim.getNumberOfFrames() - 1;
        for (unsigned int frame : {0u, last / 3, 2 * last / 3, last}) {
            SCOPED_TRACE("frame " + std::to_string(frame));
            ASSERT_TRUE(anim.apply(frame, root));
            // One 3D frame: the render list fills the skeletons and skins the meshes.
            PEVRANO::begin3D(camera);
            root->pass(false);
            PEVRANO::end3D(false);
            const double ticks =
                frame * (animation.mTicksPerSecond > 0 ? animation.mTicksPerSecond : 25.0) / framesPerSecond;
            for (size_t s = 0; s < skins.size(); s++) {
                PVMESH* mesh = static_cast<PVMESH*>(root->getChild(1 + s));
                ASSERT_EQ(mesh->getNumberOfVertices(), skins[s]->mNumVertices);
                const std::vector<aiVector3D> expected = sourcePositions(scene, skins[s], animation, ticks);
                float size = 0, worst = 0;
                for (size_t v = 0; v < expected.size(); v++) {
                    const aiVector3D engine = pvtest::vectorAt(mesh->getSkinnedVertexPtr(), v);
                    size = std::max(size, expected[v].Length() * c.scale);
                    worst = std::max(worst, (engine - expected[v] * c.scale).Length());
                }
                // The engine's 16.16 arithmetic (bone matrices, vertices, weights) and the float products
                // of both sides agree to a share of the model's size, plus the fixed-point step itself.
                EXPECT_LE(worst, size * 2e-4f + 5e-4f) << "mesh " << s;
            }
        }
    }
    PEVRANO::free();
}

}  // namespace
