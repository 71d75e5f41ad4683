// Pixels of a video on the real renderer: a box shows the texture the video
// plays into over the whole window, and the colours read back are the clip's
// own, upright, frame after frame.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <pevrano.h>

#include "scene/scenefixture.h"
#include "video/videofixture.h"

using namespace pvtest;

namespace {

// The colours the clips were made with.
const std::pair<const char*, Rgb> clipColours[] = {{"red", {200 / 255.0, 40 / 255.0, 40 / 255.0}},
                                                   {"green", {40 / 255.0, 180 / 255.0, 60 / 255.0}},
                                                   {"blue", {60 / 255.0, 50 / 255.0, 200 / 255.0}}};

class VideoPixels : public VideoFixture<RecordingTest> {
protected:
    void SetUp() override
    {
        VideoFixture<RecordingTest>::SetUp();
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        // The clip's picture (64 x 48 in the top-left corner of the texture,
        // first row first) stretched over the whole window, drawn blended so
        // that a picture whose alpha were not opaque would not show.
        screen = new PVBOX();
        screen->setSizes(windowWidth, windowHeight);
        screen->setThickness(0);
        screen->setColor(1, 1, 1, 0.999f);
        PVBOXCOORD picture(1.0f, 48.0f / 64.0f, true);
        screen->setBoxCoords(picture);
    }
    void TearDown() override
    {
        PEVRANO::free();
        VideoFixture<RecordingTest>::TearDown();
    }

    // A 64 x 64 texture of that format (3 RGB, 4 RGBA), shown by the screen.
    PVTEXTURE* newTarget(unsigned int format)
    {
        PVTEXTURE* texture = new PVTEXTURE();
        EXPECT_TRUE(texture->create(64, 64, format));
        texture->setFilter(false, false, true);
        screen->setTexture(texture);
        return texture;
    }

    // The clip colour drawn under the picture's row (0 at the top) and
    // column, or the levels read when none is near.
    std::string colourAt(int column, int row)
    {
        const Rgb seen = pixelAt((2 * column + 1) * windowWidth / 128,
                                 windowHeight - 1 - (2 * row + 1) * windowHeight / 96);
        for (const auto& [name, rgb] : clipColours)
            if (colourNear(rgb, seen))
                return name;
        return "(" + std::to_string(int(seen.r * 255)) + "," + std::to_string(int(seen.g * 255)) + "," +
               std::to_string(int(seen.b * 255)) + ")";
    }

    // Draws the screen; the colour at the top of the picture, followed by
    // the one at its bottom when they differ.
    std::string drawnPicture()
    {
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        screen->pass(false);
        PEVRANO::end2D();
        const std::string top = colourAt(5, 8), bottom = colourAt(60, 40);
        return top == bottom ? top : top + " over " + bottom;
    }

    PVBOX* screen = nullptr;
};

// Every clip, broken or not, plays to the end of its file, where it is opened
// again from its start: a looping video goes on, any other stops. The picture
// is drawn after every upload, in an RGB or an RGBA texture: it stands
// upright, and the colours seen over two passes, with repeats folded, follow
// the clip.
TEST_F(VideoPixels, FramesShowUprightInTheirOrderAndEachEndReopensTheClip)
{
    const std::vector<std::string> twice = {"red", "green", "blue", "red", "green", "blue"};
    const struct {
        const char* clip;
        void (PVVIDEO::*start)();
        unsigned int format;
        std::vector<std::string> colours;
    } cases[] = {
        {"bands.mpg", &PVVIDEO::play, 3, {"red over blue"}},
        {"bands.mpg", &PVVIDEO::playLoop, 4, {"red over blue"}},
        {"colours.mpg", &PVVIDEO::play, 3, twice},
        {"colours.mpg", &PVVIDEO::playLoop, 3, twice},
        {"truncated.mpg", &PVVIDEO::play, 3, {"red"}},
        {"corrupted.mpg", &PVVIDEO::play, 3, twice},
        {"corrupted.mpg", &PVVIDEO::rewind, 3, twice},
    };
    for (const auto& c : cases) {
        const bool looping = c.start == &PVVIDEO::playLoop;
        SCOPED_TRACE(std::string(c.clip) + (looping ? " looping" : "") + " format " +
                     std::to_string(c.format));
        PVVIDEO video;
        log.fresh();
        ASSERT_TRUE(video.load(c.clip));
        video.setTexture(newTarget(c.format));
        std::vector<std::string> seen;
        size_t uploads = 0;
        auto look = [&] {
            if (recorder.count("glTexSubImage2D") == uploads)
                return;
            uploads = recorder.count("glTexSubImage2D");
            const std::string colours = drawnPicture();
            if (seen.empty() || seen.back() != colours)
                seen.push_back(colours);
        };
        recorder.start();
        (video.*c.start)();
        const int firstPass = stepsToEnd(video, c.clip, look);
        ASSERT_GT(firstPass, 0);
        EXPECT_EQ(looping ? PV_VIDEO_LOOP : PV_VIDEO_STOP, video.getStatus());
        EXPECT_EQ(looping, video.update(0));
        // Reopened at its start: the next pass is as long as the first.
        (video.*c.start)();
        EXPECT_EQ(firstPass, stepsToEnd(video, c.clip, look));
        recorder.stop();
        EXPECT_EQ(c.colours, seen);
        EXPECT_EQ(loadingLine(c.clip) + loadingLine(c.clip) + loadingLine(c.clip), log.fresh());
    }
}

TEST_F(VideoPixels, EngineShutdownDeletesEveryVideo)
{
    new PVVIDEO();
    PVVIDEO* playing = new PVVIDEO();
    ASSERT_TRUE(playing->load("bands.mpg"));
    playing->setTexture(newTarget(3));  // released before the video
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
