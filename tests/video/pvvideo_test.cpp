// The video class on its own: load outcomes with their whole log, the
// registry, the play states through the end of each clip (good, truncated and
// corrupted), and the GL calls of the frame upload for each kind of texture.
#include <gtest/gtest.h>

#include <GLES/gl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <pevrano.h>

#include "video/videofixture.h"

using namespace pvtest;

namespace {

size_t openFileCount()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return size_t(std::distance(begin(files), end(files)));
}

using VideoTest = VideoFixture<RecordingTest>;
using VideoGlTest = VideoFixture<GlContextTest>;

const std::string notFound = "   [!] Invalid params or file not found @ PVVIDEO::load\n";

// bands.mpg takes 11 parse steps from loading to the empty read at its end:
// the first read, sequence, group, three pictures with a slice each, the end
// code, and the read that finds nothing more.
const int bandsSteps = 11;

// A name fits the video's 255 characters or is refused where it is given, so
// that a looping film never reopens a cut name; the same for the path.
TEST_F(VideoTest, LoadReportsEachOutcome)
{
    ASSERT_EQ(0, mkdir("folder", 0755));
    const std::string longest = "folder/" + std::string(244, 'n') + ".mpg",
                      tooLong = "folder/n" + longest.substr(7);
    for (const std::string& name : {longest, tooLong})
        writeFile(name, readFile(PEVRANO_VIDEO_DATA "bands.mpg"));
    const struct {
        const char* what;
        const char* path;
        const char* name;
        bool loaded;
        std::string log;
    } cases[] = {
        {"clip under the video path", PEVRANO_VIDEO_DATA, "bands.mpg", true, loadingLine("bands.mpg")},
        {"missing file", PEVRANO_VIDEO_DATA, "absent.mpg", false, notFound},
        {"null name", PEVRANO_VIDEO_DATA, nullptr, false, notFound},
        {"clip name without its path", "", "bands.mpg", false, notFound},
        {"directory", "", "folder", false,
         loadingLine("folder") + "   [!] Unable to open file folder @ PVVISIO::load\n"},
        {"name of 255 characters", "", longest.c_str(), true, loadingLine(longest)},
        {"name of 256 characters", "", tooLong.c_str(), false, notFound},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const size_t files = openFileCount();
        auto video = std::make_unique<PVVIDEO>();
        const std::string defaultName = "[video " + std::to_string(video->getId()) + "]";
        PVVIDEO::setMPGPath(c.path);
        log.fresh();
        EXPECT_EQ(c.loaded, video->load(c.name));
        EXPECT_EQ(c.log, log.fresh());
        EXPECT_EQ(c.loaded ? std::string(c.name) : defaultName, video->getFilename());
        EXPECT_EQ(PV_VIDEO_STOP, video->getStatus());
        EXPECT_EQ(c.loaded ? video.get() : nullptr, PVVIDEO::findByFilename(c.name));
        EXPECT_FALSE(video->update(100)) << "nothing decodes until play";
        video->playLoop();
        // A never-loaded video does not decode; a loop goes on through several ends in one update.
        EXPECT_EQ(c.loaded, video->update(3 * bandsSteps));
        EXPECT_EQ(c.loaded ? c.log + c.log + c.log : "", log.fresh());
        EXPECT_EQ(PV_VIDEO_LOOP, video->getStatus());
        // One file open while loaded, through its reopenings; deleting the video closes it.
        EXPECT_EQ(files + c.loaded, openFileCount());
        video.reset();
        EXPECT_EQ(files, openFileCount());
    }
    const std::string path(255, '/');
    PVVIDEO::setMPGPath(path.c_str());
    PVVIDEO::setMPGPath((path + "/").c_str());
    EXPECT_EQ(path, PVVIDEO::getMPGPath());
    EXPECT_EQ("   [!] Invalid params @ PVVIDEO::setMPGPath\n", log.fresh());
}

// A stop keeps the place in the clip. A rewind waits for an update that finds
// the last read empty, which only a failed reopening at the end leaves
// behind; it then loads the file again.
TEST_F(VideoTest, RewindReloadsAfterAFailedReopening)
{
    const std::string clip = readFile(PEVRANO_VIDEO_DATA "bands.mpg");
    writeFile("clip.mpg", clip);
    PVVIDEO::setMPGPath("");
    PVVIDEO video;
    ASSERT_TRUE(video.load("clip.mpg"));
    video.play();
    EXPECT_TRUE(video.update(4));
    video.stop();
    EXPECT_FALSE(video.update(100)) << "stopped";
    video.rewind();
    EXPECT_TRUE(video.update(bandsSteps - 5)) << "decodes like play";
    ASSERT_EQ(0, unlink("clip.mpg"));
    log.fresh();
    EXPECT_FALSE(video.update(1)) << "end of the file, reopening fails";
    EXPECT_EQ(PV_VIDEO_REWIND, video.getStatus());
    EXPECT_FALSE(video.update(1)) << "rewind finds no file";
    writeFile("clip.mpg", clip);
    EXPECT_TRUE(video.update(1)) << "rewind loads the file again";
    EXPECT_EQ(notFound + notFound + loadingLine("clip.mpg"), log.fresh());
    EXPECT_EQ(PV_VIDEO_STOP, video.getStatus());
}

