// Opens the display (the default configuration, or a PEVRANO_* configuration
// file given as the first argument), draws a few frames and saves the last one
// as screenshot.png in the working directory. Without an X display the engine
// draws off-screen, so the demo runs the same on a headless machine.
#include <pevrano.h>

#include <GLES/gl.h>
#include <png.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

#include "core/pvopengl.h"

namespace {

const int frameCount = 5;

// The 3D part of a frame; the scene is drawn between begin3D and end3D.
void drawScene()
{
    PEVRANO::begin3D(nullptr);
    PEVRANO::end3D(false);
}

// The 2D interface on top of the scene.
void drawInterface()
{
    PEVRANO::begin2D();
    PEVRANO::end2D();
}

// One frame, without the swap: the background fades from dark to light blue.
void drawFrame(int frame)
{
    const float shade = float(frame) / float(frameCount - 1);
    PVOPENGL::setBackgroundColor(0.1f, 0.2f + 0.3f * shade, 0.4f + 0.5f * shade, 1.0f);
    PEVRANO::clear(true, true, false);
    drawScene();
    drawInterface();
}

// Writes the current colour buffer (GL rows run bottom-up) as an RGB PNG.
bool saveScreenshot(const char* path, int width, int height)
{
    std::vector<unsigned char> pixels(size_t(width) * size_t(height) * 4);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());

    FILE* file = std::fopen(path, "wb");
    if (!file)
        return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, info ? &info : nullptr);
        std::fclose(file);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<unsigned char> row(size_t(width) * 3);
    for (int y = height - 1; y >= 0; --y) {
        const unsigned char* source = &pixels[size_t(y) * size_t(width) * 4];
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                row[size_t(x) * 3 + channel] = source[x * 4 + channel];
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return std::fclose(file) == 0;
}

std::string workingDirectory()
{
    char directory[PATH_MAX];
    return getcwd(directory, sizeof directory) ? directory : ".";
}

}  // namespace

int main(int argc, char** argv)
{
    kvfSetConsoleEcho(false);
    PVSETTINGS settings;
    if (argc > 1 && !settings.load(argv[1])) {
        std::fprintf(stderr, "cannot read the configuration file %s\n", argv[1]);
        return EXIT_FAILURE;
    }
    const std::string log = workingDirectory() + "/pevrano_log.txt";
    if (!PEVRANO::init(&settings)) {
        std::fprintf(stderr, "the engine did not start; see %s\n", log.c_str());
        return EXIT_FAILURE;
    }
    std::printf("display %dx%d, %d-bit colour, %s\n", PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY(),
                PVSETTINGS::getSDLColorDepth(), PVSETTINGS::getSDLWindow() ? "X11 window" : "off-screen");

    bool saved = false;
    const std::string screenshot = workingDirectory() + "/screenshot.png";
    for (int frame = 0; frame < frameCount; ++frame) {
        drawFrame(frame);
        // The last frame is read before the swap, while its buffer is still defined.
        if (frame == frameCount - 1)
            saved = saveScreenshot(screenshot.c_str(), PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY());
        PEVRANO::swap();
    }
    PEVRANO::free();

    if (!saved) {
        std::fprintf(stderr, "could not write %s\n", screenshot.c_str());
        return EXIT_FAILURE;
    }
    std::printf("Screenshot written to %s\n", screenshot.c_str());
    std::printf("Log written to %s\n", log.c_str());
    return EXIT_SUCCESS;
}
