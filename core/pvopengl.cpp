// Cached GL state switches and projection set-up.
#include "core/pvopengl.h"

#include <cmath>

#include <GLES/gl.h>

#include "core/pvgl.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"

bool PVOPENGL::active = false;
float PVOPENGL::nearPlane = 1.0f;
float PVOPENGL::farPlane = 1024.0f;
float PVOPENGL::angleOfView = 45.0f;
PV_OPENGL_PROFILE PVOPENGL::currentProfile = PV_OPENGL_PROFILE_NORMAL;
K3MVECTOR4D PVOPENGL::backgroundColor;
K3MVECTOR4D PVOPENGL::globalAmbientLight;
bool PVOPENGL::blending = false;
bool PVOPENGL::scissor = false;
bool PVOPENGL::culling = false;
bool PVOPENGL::twoSide = false;
bool PVOPENGL::vertexArrayStatus = false;
bool PVOPENGL::indexArrayStatus = false;
bool PVOPENGL::normalArrayStatus = false;
bool PVOPENGL::colorArrayStatus = false;
bool PVOPENGL::textureArrayStatus = false;
bool PVOPENGL::multitextureFlag = false;
bool PVOPENGL::VBOFlag = false;
bool PVOPENGL::shadersFlag = false;
bool PVOPENGL::anisotropicFlag = false;
bool PVOPENGL::FBOFlag = false;
bool PVOPENGL::OcclusionQueryFlag = false;
float PVOPENGL::anisotropicLevel = 0.0f;
PVFBO* PVOPENGL::fbo[PV_OPENGL_FBO_SLOTS] = {};

namespace {

// Switches a capability only when the cached flag differs.
void switchCapability(bool& flag, bool on, GLenum capability)
{
    if (flag == on)
        return;
    if (on)
        glEnable(capability);
    else
        glDisable(capability);
    flag = on;
}

void switchClientArray(bool& flag, bool on, GLenum array)
{
    if (flag == on)
        return;
    if (on)
        glEnableClientState(array);
    else
        glDisableClientState(array);
    flag = on;
}

const char* glText(GLenum which)
{
    const GLubyte* text = glGetString(which);
    return text ? reinterpret_cast<const char*>(text) : "";
}

}  // namespace

void PVOPENGL::cullingOn() { switchCapability(culling, true, GL_CULL_FACE); }
void PVOPENGL::cullingOff() { switchCapability(culling, false, GL_CULL_FACE); }
bool PVOPENGL::isCulled() { return culling; }

void PVOPENGL::twoSideOn()
{
    if (twoSide)
        return;
    PV_glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1.0f);
    twoSide = true;
}

void PVOPENGL::twoSideOff()
{
    if (!twoSide)
        return;
    PV_glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 0.0f);
    twoSide = false;
}

bool PVOPENGL::isTwoSide() { return twoSide; }

void PVOPENGL::blendingOn() { switchCapability(blending, true, GL_BLEND); }
void PVOPENGL::blendingOff() { switchCapability(blending, false, GL_BLEND); }
bool PVOPENGL::isBlended() { return blending; }
void PVOPENGL::scissorOn() { switchCapability(scissor, true, GL_SCISSOR_TEST); }
void PVOPENGL::scissorOff() { switchCapability(scissor, false, GL_SCISSOR_TEST); }

void PVOPENGL::vertexArrayOn() { switchClientArray(vertexArrayStatus, true, GL_VERTEX_ARRAY); }
void PVOPENGL::vertexArrayOff() { switchClientArray(vertexArrayStatus, false, GL_VERTEX_ARRAY); }
void PVOPENGL::normalArrayOn() { switchClientArray(normalArrayStatus, true, GL_NORMAL_ARRAY); }
void PVOPENGL::normalArrayOff() { switchClientArray(normalArrayStatus, false, GL_NORMAL_ARRAY); }
void PVOPENGL::colorArrayOn() { switchClientArray(colorArrayStatus, true, GL_COLOR_ARRAY); }
void PVOPENGL::colorArrayOff() { switchClientArray(colorArrayStatus, false, GL_COLOR_ARRAY); }
void PVOPENGL::textureArrayOn() { switchClientArray(textureArrayStatus, true, GL_TEXTURE_COORD_ARRAY); }
void PVOPENGL::textureArrayOff() { switchClientArray(textureArrayStatus, false, GL_TEXTURE_COORD_ARRAY); }

void PVOPENGL::setNearPlane(float value) { nearPlane = value; }
void PVOPENGL::setFarPlane(float value) { farPlane = value; }
void PVOPENGL::setAngleOfView(float degrees) { angleOfView = degrees; }
float PVOPENGL::getNearPlane() { return nearPlane; }
float PVOPENGL::getFarPlane() { return farPlane; }
float PVOPENGL::getAngleOfView() { return angleOfView; }

void PVOPENGL::setProfile(int profile) { currentProfile = static_cast<PV_OPENGL_PROFILE>(profile); }
PV_OPENGL_PROFILE PVOPENGL::getProfile() { return currentProfile; }

void PVOPENGL::setBackgroundColor(float r, float g, float b, float a)
{
    setBackgroundColor(K3MVECTOR4D(r, g, b, a));
}

