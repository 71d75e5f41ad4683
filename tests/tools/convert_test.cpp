// pevrano-convert as a user runs it: options, refusals, textures and
// animation files, read back through the engine's own loaders.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "assets/pvanim.h"
#include "assets/pvtexture.h"
#include "modelconverter.h"
#include "support/glfixture.h"
#include "tools/runtool.h"

namespace {

using pvtest::models;

class Converter : public pvtest::RecordingTest {
protected:
    pvtest::ToolRun convert(const std::string& arguments)
    {
        return pvtest::runTool(PEVRANO_CONVERT, arguments, dir);
    }
};

TEST_F(Converter, HelpListsTheOptions)
{
    const pvtest::ToolRun help = convert("--help"), badRate = convert("--fps 0 a b");
    EXPECT_EQ(help.status, 0);
    // The help alone: the engine's start-up lines stay in its log.
    EXPECT_EQ(help.output.find("usage: pevrano-convert [options] <model> <output.pve>\n"), 0u) << help.output;
    EXPECT_EQ(badRate.status, 2);
    EXPECT_NE(badRate.error.find("bad argument '--fps'"), std::string::npos);
    EXPECT_EQ(convert("only-one-name").status, 2);
}

// Unreadable input, or a model the engine could not hold, ends with a
// message and status 1, and nothing is written.
TEST_F(Converter, RefusesWhatItCannotConvert)
{
    const std::string cases[][2] = {
        {dir.file("missing.obj"), "pevrano-convert: cannot read '" + dir.file("missing.obj") + "': "},
        {PEVRANO_TEST_DATA "/convert/not_a_model.dae", "pevrano-convert: cannot read '"},
        {PEVRANO_TEST_DATA "/convert/truncated.stl", "pevrano-convert: cannot read '"},
        {models + "X/anim_test.x", "': mesh 'pCylinder1' names bone 'joint3' that no node has\n"},
        {models + "OBJ/testpoints.obj",
         "': No meshes remaining: the model's points and lines are dropped, the "
         "engine draws only triangles\n"},
        {models + "PLY/points.ply",
         "': Validation failed: Mesh  contains no faces: points are not converted, "
         "the engine draws only triangles\n"},
        {models + "Collada/cameras.dae",
         "': the model holds 3 cameras, 0 lights and no geometry; cameras and "
         "lights are not converted\n"},
        // 31 animated links and the tip: one level more than the engine draws.
        {PEVRANO_TEST_DATA "/convert/animated_chain.gltf",
         "': the tree is 32 levels deep (node 'tip') even with the nodes that carry no geometry and no "
         "animation folded away; the engine draws at most 31 levels\n"},
        {models + "Collada/anims_with_full_rotations_between_keys.DAE",
         "': the tree is 66 levels deep (node 'Box064-Pivot') even with the nodes that carry no "
         "geometry and no animation folded away; the engine draws at most 31 levels\n"},
    };
    for (const auto& [input, message] : cases) {
        SCOPED_TRACE(input);
        const pvtest::ToolRun refusal = convert(input + " " + dir.file("out.pve"));
        EXPECT_EQ(refusal.status, 1);
        EXPECT_NE(refusal.error.find(message), std::string::npos) << refusal.error;
        EXPECT_EQ(pvtest::readFile(dir.file("out.pve")), "");
    }
}

// What the engine cannot keep is left out or kept with a warning; the model
// is converted all the same.
TEST_F(Converter, WarnsAboutWhatItCannotKeep)
{
    const std::string cases[][2] = {
        {"glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf",
         "animation 0 'Square' is not converted: it changes mesh shapes (morph targets or mesh replacement), "
         "which the engine's animations cannot"},
        {"glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb",
         "the model has coordinates that are not finite numbers (node 'nodes_1'), which the engine cannot "
         "place"},
    };
    for (const auto& [model, warning] : cases) {
        SCOPED_TRACE(model);
        const pvtest::ToolRun result = convert(models + model + " " + dir.file("model.pve"));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.error, "pevrano-convert: warning: " + warning + "\n");
        EXPECT_EQ(result.output, "wrote " + dir.file("model.pve") + "\n");
    }
}

// A damaged file whose counts make Assimp ask for 16 GB stops at once at the
// converter's memory limit. The shell's own, higher limit keeps a converter
// that sets none from taking the machine's memory (Assimp then says only
// std::bad_alloc).
TEST_F(Converter, StopsAtItsMemoryLimit)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the converter sets no limit under AddressSanitizer";
#endif
    const std::string model = models + "invalid/OutOfMemory.off";
    const pvtest::ToolRun result =
        pvtest::runTool("ulimit -v 5242880 && " PEVRANO_CONVERT, model + " x.pve", dir);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error,
              "pevrano-convert: cannot read '" + model +
                  "': the conversion needs more than its memory limit of 4096 MB (--memory-limit)\n");
}

// The duck's 512 × 512 TGA becomes a 256 × 256 one the engine reads; its
// colours are the source's, averaged.
TEST_F(Converter, TexturesShrinkToWhatTheEngineReads)
{
    convert(models + "Collada/duck.dae " + dir.file("duck.pve"));
    PVTEXTURE texture;
    ASSERT_TRUE(texture.load(dir.file("duck_0.tga").c_str())) << log.text();
    ASSERT_EQ((std::vector<unsigned int> {256, 256, 3}),
              (std::vector<unsigned int> {texture.getSizeX(), texture.getSizeY(), texture.getFormat()}));
    const pvtest::Picture source = pvtest::readPicture(models + "Collada/duckCM.tga");
    ASSERT_EQ(source.rgb.size(), 512 * 512 * 3u);
    double difference = 0;
    for (int i = 0; i < 256 * 256 * 3; i++) {
        // The bitmap holds the bottom row first, the decoded source the top row.
        const int x = i / 3 % 256, sourceRow = 511 - 2 * (i / 768), c = i % 3;
        double expected = 0;
        for (int d = 0; d < 4; d++)
            expected += source.rgb[((sourceRow - d / 2) * 512 + 2 * x + d % 2) * 3 + c] / 4.0;
        difference += std::fabs(texture.getBitmap()[i] - expected);
    }
    EXPECT_LT(difference / (256 * 256 * 3), 1.0);
}

// One animation file per animation, named after it, with every frame of its
// duration resampled at the given rate.
TEST_F(Converter, AnimationsAreResampledAtTheGivenRate)
{
    ASSERT_EQ(convert("--fps 10 " + models + "X/Testwuson.X " + dir.file("wuson.pve")).status, 0);
    Assimp::Importer importer;
    const aiScene* scene = pvtest::importSource(importer, models + "X/Testwuson.X");
    std::vector<unsigned int> expected, frames;
    for (std::string file : {"wuson_0_Wuson_Run.pva", "wuson_1_Wuson_Walk.pva", "wuson_2_Wuson_Bind.pva"}) {
        const aiAnimation* source = scene->mAnimations[expected.size()];
        expected.push_back(unsigned(std::floor(source->mDuration / source->mTicksPerSecond * 10 + 1e-6)) + 1);
        PVANIM anim;
        EXPECT_TRUE(anim.load(&file[0])) << file;
        frames.push_back(anim.getNumberOfFrames());
    }
    EXPECT_EQ(expected, frames);
}

}  // namespace
