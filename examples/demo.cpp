// Opens the display (the default configuration, or a PEVRANO_* configuration
// file given as the first argument), draws a few frames of a small lit scene,
// partly loaded from a scene file, seen through a camera that swings around
// it, and saves the last frame as screenshot.png in the working directory,
// with a window of interface widgets on top. Without an X display the engine
// draws off-screen, so the demo runs the same on a headless machine; under X
// the interface then stays live.
#include <pevrano.h>

#include <GLES/gl.h>
#include <SDL/SDL.h>
#include <png.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const int frameCount = 5;

// A node type of the application's own: a flat square of one colour in its
// node's XY plane, facing +z, lit by the lights nearest to it. The engine
// calls render with the node's render-list record during end3D.
class Tile : public PVNODE {
public:
    Tile(float size, const K3MVECTOR4D& colour) : colour(colour)
    {
        type = PV_TYPE_CUSTOM;
        setDefaultName("[tile %d]");
        const GLfixed h = PV_floatToFixed(size / 2.0f);
        const GLfixed corners[12] = {-h, -h, 0, h, -h, 0, -h, h, 0, h, h, 0};
        for (int i = 0; i < 12; ++i) {
            vertices[i] = corners[i];
            normals[i] = (i % 3 == 2) ? PV_floatToFixed(1.0f) : 0;
        }
    }

    bool render(void* element) override
    {
        PVELEMENT* record = static_cast<PVELEMENT*>(element);
        PVLIGHT::lightingOn();
        PVLIGHT::activateNearest(record);
        PV_glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, colour);
        PV_glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, colour);
        // The lights load their own matrices: the tile's comes after them.
        PV_glLoadMatrixf(record->getMatrix()->m);
        PVOPENGL::vertexArrayOn();
        PVOPENGL::normalArrayOn();
        PVOPENGL::colorArrayOff();
        PVOPENGL::textureArrayOff();
        glVertexPointer(3, GL_FIXED, 0, vertices);
        glNormalPointer(GL_FIXED, 0, normals);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        return true;
    }

private:
    K3MVECTOR4D colour;
    GLfixed vertices[12];
    GLfixed normals[12];
};

// A checkered floor with three upright panels loaded from a scene file, lit by a white directional
// light and a warm spot light. Nodes are owned by the engine's node registry:
// PEVRANO::free deletes them.
PVNODE* buildScene()
{
    PVNODE* scene = new PVNODE();
    PVNODE* floor = new PVNODE();
    floor->setRotation(-90, 0, 0);  // the tiles' +z becomes world up
    floor->link(scene);
    for (int row = 0; row < 6; ++row)
        for (int column = 0; column < 6; ++column) {
            const float shade = (row + column) % 2 ? 0.35f : 0.8f;
            Tile* tile = new Tile(1.0f, K3MVECTOR4D(shade, shade, shade, 1.0f));
            tile->setPosition(column - 2.5f, row - 2.5f, 0.0f);
            tile->link(floor);
        }

    // Three coloured panels come from a scene file.
    PEVRANO::setPVEPath(PEVRANO_DEMO_DATA "/");
    PVNODE* panels = PEVRANO::load("panels.pve");
    if (panels)
        panels->link(scene);

    PVLIGHT* sun = new PVLIGHT();
    sun->setLightType(PV_LIGHT_DIRECTIONAL);
    K3MVECTOR3D sunDirection(-0.3f, -0.8f, -0.5f);
    sun->setDirection(sunDirection.normalize());
    sun->setDiffuse(0.45f, 0.45f, 0.5f, 1.0f);
    sun->link(scene);

    PVLIGHT* spot = new PVLIGHT();
    spot->setLightType(PV_LIGHT_SPOT);
    spot->setPosition(0.5f, 4.0f, 1.5f);
    spot->setTargetNode(spot);  // aims at its own target vector
    spot->setTarget(0.0f, 0.0f, 0.0f);
    spot->setCutOff(30.0f);
    spot->setExponent(2.0f);
    spot->setDiffuse(1.0f, 0.8f, 0.5f, 1.0f);
    spot->setAmbient(0.0f, 0.0f, 0.0f, 1.0f);
    spot->link(scene);
    return scene;
}

