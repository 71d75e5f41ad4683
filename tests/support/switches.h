// The engine's cached GL switches in one table: each with its on/off
// functions, its query (when the engine has one), the GL capability it
// mirrors (when it is one) and the call that turning it on or off makes.
// All of them are off in a fresh context.
#ifndef PEVRANO_TESTS_SUPPORT_SWITCHES_H
#define PEVRANO_TESTS_SUPPORT_SWITCHES_H

#include <GLES/gl.h>

#include <pevrano.h>

namespace pvtest {

struct Switch {
    const char* name;
    void (*on)();
    void (*off)();
    bool (*isOn)();  // null: no query
    GLenum capability;  // 0: not a GL capability
    const char* onCall;
    const char* offCall;
};

const Switch cachedSwitches[] = {
    {"blending", PVOPENGL::blendingOn, PVOPENGL::blendingOff, PVOPENGL::isBlended, GL_BLEND,
     "glEnable(GL_BLEND)", "glDisable(GL_BLEND)"},
    {"culling", PVOPENGL::cullingOn, PVOPENGL::cullingOff, PVOPENGL::isCulled, GL_CULL_FACE,
     "glEnable(GL_CULL_FACE)", "glDisable(GL_CULL_FACE)"},
    {"scissor", PVOPENGL::scissorOn, PVOPENGL::scissorOff, nullptr, GL_SCISSOR_TEST,
     "glEnable(GL_SCISSOR_TEST)", "glDisable(GL_SCISSOR_TEST)"},
    {"two-side", PVOPENGL::twoSideOn, PVOPENGL::twoSideOff, PVOPENGL::isTwoSide, 0,
     "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,65536)", "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,0)"},
    {"vertex array", PVOPENGL::vertexArrayOn, PVOPENGL::vertexArrayOff, nullptr, GL_VERTEX_ARRAY,
     "glEnableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_VERTEX_ARRAY)"},
    {"normal array", PVOPENGL::normalArrayOn, PVOPENGL::normalArrayOff, nullptr, GL_NORMAL_ARRAY,
     "glEnableClientState(GL_NORMAL_ARRAY)", "glDisableClientState(GL_NORMAL_ARRAY)"},
    {"colour array", PVOPENGL::colorArrayOn, PVOPENGL::colorArrayOff, nullptr, GL_COLOR_ARRAY,
     "glEnableClientState(GL_COLOR_ARRAY)", "glDisableClientState(GL_COLOR_ARRAY)"},
    {"texture array", PVOPENGL::textureArrayOn, PVOPENGL::textureArrayOff, nullptr, GL_TEXTURE_COORD_ARRAY,
     "glEnableClientState(GL_TEXTURE_COORD_ARRAY)", "glDisableClientState(GL_TEXTURE_COORD_ARRAY)"},
    {"lighting", PVLIGHT::lightingOn, PVLIGHT::lightingOff, nullptr, GL_LIGHTING, "glEnable(GL_LIGHTING)",
     "glDisable(GL_LIGHTING)"}};

}  // namespace pvtest

#endif
