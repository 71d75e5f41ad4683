// pevrano-view off-screen: the screenshot shows the converted model framed in
// the middle of the background, and an animation moves it.

#include <cstdlib>

#include "tools/runtool.h"

namespace {

using pvtest::Picture;

// The viewer's background, (0.2, 0.25, 0.3), through a 5-6-5 surface.
const unsigned char background[3] = {51, 64, 77};

// Two colours the same to within the 5-6-5 surface's precision.
bool same(const unsigned char* a, const unsigned char* b)
{
    for (int c = 0; c < 3; c++)
        if (std::abs(a[c] - b[c]) > 9)
            return false;
    return true;
}

// The number of pixels of a screenshot, by their offset i into its rgb, for
// which test(i) holds.
template <class Test> int countPixels(Test test)
{
    int count = 0;
    for (size_t i = 0; i < 160 * 120 * 3; i += 3)
        count += test(i);
    return count;
}

class Viewer : public pvtest::RecordingTest {
protected:
    void convert(const std::string& model, const std::string& scene, const std::string& options = "")
    {
        const pvtest::ToolRun run = pvtest::convertModel(model, scene, dir, options);
        ASSERT_EQ(run.status, 0) << run.error;
    }
    // The 160 x 120 screenshot of the viewer run with arguments.
    Picture view(const std::string& arguments)
    {
        const pvtest::ToolRun run = pvtest::runTool("env -u DISPLAY " PEVRANO_VIEW,
                                                    arguments + " --size 160x120 --screenshot shot.png", dir);
        EXPECT_EQ(run.status, 0) << run.error;
        Picture shot = pvtest::readPicture(dir.file("tool-run/shot.png"));
        EXPECT_EQ((std::vector<int> {160, 120}), (std::vector<int> {shot.width, shot.height}));
        shot.rgb.resize(160 * 120 * 3);  // a missing screenshot reads as black
        return shot;
    }
    static int modelPixels(const Picture& shot)
    {
        return countPixels([&](size_t i) { return !same(&shot.rgb[i], background); });
    }
};

TEST_F(Viewer, ScreenshotShowsTheModelInTheMiddleAndMissingFilesAreRefused)
{
    convert("Collada/duck.dae", "duck.pve");
    const Picture picture = view(dir.file("duck.pve") + " --frames 3");
    // Framed: the duck covers a good part of the picture without filling it.
    EXPECT_GT(modelPixels(picture), 160 * 120 / 10);
    EXPECT_LT(modelPixels(picture), 160 * 120 * 8 / 10);
    // The duck is yellow: red and green well above blue in the middle.
    const unsigned char* middle = &picture.rgb[(60 * 160 + 80) * 3];
    EXPECT_GT(middle[0], middle[2] + 40);
    EXPECT_GT(middle[1], middle[2] + 40);

    const std::string refusals[][2] = {
        {dir.file("none.pve"), "scene file " + dir.file("none.pve")},
        {dir.file("duck.pve") + " --anim " + dir.file("none.pva"), "animation file " + dir.file("none.pva")}};
    for (const auto& refusal : refusals) {
        const pvtest::ToolRun run = pvtest::runTool("env -u DISPLAY " PEVRANO_VIEW, refusal[0], dir);
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.error, "pevrano-view: cannot load the " + refusal[1] + "\n");
    }
}

TEST_F(Viewer, AnimationMovesTheModel)
{
    convert("X/Testwuson.X", "wuson.pve");
    const std::string base = dir.file("wuson.pve") + " --anim " + dir.file("wuson_0_Wuson_Run.pva");
    const Picture first = view(base + " --frames 1"), later = view(base + " --frames 8");
    EXPECT_FALSE(same(&first.rgb[(60 * 160 + 80) * 3], background));
    auto moved = [&](size_t i) { return same(&first.rgb[i], background) != same(&later.rgb[i], background); };
    EXPECT_GT(countPixels(moved), 50);
}

// The spider's legs reach 10,000 units from its centre: framed as it is, the
// camera would sit 37,000 units away, beyond the fixed-point range. The
// viewer shows it as it shows the same spider a thousand times smaller.
TEST_F(Viewer, LargeModelsLookLikeSmallOnes)
{
    convert("FBX/spider.fbx", "small.pve", "--scale 0.001");
    convert("FBX/spider.fbx", "large.pve");
    const Picture expected = view(dir.file("small.pve") + " --frames 2");
    const Picture large = view(dir.file("large.pve") + " --frames 2");
    const int model = modelPixels(expected);
    EXPECT_GT(model, 160 * 120 / 20);
    EXPECT_LT(countPixels([&](size_t i) { return !same(&large.rgb[i], &expected.rgb[i]); }), model / 50)
        << "of " << model;
}

}  // namespace