// bands.mpg shows three pictures (64 x 48). Each lands in a resident RGB or
// RGBA texture at least as large (bound, then uploaded); any other texture is
// left alone, without a GL error, and a video without texture decodes to the
// end without GL. Broken streams whose ends offer frame buffers that hold no
// picture (a picture whose slice decoded nothing, followed by the end code or
// by a sequence of another size; an end after a new sequence began, when the
// first sequence's buffers are gone) upload only the whole pictures the
// decoder still holds. An upload binds behind the bind cache's back: the
// texture shown before is bound again when next rendered.
TEST_F(VideoGlTest, FramesUploadOnlyIntoATextureThatHoldsThem)
{
    PVVIDEO::setMPGPath("");
    PVTEXTURE shown;
    ASSERT_TRUE(shown.create(64, 64, 3));
    const std::string bands = PEVRANO_VIDEO_DATA "bands.mpg", crashes = PEVRANO_MPEG_CRASHES;
    const struct {
        std::string clip;
        unsigned int sizeX, sizeY;  // 0: no texture
        bool resident;
        size_t uploads;
    } cases[] = {
        {bands, 64, 64, true, 3},
        {bands, 64, 48, true, 3},
        {bands, 32, 64, true, 0},
        {bands, 64, 32, true, 0},
        {bands, 64, 64, false, 0},
        {bands, 0, 0, true, 0},
        {crashes + "empty-picture-then-end.mpg", 64, 64, true, 0},
        {crashes + "empty-picture-then-new-size.mpg", 64, 64, true, 0},
        {crashes + "end-after-new-sequence.mpg", 64, 64, true, 3},  // the three pictures of bands.mpg
    };
    for (unsigned int format : {3u, 4u})
        for (const auto& c : cases) {
            SCOPED_TRACE(c.clip + " into " + std::to_string(c.sizeX) + " x " + std::to_string(c.sizeY) +
                         " format " + std::to_string(format) + (c.resident ? "" : " not resident"));
            PVTEXTURE* texture = c.sizeX ? new PVTEXTURE() : nullptr;
            ASSERT_TRUE(!texture || texture->create(c.sizeX, c.sizeY, format));
            if (texture && !c.resident)
                texture->unload(false);
            ASSERT_TRUE(shown.render(nullptr));
            PVVIDEO video;
            ASSERT_TRUE(video.load(c.clip.c_str()));
            video.setTexture(texture);
            video.play();
            const Calls calls = record([&] { EXPECT_GT(stepsToEnd(video, c.clip), 0); });
            const std::string upload = "glTexSubImage2D(GL_TEXTURE_2D,0,0,0,64,48," +
                                       std::string(format == 4 ? "GL_RGBA" : "GL_RGB") + ",GL_UNSIGNED_BYTE)";
            EXPECT_EQ(c.uploads, size_t(std::count(calls.begin(), calls.end(), upload)));
            EXPECT_EQ(2 * c.uploads, calls.size());
            EXPECT_EQ(GLenum(GL_NO_ERROR), glGetError());
            EXPECT_EQ(c.uploads ? 1u : 0u, record([&] { shown.render(nullptr); }).size());
            delete texture;
        }
}

// The video holds a reference on the texture it plays into, so the garbage
// collector (which deletes textures nobody holds) only evicts it; the
// reference moves with setTexture and goes with the video.
TEST_F(VideoGlTest, TheVideoHoldsItsTexture)
{
    PVTEXTURE* first = new PVTEXTURE();
    ASSERT_TRUE(first->create(64, 64, 3));
    const unsigned int firstId = first->getId();
    PVVIDEO* video = new PVVIDEO();
    ASSERT_TRUE(video->load("bands.mpg"));
    video->setTexture(first);
    video->setTexture(first);
    PVTEXTURE::garbageCollect(0);
    ASSERT_EQ(first, PVTEXTURE::findById(firstId));
    PVTEXTURE* second = new PVTEXTURE();
    ASSERT_TRUE(second->create(64, 64, 3));
    video->setTexture(second);
    EXPECT_EQ((std::vector<int> {0, 1}),
              (std::vector<int> {first->getReferences(), second->getReferences()}));
    delete video;
    EXPECT_EQ(0, second->getReferences());
    PVTEXTURE::cleanUp();
}

}  // namespace
