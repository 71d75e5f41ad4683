#include "core/pevrano.h"

#include <cstring>

#include <GLES/gl.h>
#include <SDL/SDL.h>

#include "assets/pvanim.h"
#include "assets/pvemitter.h"
#include "assets/pvfbo.h"
#include "assets/pvmaterial.h"
#include "assets/pvmesh.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pvdisplay.h"
#include "core/pveventpump.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"
#include "foundation/kvftimer.h"
#include "gui/pvfont.h"
#include "scene/pvcamera.h"
#include "scene/pvelement.h"
#include "scene/pvlight.h"
#include "scene/pvnode.h"
#include "video/pvvideo.h"

bool PEVRANO::active = false;
bool PEVRANO::wireframe = false;
bool PEVRANO::blooming = false;
float PEVRANO::bloomingIntensity = 1.0f;
bool PEVRANO::HDR = false;
float PEVRANO::HDRExposure = 1.0f;
float PEVRANO::HDRCurrentLuminance = 1.0f;
bool PEVRANO::DOF = false;
float PEVRANO::DOFFocus = 1.0f;
float PEVRANO::DOFRange = 2.0f;
bool PEVRANO::skipShadows = false;
bool PEVRANO::renderingOnFbo = false;
char PEVRANO::pvePath[PEVRANO_PATH_SIZE] = "";

namespace {
// The settings hand the scene-file folder to the engine when they start.
[[maybe_unused]] const bool pvePathReceived = (PVSETTINGS::setPVEPathReceiver(PEVRANO::setPVEPath), true);
}  // namespace
PVNODE* PEVRANO::skybox = nullptr;
bool PEVRANO::timerAdjourned = false;

namespace {

// There is no hardware query for video memory on this target.
const unsigned int defaultVideoMemory = 16u * 1024u * 1024u;

// Class-wide start-up steps of init, in order; a failure releases the ones before it.
enum StartUpStep {
    SETTINGS_STARTED = 1,
    OPENGL_STARTED,
    SHADERS_STARTED,
    ELEMENTS_STARTED,
    FONTS_STARTED,
    MESHES_STARTED
};

// Renders, in list order, the passed elements whose node type is accepted.
template <typename Filter> void renderPassedElementsWhere(Filter accept)
{
    for (unsigned int i = 0; i < PVELEMENT::getNumberOfPassedElements(); i++) {
        PVELEMENT* element = PVELEMENT::getPassedElement(i);
        if (accept(element->getNode()->getType()))
            element->getNode()->render(element);
    }
}

// Makes frame buffer `index` the render target.
void renderOnFbo(int index)
{
    PVFBO* target = PVOPENGL::getFbo(index);
    if (target)
        target->render(nullptr);
}

}  // namespace

bool PEVRANO::init(PVSETTINGS* settings)
{
    if (active) {
        kvfLog("   [!] PEVRANO already active\n");
        return false;
    }
    PVDISPLAY::prepareVideoDriver();
    if (SDL_Init(SDL_INIT_VIDEO) == -1) {
        kvfLog("   [!] Unable to init SDL_INIT_VIDEO (%s) @ PEVRANO::init\n", SDL_GetError());
        return false;
    }
    kvfLog("   SDL initialized\n");
    kvfLog("   Initialize Pevrano\n\n");

    PVSETTINGS standard;
    if (!settings) {
        kvfLog("   [!] Standard configuration used\n");
        settings = &standard;
    }
    if (!initClasses(settings))
        return false;

    PVFRAMESTATE::timer = kvfNewTimer(1.0f);
    initVideoMemory();
    kvfLog("   Initialization complete\n\n");
    active = true;
    return true;
}

