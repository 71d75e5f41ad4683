// pevrano-view off-screen: the screenshot shows the converted model framed in
// the middle of the background, and an animation moves it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/glfixture.h"
#include "tools/runtool.h"

namespace {

// The viewer's background, (0.2, 0.25, 0.3), through a 5-6-5 surface.
const int background[3] = {51, 64, 77};
const int tolerance = 9;

using pvtest::Picture;

bool isBackground(const Picture& picture, int x, int y)
{
    for (int c = 0; c < 3; c++)
        if (std::abs(picture.rgb[(size_t(y) * picture.width + x) * 3 + c] - background[c]) > tolerance)
            return false;
    return true;
}

class Viewer : public pvtest::RecordingTest {
protected:
    void convert(const std::string& model, const std::string& scene, const std::string& options = "")
    {
        const pvtest::ToolRun run = pvtest::convertModel(model, scene, dir, options);
        ASSERT_EQ(run.status, 0) << run.error;
    }
    Picture view(const std::string& arguments)
    {
        const pvtest::ToolRun run =
            pvtest::runTool("env -u DISPLAY " PEVRANO_VIEW, arguments + " --size 160x120", dir);
        EXPECT_EQ(run.status, 0) << run.error;
        return pvtest::readPicture(dir.file("shot.png"));
    }
};

TEST_F(Viewer, ScreenshotShowsTheModelInTheMiddleAndMissingFilesAreRefused)
{
    convert("Collada/duck.dae", "duck.pve");
    const Picture picture = view(dir.file("duck.pve") + " --frames 3 --screenshot " + dir.file("shot.png"));
    ASSERT_EQ(picture.width, 160);
    ASSERT_EQ(picture.height, 120);
    int model = 0;
    for (int y = 0; y < 120; y++)
        for (int x = 0; x < 160; x++)
            model += !isBackground(picture, x, y);
    // Framed: the duck covers a good part of the picture without filling it.
    EXPECT_GT(model, 160 * 120 / 10);
    EXPECT_LT(model, 160 * 120 * 8 / 10);
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
    const std::string base = dir.file("wuson.pve") + " --anim " + dir.file("wuson_0_Wuson_Run.pva") +
                             " --screenshot " + dir.file("shot.png");
    const Picture first = view(base + " --frames 1");
    const Picture later = view(base + " --frames 8");
    ASSERT_EQ(first.rgb.size(), later.rgb.size());
    EXPECT_FALSE(isBackground(first, 80, 60));
    int changed = 0;
    for (int y = 0; y < 120; y++)
        for (int x = 0; x < 160; x++)
            changed += isBackground(first, x, y) != isBackground(later, x, y);
    EXPECT_GT(changed, 50);
}

// The spider's legs reach 10,000 units from its centre: framed as it is, the
// camera would sit 37,000 units away, beyond the fixed-point range. The
// viewer shows it as it shows the same spider a thousand times smaller.
TEST_F(Viewer, LargeModelsLookLikeSmallOnes)
{
    convert("FBX/spider.fbx", "small.pve", "--scale 0.001");
    convert("FBX/spider.fbx", "large.pve");
    const std::string options = " --frames 2 --screenshot " + dir.file("shot.png");
    const Picture expected = view(dir.file("small.pve") + options);
    const Picture large = view(dir.file("large.pve") + options);
    ASSERT_EQ(large.rgb.size(), expected.rgb.size());
    int model = 0, different = 0;
    for (size_t i = 0; i < expected.rgb.size(); i += 3) {
        model += !isBackground(expected, int(i / 3 % 160), int(i / 3 / 160));
        bool far = false;
        for (int c = 0; c < 3; c++)
            far = far || std::abs(large.rgb[i + c] - expected.rgb[i + c]) > tolerance;
        different += far;
    }
    EXPECT_GT(model, 160 * 120 / 20);
    EXPECT_LT(different, model / 50) << "of " << model;
}

}  // namespace