// Particle effects described in examples/effects/: a fire with its smoke in
// front of the middle panel and sparks beside it, warmed up for two seconds so
// that the few frames of the demo show them fully grown.
void addEffects(PVNODE* scene)
{
    PVTEXTURE::setPath(PEVRANO_EFFECTS_DIR "/");
    const struct {
        const char* file;
        float x, y, z;
    } effects[] = {
        {"fire.xml", 0.0f, 0.0f, 1.0f}, {"smoke.xml", 0.0f, 0.9f, 1.0f}, {"sparks.xml", 2.0f, 0.0f, 1.5f}};
    for (const auto& effect : effects) {
        PVEMITTER* emitter = new PVEMITTER();
        if (!emitter->load((std::string(PEVRANO_EFFECTS_DIR "/") + effect.file).c_str()))
            continue;  // the log tells why; the node is released with the others
        emitter->setPosition(effect.x, effect.y, effect.z);
        emitter->link(scene);
        for (int step = 0; step < 60; ++step)
            emitter->update(1.0f / 30.0f);
    }
}

// A camera that looks at the middle of the scene from a point it moves to.
PVCAMERA* buildCamera()
{
    PVCAMERA* camera = new PVCAMERA();
    camera->setTargetNode(camera);
    camera->setTarget(0.0f, 0.5f, 0.0f);
    return camera;
}

// An animated, skinned character converted from a public test model
// ("tools/run-example.sh" converts Assimp's Testwuson.X into the working
// directory as character.pve with its run as character_0_Wuson_Run.pva).
// It runs in front of the panels; without the files the demo goes on.
PVANIM* loadCharacter(PVNODE* scene)
{
    PEVRANO::setPVEPath("");
    PVTEXTURE::setPath("");
    PVNODE* character = PEVRANO::load("character.pve");
    PVANIM* run = new PVANIM();
    if (!character || !run->load(const_cast<char*>("character_0_Wuson_Run.pva")))
        return nullptr;
    run->setTranslating(true);
    PVNODE* place = new PVNODE();
    place->setPosition(0.0f, 0.55f, 1.0f);
    place->setRotation(0.0f, 60.0f, 0.0f);  // its side towards the camera
    place->link(scene);
    character->link(place);
    return run;
}

// The 3D part of a frame: the camera swings from left to right of the scene.
void drawScene(int frame, PVCAMERA* camera, PVNODE* scene, PVANIM* run)
{
    if (run)
        run->apply(frame * 2 % run->getNumberOfFrames(), scene);
    const float angle = (-20.0f + 40.0f * float(frame) / float(frameCount - 1)) * 3.1415927f / 180.0f;
    camera->setPosition(10.0f * std::sin(angle), 7.0f, 10.0f * std::cos(angle));
    PEVRANO::begin3D(camera);
    scene->pass(false);
    PEVRANO::end3D(false);
}

// ---------------------------------------------------------------------------
// The 2D interface: a window with text, two buttons, a text field and a
// slider, drawn over the scene. Under an X display the demo keeps running
// after its scripted frames and feeds SDL's mouse and key events to the
// engine's interface until the window is closed, Escape is pressed or the
// Quit button is clicked.
struct DemoInterface {
    PVNODE* root = nullptr;  // holds the window and the screen
    PVWINDOW* window = nullptr;
    PVBUTTON* hello = nullptr;
    PVBUTTON* quit = nullptr;
    PVTEXTFIELD* name = nullptr;
    PVHSCROLLBAR* slider = nullptr;
    PVLABEL* value = nullptr;
    PVBOX* screen = nullptr;
    PVVIDEO* film = nullptr;

    template <class Widget> Widget* find(PVNODE* root, const char* name)
    {
        return dynamic_cast<Widget*>(root->findByNameInHierarchy(name));
    }

    // The interface file names its font sheet and kerning file relative to
    // the font folder the build fills with pevrano-font.
    bool build()
    {
        const std::string texturePath = PVTEXTURE::getPath();
        PVTEXTURE::setPath(PEVRANO_DEMO_FONT_DIR "/");
        PVFONT::setPath(PEVRANO_DEMO_FONT_DIR "/");
        root = PEVRANO::loadXML(PEVRANO_DEMO_DATA "/interface.xml");
        PVTEXTURE::setPath(texturePath.c_str());
        if (!root)
            return false;
        window = find<PVWINDOW>(root, "window");
        hello = find<PVBUTTON>(root, "hello");
        quit = find<PVBUTTON>(root, "quit");
        name = find<PVTEXTFIELD>(root, "name");
        slider = find<PVHSCROLLBAR>(root, "slider");
        value = find<PVLABEL>(root, "value");
        screen = find<PVBOX>(root, "screen");
        if (!window || !hello || !quit || !name || !slider || !value || !screen)
            return false;
        playFilm();
        name->clear();
        slider->setValue(0.25f);
        window->setForemost(0);
        return true;
    }