bool PEVRANO::initClasses(PVSETTINGS* settings)
{
    if (!settings->init())
        return failStartUp("   [!] Unable to init settings @ PEVRANO::init\n", 0);
    if (!PVOPENGL::init())
        return failStartUp("   [!] Unable to init OpenGL @ PEVRANO::init\n", SETTINGS_STARTED);
    PVOPENGL::resize(0, 0, PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY());
    if (!PVSHADER::init())
        return failStartUp("   [!] Unable to init shaders @ PEVRANO::init\n", OPENGL_STARTED);
    if (!PVELEMENT::init(settings->getRenderingElements()))
        return failStartUp("   [!] Rendering elements failed to initialize @ PEVRANO::init\n",
                           SHADERS_STARTED);
    if (!PVFONT::init())
        return failStartUp("   [!] Unable to initialize font class @ PEVRANO::init\n", ELEMENTS_STARTED);
    if (!PVMESH::init())
        return failStartUp("   [!] Unable to initialize mesh class @ PEVRANO::init\n", FONTS_STARTED);
    if (!PVEMITTER::init(settings->getParticles() > 0 ? settings->getParticles() : 0))
        return failStartUp("   [!] Unable to initialize emitter class @ PEVRANO::init\n", MESHES_STARTED);
    return true;
}

// Releases the class-wide state of the steps that succeeded, last first.
void PEVRANO::releaseStartUpSteps(int succeeded)
{
    switch (succeeded) {
    case MESHES_STARTED:
        PVMESH::free();
        [[fallthrough]];
    case FONTS_STARTED:
        PVFONT::free();
        [[fallthrough]];
    case ELEMENTS_STARTED:
        PVELEMENT::free();
        [[fallthrough]];
    case SHADERS_STARTED:
        PVSHADER::free();
        [[fallthrough]];
    case OPENGL_STARTED:
        PVOPENGL::free();
        [[fallthrough]];
    case SETTINGS_STARTED:
        PVSETTINGS::free();
        break;
    default:
        break;
    }
}

// Logs the failure of a start-up step and unwinds the steps before it.
bool PEVRANO::failStartUp(const char* message, int succeeded)
{
    kvfLog("%s", message);
    releaseStartUpSteps(succeeded);
    return false;
}

void PEVRANO::initVideoMemory()
{
    unsigned int& total = PVFRAMESTATE::videoMemoryTotal;
    total = defaultVideoMemory;
    if (total == 0) {
        kvfLog("   [!] No VRam detected: software mode supposed (16 MB allocated by default)\n");
        total = defaultVideoMemory;
    }
    kvfLog("   VRam detected: %d KB\n", int(total / 1024));
}

bool PEVRANO::free()
{
    if (!active)
        return false;
    kvfLog("   Pevrano is shutting down...\n");
    kvfFreeTimer(PVFRAMESTATE::timer);

    // Every live object, class by class.
    PVFONT::cleanUp();
    PVNODE::cleanUp();
    PVFBO::cleanUp();
    PVSHADER::cleanUp();
    PVMATERIAL::cleanUp();
    PVTEXTURE::cleanUp();
    PVANIM::cleanUp();
    PVVIDEO::cleanUp();

    // Class-wide state.
    PVEMITTER::free();
    PVFONT::free();
    PVMESH::free();
    PVELEMENT::free();
    PVSHADER::free();
    PVOPENGL::free();
    PVLIGHT::forgetLighting();
    PVSETTINGS::free();

    PVEVENTPUMP::reset();
    SDL_Quit();
    kvfLog("   SDL released\n");
    kvfLog("   Shutdown complete\n\n");
    active = false;
    return true;
}

void PEVRANO::adjournTimerOncePerFrame()
{
    if (timerAdjourned)
        return;
    kvfAdjournTimer(PVFRAMESTATE::timer);
    timerAdjourned = true;
}

void PEVRANO::updateTimer() { adjournTimerOncePerFrame(); }

void PEVRANO::setPVEPath(const char* path)
{
    if (!path)
        path = "";
    std::strncpy(pvePath, path, PEVRANO_PATH_SIZE - 1);
    pvePath[PEVRANO_PATH_SIZE - 1] = '\0';
}