void PVOPENGL::setBackgroundColor(K3MVECTOR4D color)
{
    backgroundColor = color;
    PV_glClearColor(color.x, color.y, color.z, color.w);
}

void PVOPENGL::setGlobalAmbientLight(float r, float g, float b, float a)
{
    setGlobalAmbientLight(K3MVECTOR4D(r, g, b, a));
}

void PVOPENGL::setGlobalAmbientLight(K3MVECTOR4D color)
{
    globalAmbientLight = color;
    PV_glLightModelfv(GL_LIGHT_MODEL_AMBIENT, color);
}

K3MVECTOR4D PVOPENGL::getBackgroundColor() { return backgroundColor; }
K3MVECTOR4D PVOPENGL::getGlobalAmbientLight() { return globalAmbientLight; }

float PVOPENGL::getAnisotropicLevel() { return anisotropicLevel; }
bool PVOPENGL::useVBO() { return VBOFlag; }
bool PVOPENGL::useAnisotropic() { return anisotropicFlag; }
bool PVOPENGL::useFBO() { return FBOFlag; }
bool PVOPENGL::useMultitexturing() { return multitextureFlag; }
bool PVOPENGL::useShaders() { return shadersFlag; }
bool PVOPENGL::useOcclusionQuery() { return OcclusionQueryFlag; }

PVFBO* PVOPENGL::getFbo(int index)
{
    if (index < 0 || index >= PV_OPENGL_FBO_SLOTS)
        return nullptr;
    return fbo[index];
}

void PVOPENGL::setPerspective(float angle, float aspect, float zNear, float zFar)
{
    // Half the vertical angle, in radians.
    float h = zNear * static_cast<float>(tan(angle * 0.008726646));
    PV_glFrustum(-h * aspect, h * aspect, -h, h, zNear, zFar);
}

bool PVOPENGL::resize(int x, int y, int width, int height)
{
    if (width < 1 || height < 1)
        kvfLog("   [!] invalid params @ PVOPENGL::resize\n");
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    glViewport(x, PVSETTINGS::getSDLWindowY() - y - height, width, height);
    float aspect;
    if (PVSETTINGS::isSDLLandscape()) {
        PV_glRotatef(90.0f, 0.0f, 0.0f, 1.0f);
        aspect = static_cast<float>(height) / static_cast<float>(width);
    } else {
        aspect = static_cast<float>(width) / static_cast<float>(height);
    }
    setPerspective(angleOfView, aspect, nearPlane, farPlane);
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    return true;
}

bool PVOPENGL::setFrustum(float left, float right, float bottom, float top, float zNear, float zFar, bool)
{
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    PV_glFrustum(left, right, bottom, top, zNear, zFar);
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    return true;
}

bool PVOPENGL::init()
{
    if (active) {
        kvfLog("   [!] OpenGL already active @ PVOPENGL::init\n");
        return false;
    }
    kvfLog("   Init OpenGL...\n");
    kvfLog("      Vendor    : %s\n", glText(GL_VENDOR));
    kvfLog("      Renderer  : %s\n", glText(GL_RENDERER));
    kvfLog("      Version   : %s\n", glText(GL_VERSION));
    logExtensions();
    reset();
    kvfLog("   OpenGL initialized\n");
    active = true;
    return true;
}

// The extension string goes to the log one character per call.
void PVOPENGL::logExtensions()
{
    kvfLog("      Extensions: ");
    for (const char* c = glText(GL_EXTENSIONS); *c; c++)
        kvfLog("%c", *c);
    kvfLog("\n\n");
}

void PVOPENGL::reset()
{
    setBackgroundColor(backgroundColor);
    setGlobalAmbientLight(globalAmbientLight);
    PV_glClearDepthf(1.0f);
    glClearStencil(0);
    glDepthFunc(GL_LESS);
    glEnable(GL_DEPTH_TEST);
    glShadeModel(GL_SMOOTH);
    glHint(GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST);
    glDisable(GL_DITHER);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    PV_glAlphaFunc(GL_GEQUAL, 0.5f);
    cullingOn();
    for (GLenum light = GL_LIGHT0; light <= GL_LIGHT3; light++) {
        PV_glLightf(light, GL_SPOT_EXPONENT, 0.0f);
        PV_glLightf(light, GL_SPOT_CUTOFF, 180.0f);
        PV_glLightf(light, GL_CONSTANT_ATTENUATION, 1.0f);
        PV_glLightf(light, GL_LINEAR_ATTENUATION, 0.0f);
        PV_glLightf(light, GL_QUADRATIC_ATTENUATION, 0.0f);
    }
}

bool PVOPENGL::free()
{
    if (!active)
        return false;
    kvfLog("   Release OpenGL...\n");
    forgetSwitches();
    kvfLog("   OpenGL released\n");
    active = false;
    return true;
}

// The switches mirror the context being released; the next one starts with
// every capability and client array off, so the next start-up must find them
// off too and turn on again what it needs.
void PVOPENGL::forgetSwitches()
{
    blending = false;
    scissor = false;
    culling = false;
    twoSide = false;
    vertexArrayStatus = false;
    indexArrayStatus = false;
    normalArrayStatus = false;
    colorArrayStatus = false;
    textureArrayStatus = false;
}

bool PVOPENGL::isActive() { return active; }