    // data/film.mpg (256 x 192) plays in a loop into a texture that the
    // screen box shows; the picture fills the top 192 rows of the texture.
    void playFilm()
    {
        PVTEXTURE* picture = new PVTEXTURE();
        picture->create(256, 256, 3);
        picture->setFilter(true, false, true);  // no mipmaps: only level 0 is replaced
        screen->setTexture(picture);
        PVBOXCOORD frame(1.0f, 192.0f / 256.0f, true);
        screen->setBoxCoords(frame);
        screen->setThickness(0);
        PVVIDEO::setMPGPath(PEVRANO_DEMO_DATA "/");
        film = new PVVIDEO();
        if (film->load("film.mpg")) {
            film->setTexture(picture);
            film->playLoop();
        }
    }

    void draw()
    {
        film->update(64);
        if (value->getFont())
            value->write("%d%%%%", int(slider->getValue() * 100.0f + 0.5f));  // drawn text is a format too
        PEVRANO::begin2D();
        root->pass(false);
        PEVRANO::end2D();
    }

    // Handles the events waiting in SDL's queue; false once the user quits.
    bool handleEvents()
    {
        SDL_Event event;
        while (SDL_PollEvent(&event)) {
            char key = 0;
            switch (event.type) {
            case SDL_QUIT:
                return false;
            case SDL_MOUSEMOTION:
                pointerX = event.motion.x;
                pointerY = event.motion.y;
                break;
            case SDL_MOUSEBUTTONDOWN:
            case SDL_MOUSEBUTTONUP:
                pointerX = event.button.x;
                pointerY = event.button.y;
                pointerDown = event.type == SDL_MOUSEBUTTONDOWN;
                break;
            case SDL_KEYDOWN:
                if (event.key.keysym.sym == SDLK_ESCAPE)
                    return false;
                key = event.key.keysym.sym == SDLK_BACKSPACE ? 8 : char(event.key.keysym.unicode & 0x7F);
                break;
            default:
                continue;
            }
            unsigned int clicked = 0;
            PVELEMENT::manageGUIEvents(key, pointerX, pointerY, pointerDown ? 1 : 0, 0, &clicked);
            if (clicked == quit->getId())
                return false;
            if (clicked == hello->getId()) {
                window->write("\nHello, %s!", name->getCaption()[0] ? name->getCaption() : "stranger");
                window->format();
            }
        }
        // Every call keeps the focused text field's caret blinking.
        PVELEMENT::manageGUIEvents(0, pointerX, pointerY, pointerDown ? 1 : 0, 0, nullptr);
        return true;
    }

    int pointerX = 0;
    int pointerY = 0;
    bool pointerDown = false;
};

DemoInterface interface;

// The 2D interface on top of the scene.
void drawInterface() { interface.draw(); }

// One frame, without the swap: the background fades from dark to light blue.
void drawFrame(int frame, PVCAMERA* camera, PVNODE* scene, PVANIM* run)
{
    const float shade = float(frame) / float(frameCount - 1);
    PVOPENGL::setBackgroundColor(0.1f, 0.2f + 0.3f * shade, 0.4f + 0.5f * shade, 1.0f);
    PEVRANO::clear(true, true, false);
    drawScene(frame, camera, scene, run);
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
    std::printf("display %dx%d, %d-bit colour, %s\n", PVSETTINGS::getSDLWindowX(),
                PVSETTINGS::getSDLWindowY(), PVSETTINGS::getSDLColorDepth(),
                PVSETTINGS::getSDLWindow() ? "X11 window" : "off-screen");

    PVOPENGL::setGlobalAmbientLight(0.15f, 0.15f, 0.2f, 1.0f);
    PVNODE* scene = buildScene();
    addEffects(scene);
    PVCAMERA* camera = buildCamera();
    if (!interface.build()) {
        std::fprintf(stderr, "the interface file did not load; see %s\n", log.c_str());
        PEVRANO::free();
        return EXIT_FAILURE;
    }
    PVANIM* run = loadCharacter(scene);
    std::printf("%s\n", run ? "animated character shown" : "no converted character in the working directory");

    bool saved = false;
    const std::string screenshot = workingDirectory() + "/screenshot.png";
    for (int frame = 0; frame < frameCount; ++frame) {
        drawFrame(frame, camera, scene, run);
        // The last frame is read before the swap, while its buffer is still defined.
        if (frame == frameCount - 1)
            saved =
                saveScreenshot(screenshot.c_str(), PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY());
        PEVRANO::swap();
    }
    // In an X window the interface stays live until the user quits.
    if (PVSETTINGS::getSDLWindow()) {
        SDL_EnableUNICODE(1);
        std::printf("Interface live: Escape, Quit or closing the window ends the demo\n");
        while (interface.handleEvents()) {
            drawFrame(frameCount - 1, camera, scene, run);
            PEVRANO::swap();
            SDL_Delay(15);
        }
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