void PEVRANO::shadowingOn()
{
    if (PVSHADER::useShadows())
        PVFRAMESTATE::shadowing = true;
}

bool PEVRANO::clear(bool color, bool depth, bool stencil)
{
    renderingOnFbo =
        PVSETTINGS::getSDLForceFBO() || (blooming && PVSHADER::useBloom()) || (DOF && PVSHADER::useDOF());
    if (renderingOnFbo)
        renderOnFbo(0);

    GLbitfield mask = 0;
    if (color)
        mask |= GL_COLOR_BUFFER_BIT;
    if (depth)
        mask |= GL_DEPTH_BUFFER_BIT;
    if (stencil)
        mask |= GL_STENCIL_BUFFER_BIT;
    if (mask)
        glClear(mask);
    return true;
}

bool PEVRANO::begin3D(PVCAMERA* camera)
{
    adjournTimerOncePerFrame();
    PVFRAMESTATE::timeStamp += 1;
    PVELEMENT::reset();
    PVSHADER::reset();
    PVMATERIAL::reset();
    PVMESH::reset();
    PVTEXTURE::texturingOff(PV_TEXTURE_UNITS);
    PVOPENGL::blendingOff();
    PVOPENGL::twoSideOff();
    // Rendering a camera loads the view; without one a default camera,
    // alive for this call only, does it.
    if (camera) {
        static_cast<PVNODE*>(camera)->render(nullptr);
    } else {
        PVCAMERA defaultCamera;
        defaultCamera.render(nullptr);
    }
    return true;
}

bool PEVRANO::end3D(bool)
{
    PVELEMENT::sort3D();
    // This GL profile has no polygon mode: wireframe only shows the back faces.
    // The culling switch keeps its state, so end2D turns culling back on.
    if (wireframe)
        glDisable(GL_CULL_FACE);
    if (DOF && PVSHADER::useDOF()) {
        renderOnFbo(1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        PVOPENGL::setProfile(PV_OPENGL_PROFILE_DOF);
        renderPassedElements();
        PVSHADER::disable();
        PVOPENGL::setProfile(PV_OPENGL_PROFILE_NORMAL);
        renderOnFbo(0);
        glClear(GL_DEPTH_BUFFER_BIT);
    }
    if (skybox)
        renderSkybox();
    renderPassedElements();
    return true;
}

// The skybox turns with the camera but never moves with it.
void PEVRANO::renderSkybox()
{
    PVMATERIAL::reset();
    PVTEXTURE::texturingOff(PV_TEXTURE_UNITS);
    PVLIGHT::lightingOff();
    PV_glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    PV_glLoadIdentity();
    PV_glMultMatrixf(PVCAMERA::getCameraMatrix()->m);
    PVNODE::applyRotation(skybox->getRotation());
    K3MMATRIX view;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, view.m);
    view.setTranslation(0.0f, 0.0f, 0.0f);
    // Depth state stays as it is.
    PVELEMENT element(skybox, view);
    if (skybox->getNumberOfChildren())
        skybox->getChild(0)->render(&element);
}

void PEVRANO::renderPassedElements()
{
    renderPassedElementsWhere([](PV_NODE_TYPE) { return true; });
}

bool PEVRANO::begin2D()
{
    adjournTimerOncePerFrame();
    PVSHADER::disable();
    PVLIGHT::lightingOff();
    PVTEXTURE::texturingOff(PV_TEXTURE_UNITS);
    PVELEMENT::reset();
    PVFONT::reset();
    PVOPENGL::blendingOff();
    // Straight to GL: the culling switch keeps its state for end2D.
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    PVOPENGL::twoSideOff();
    PVOPENGL::vertexArrayOn();
    PVOPENGL::normalArrayOff();
    PVOPENGL::colorArrayOn();
    PVOPENGL::textureArrayOn();

    // One unit per pixel, y growing downwards.
    const float width = float(PVSETTINGS::getSDLWindowX());
    const float height = float(PVSETTINGS::getSDLWindowY());
    PV_glMatrixMode(GL_PROJECTION);
    PV_glPushMatrix();
    PV_glLoadIdentity();
    if (PVSETTINGS::isSDLLandscape()) {
        PV_glRotatef(90.0f, 0.0f, 0.0f, 1.0f);
        PV_glOrtho(0.0f, height, width, 0.0f, -1.0f, 1.0f);
    } else {
        PV_glOrtho(0.0f, width, height, 0.0f, -1.0f, 1.0f);
    }
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    return true;
}

