// pevrano-convert as a user runs it: options, refusals, textures and
// animation files, read back through the engine's own loaders.

#include <cmath>
#include <iterator>

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

// Unreadable input, or a model the engine could not hold, ends with status 1
// and nothing written; what the engine cannot keep is left out with a warning,
// and the rest is written. One message each, as convert-messages.log lists.
TEST_F(Converter, RefusesOrWarnsAboutWhatItCannotConvert)
{
    const std::string converting = PEVRANO_TEST_DATA "/convert/";
    const struct {
        std::string input;
        int status;
    } cases[] = {
        {dir.file("missing.obj"), 1},
        {converting + "not_a_model.dae", 1},
        {converting + "truncated.stl", 1},
        {models + "X/anim_test.x", 1},
        {models + "OBJ/testpoints.obj", 1},
        {models + "PLY/points.ply", 1},
        {models + "Collada/cameras.dae", 1},
        {converting + "animated_chain.gltf", 1},  // 31 animated links and the tip: one level too many
        {models + "Collada/anims_with_full_rotations_between_keys.DAE", 1},
        {models + "glTF2/glTF-Sample-Models/AnimatedMorphCube-glTF/AnimatedMorphCube.gltf", 0},
        {models + "glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb", 0},
    };
    std::string messages;
    for (size_t i = 0; i < std::size(cases); i++) {
        SCOPED_TRACE(cases[i].input);
        const std::string output = dir.file(std::to_string(i) + ".pve");
        // Assimp leaks on some broken files: under AddressSanitizer the leak
        // report would join the messages.
        const pvtest::ToolRun result = pvtest::runTool(
            "ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 " PEVRANO_CONVERT, cases[i].input + " " + output, dir);
        EXPECT_EQ(result.status, cases[i].status);
        EXPECT_EQ(result.output, result.status ? "" : "wrote " + output + "\n");
        EXPECT_EQ(pvtest::readFile(output).empty(), result.status != 0);
        messages += result.error;
    }
    pvtest::expectLog(messages, pvtest::readLogLines(PEVRANO_TEST_DATA "/expected/convert-messages.log"));
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
