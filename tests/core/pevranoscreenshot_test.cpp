// Screenshots read back with libpng (size, colour type, top row first,
// colours), their refusals, and the window caption.
#include <SDL/SDL.h>
#include <png.h>

#include <tuple>

#include "enginefixture.h"
#include "support/pixels.h"

using namespace pvtest;

namespace {

using Screenshot = EngineTest;

const int width = 160, height = 120;

// The file's pixels as RGB rows, top row first; its size and colour type.
struct Png {
    png_image image {};
    std::vector<png_byte> rgb;

    explicit Png(const std::string& path)
    {
        image.version = PNG_IMAGE_VERSION;
        EXPECT_TRUE(png_image_begin_read_from_file(&image, path.c_str()));
        EXPECT_EQ(image.format, png_uint_32(PNG_FORMAT_RGB));
        image.format = PNG_FORMAT_RGB;
        rgb.resize(PNG_IMAGE_SIZE(image));
        EXPECT_TRUE(png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr));
    }
    Rgb at(int x, int y) const
    {
        const png_byte* p = &rgb[(size_t(y) * image.width + size_t(x)) * 3];
        return {p[0] / 255.0, p[1] / 255.0, p[2] / 255.0};
    }
};

// Clears the rectangle (GL's y from the bottom) to the colour.
void fill(int x, int y, int w, int h, const Rgb& colour)
{
    glScissor(x, y, w, h);
    glClearColor(float(colour.r), float(colour.g), float(colour.b), 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
}

// Blue, a red band along the top, a green square in the bottom-left corner:
// the file starts with the red rows and ends with the green corner. The
// start-up leaves the caption empty; off-screen there is no window to name.
TEST_F(Screenshot, WritesTheBackBufferAsRgbTopRowFirstAndNamesTheWindow)
{
    EXPECT_FALSE(PEVRANO::screenshot(dir.file("early.png").c_str()));
    EXPECT_EQ(log.fresh(), "   [!] No frame to capture @ PEVRANO::screenshot\n");
    PVSETTINGS settings;
    settings.setWindowX(width);
    settings.setWindowY(height);
    settings.setFullScreen(false);
    start(settings);
    const Rgb red {1, 0, 0}, green {0, 1, 0}, blue {0, 0, 1};
    glEnable(GL_SCISSOR_TEST);
    fill(0, 0, width, height, blue);
    fill(0, height - 10, width, 10, red);
    fill(0, 0, 20, 20, green);
    glDisable(GL_SCISSOR_TEST);
    log.fresh();
    ASSERT_TRUE(PEVRANO::screenshot(dir.file("shot.png").c_str()));
    EXPECT_FALSE(PEVRANO::screenshot("/nonexistent/folder/shot.png"));
    EXPECT_FALSE(PEVRANO::screenshot(nullptr));
    EXPECT_FALSE(PEVRANO::setCaption(nullptr));
    EXPECT_EQ(log.fresh(), "   [!] Unable to write /nonexistent/folder/shot.png @ PEVRANO::screenshot\n"
                           "   [!] Invalid params @ PEVRANO::screenshot\n"
                           "   [!] Invalid params @ PEVRANO::setCaption\n");
    char* title = nullptr;
    char* icon = nullptr;
    SDL_WM_GetCaption(&title, &icon);
    EXPECT_EQ(title, nullptr);
    EXPECT_TRUE(PEVRANO::setCaption("Pevrano test"));
    SDL_WM_GetCaption(&title, &icon);
    EXPECT_STREQ(title, PVSETTINGS::getSDLWindow() ? "Pevrano test" : nullptr);
    EXPECT_EQ(log.fresh(), "");

    const Png png(dir.file("shot.png"));
    ASSERT_EQ(png.image.width, png_uint_32(width));
    ASSERT_EQ(png.image.height, png_uint_32(height));
    const std::tuple<int, int, Rgb> probes[] = {
        {0, 0, red},   {width - 1, 9, red},           {5, height - 1, green}, {19, height - 20, green},
        {0, 10, blue}, {width / 2, height / 2, blue}, {20, height - 1, blue}, {width - 1, height - 1, blue}};
    for (const auto& [x, y, colour] : probes)
        expectColour(colour, png.at(x, y), std::to_string(x) + ", " + std::to_string(y));
}

}  // namespace