bool PEVRANO::end2D()
{
    PVELEMENT::sort2D();
    renderPassedElementsWhere(
        [](PV_NODE_TYPE type) { return type != PV_TYPE_LIGHT && type != PV_TYPE_MESH; });
    PV_glMatrixMode(GL_PROJECTION);
    PV_glPopMatrix();
    PV_glMatrixMode(GL_MODELVIEW);
    if (PVOPENGL::isCulled())
        glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    return true;
}

bool PEVRANO::swap()
{
    timerAdjourned = false;
    glFlush();
    glFinish();
    return PVSETTINGS::swapBuffers();
}

void PEVRANO::renderPassedElementsForSelection()
{
    // Each draws in its flat colour code.
    renderPassedElementsWhere(
        [](PV_NODE_TYPE type) { return type == PV_TYPE_MESH || type == PV_TYPE_CUSTOM; });
}

unsigned int PEVRANO::select(int x, int y)
{
    const int width = PVSETTINGS::getSDLWindowX();
    const int height = PVSETTINGS::getSDLWindowY();
    if (PVSETTINGS::isSDLLandscape()) {
        const int landscapeX = height - y;
        y = x;
        x = landscapeX;
    }
    const int pixelY = height - y;
    // A first read-back before anything is drawn.
    readPixelCode(x, pixelY);

    PV_glMatrixMode(GL_PROJECTION);
    PV_glPushMatrix();
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glPushMatrix();

    // Only the pixel under the point is cleared to 0 and drawn in colour codes.
    const K3MVECTOR4D background = PVOPENGL::getBackgroundColor();
    PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 0.0f);
    glScissor(x, pixelY, 1, 1);
    PVOPENGL::scissorOn();
    clear(true, true, false);
    glDepthFunc(GL_LEQUAL);
    PVOPENGL::setProfile(PV_OPENGL_PROFILE_SELECTION);
    renderPassedElementsForSelection();
    PVOPENGL::setBackgroundColor(background);
    PVOPENGL::setProfile(PV_OPENGL_PROFILE_NORMAL);

    const unsigned int code = readPixelCode(x, pixelY);

    glDisable(GL_DEPTH_TEST);
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    glViewport(0, 0, width, height);
    PV_glOrtho(0.0f, float(width), float(height), 0.0f, -1.0f, 1.0f);
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    PV_glMatrixMode(GL_PROJECTION);
    PV_glPopMatrix();
    // The viewport goes back to the whole window.
    glViewport(0, 0, width, height);
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glPopMatrix();
    PVOPENGL::scissorOff();
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    return code;
}

// The pixel at GL window coordinates (x, y) as a colour code: R in the lowest
// byte; without the alpha byte at 24 bits, packed 5-6-5 at 16 bits.
unsigned int PEVRANO::readPixelCode(int x, int y)
{
    GLubyte rgba[4] = {0, 0, 0, 0};
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    const unsigned int red = rgba[0];
    const unsigned int green = rgba[1];
    const unsigned int blue = rgba[2];
    const unsigned int alpha = rgba[3];
    switch (PVSETTINGS::getSDLColorDepth()) {
    case 16:
        return ((red / 8) << 11) | ((green / 4) << 5) | (blue / 8);
    case 24:
        return red | (green << 8) | (blue << 16);
    default:
        return red | (green << 8) | (blue << 16) | (alpha << 24);
    }
}
