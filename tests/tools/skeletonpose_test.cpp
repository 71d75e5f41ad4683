// The converter's node poses during an animation.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "modelconverter.h"
#include "tools/runtool.h"

namespace {

using pvtest::models;

float largestDifference(const aiMatrix4x4& a, const aiMatrix4x4& b)
{
    float largest = 0;
    for (unsigned int row = 0; row < 4; row++)
        for (unsigned int column = 0; column < 4; column++)
            largest = std::max(largest, std::fabs(a[row][column] - b[row][column]));
    return largest;
}

// These models' first keys repeat the stored transforms of the nodes that
// hold geometry, among them Box02's rotation under a non-uniform scale: at
// time 0 each of them is where the scene puts it.
TEST(SkeletonPose, FirstKeysGiveTheStoredPoseUnderNonUniformScale)
{
    for (const char* model : {"ASE/anim.ASE", "ASE/anim2.ASE"}) {
        SCOPED_TRACE(model);
        Assimp::Importer importer;
        std::string error;
        const aiScene* scene = ModelConverter::importModel(importer, models + model, error);
        ASSERT_NE(scene, nullptr) << error;
        ASSERT_GT(scene->mNumAnimations, 0u);
        const SkeletonPose pose(scene, "HumanoidRoot");
        const std::vector<aiMatrix4x4> worlds = pose.worldsAt(*scene->mAnimations[0], 0);
        for (size_t n = 0; n < worlds.size(); n++) {
            if (pose.nodes()[n].source->mNumMeshes == 0)
                continue;
            EXPECT_LT(largestDifference(worlds[n], pose.nodes()[n].sceneWorld), 1e-3f)
                << pose.nodes()[n].name;
        }
    }
}

}  // namespace
