// Pixels of a video on the real renderer: a box shows the texture the video
// plays into over the whole window, and the colours read back are the clip's
// own, upright, frame after frame.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <cmath>
#include <string>
#include <vector>

#include <pevrano.h>

#include "scene/scenefixture.h"
#include "video/videofixture.h"

using namespace pvtest;

namespace {

// A 5-6-5 surface loses up to 8 levels per channel; 4:2:0 decoding and the
// conversion to RGB add a few more.
const double videoTolerance = 12.0;

struct NamedColour {
    const char* name;
    Rgb rgb;
};

// The colours the clips were made with.
const NamedColour clipColours[] = {{"red", {200 / 255.0, 40 / 255.0, 40 / 255.0}},
                                   {"green", {40 / 255.0, 180 / 255.0, 60 / 255.0}},
                                   {"blue", {60 / 255.0, 50 / 255.0, 200 / 255.0}}};

class VideoPixels : public VideoFixture<RecordingTest> {
protected:
    void SetUp() override
    {
        VideoFixture<RecordingTest>::SetUp();
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        texture = new PVTEXTURE();
        ASSERT_TRUE(texture->create(64, 64, 3));
        texture->setFilter(false, false, true);
        // The clip's picture (64 x 48 in the top-left corner of the texture,
        // first row first) stretched over the whole window.
        screen = new PVBOX();
        screen->setSizes(windowWidth, windowHeight);
        screen->setThickness(0);
        screen->setColor(1, 1, 1, 1);
        screen->setTexture(texture);
        PVBOXCOORD picture(1.0f, 48.0f / 64.0f, true);
        screen->setBoxCoords(picture);
    }
    void TearDown() override
    {
        PEVRANO::free();
        VideoFixture<RecordingTest>::TearDown();
    }

    void drawFrame()
    {
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        screen->pass(false);
        PEVRANO::end2D();
    }

    // The window pixel under the picture's row (0 at the top) and column.
    static Rgb pictureAt(int column, int row)
    {
        return pixelAt((2 * column + 1) * windowWidth / 128,
                       windowHeight - 1 - (2 * row + 1) * windowHeight / 96);
    }

    // The clip colour seen, or the levels read when none is near.
    static std::string nameOf(Rgb seen)
    {
        auto near = [](double wanted, double got) {
            return std::abs(wanted - got) * 255.0 <= videoTolerance;
        };
        for (const NamedColour& colour : clipColours)
            if (near(colour.rgb.r, seen.r) && near(colour.rgb.g, seen.g) && near(colour.rgb.b, seen.b))
                return colour.name;
        return "(" + std::to_string(int(seen.r * 255)) + "," + std::to_string(int(seen.g * 255)) + "," +
               std::to_string(int(seen.b * 255)) + ")";
    }

    PVTEXTURE* texture = nullptr;
    PVBOX* screen = nullptr;
};

// In an RGB or an RGBA texture alike; the box is drawn blended, so that a
// picture whose alpha were not opaque would not show.
TEST_F(VideoPixels, PictureLandsUprightWithItsFirstRowAtTheTop)
{
    for (unsigned int format : {3u, 4u}) {
        PVTEXTURE* target = new PVTEXTURE();
        ASSERT_TRUE(target->create(64, 64, format));
        target->setFilter(false, false, true);
        screen->setTexture(target);
        screen->setColor(1, 1, 1, 0.999f);
        PVVIDEO video;
        ASSERT_TRUE(video.load("bands.mpg"));
        video.setTexture(target);
        video.play();
        ASSERT_GT(stepsToEnd(video, "bands.mpg"), 0);
        drawFrame();
        const std::vector<std::string> rows = {nameOf(pictureAt(5, 8)), nameOf(pictureAt(32, 24)),
                                               nameOf(pictureAt(60, 40))};
        EXPECT_EQ((std::vector<std::string> {"red", "green", "blue"}), rows) << "format " << format;
    }
}

// The picture is drawn after every upload; the colours seen, with repeats
// folded, follow the clip (again from its start when looping).
TEST_F(VideoPixels, FramesShowInTheirOrder)
{
    const struct {
        const char* clip;
        void (PVVIDEO::*start)();
        int passes;
        std::vector<std::string> colours;
    } cases[] = {
        {"colours.mpg", &PVVIDEO::play, 1, {"red", "green", "blue"}},
        {"colours.mpg", &PVVIDEO::playLoop, 2, {"red", "green", "blue", "red", "green", "blue"}},
        {"truncated.mpg", &PVVIDEO::play, 1, {"red"}},
        {"corrupted.mpg", &PVVIDEO::play, 1, {"red", "green", "blue"}},
    };
    for (const auto& c : cases) {
        PVVIDEO video;
        ASSERT_TRUE(video.load(c.clip));
        video.setTexture(texture);
        (video.*c.start)();
        std::vector<std::string> seen;
        recorder.start();
        const size_t loadsBefore = occurrences(log.text(), loadingLine(c.clip));
        for (int step = 0;
             step < 1000 && occurrences(log.text(), loadingLine(c.clip)) < loadsBefore + c.passes; step++) {
            const size_t uploads = recorder.count("glTexSubImage2D");
            video.update(1);
            if (recorder.count("glTexSubImage2D") == uploads)
                continue;
            drawFrame();
            const std::string colour = nameOf(pictureAt(32, 24));
            if (seen.empty() || seen.back() != colour)
                seen.push_back(colour);
        }
        recorder.stop();
        EXPECT_EQ(c.colours, seen) << c.clip;
    }
}

TEST_F(VideoPixels, EngineShutdownDeletesEveryVideo)
{
    new PVVIDEO();
    PVVIDEO* playing = new PVVIDEO();
    ASSERT_TRUE(playing->load("bands.mpg"));
    playing->setTexture(texture);  // released before the video
    playing->play();
    EXPECT_TRUE(playing->update(3));
    log.fresh();
    PEVRANO::free();
    const std::string shutdown = log.fresh();
    // Counted like every other class, after the textures; none left, no line.
    EXPECT_EQ(1u, occurrences(shutdown, "\n   2 video(s) released\n"));
    EXPECT_LT(shutdown.find(" texture(s) released\n"), shutdown.find(" video(s) released\n"));
    EXPECT_FALSE(PVVIDEO::cleanUp());
    EXPECT_EQ("", log.fresh());
}

}  // namespace
