// Reaches the class-wide entry points that the engine keeps for PEVRANO
// (start-up, shut-down, the picking read-back) and the capability flags
// nothing public can set, so that unit tests can drive them without starting
// the whole engine. The classes name this struct as a friend.
#ifndef PEVRANO_TESTS_SUPPORT_TESTACCESS_H
#define PEVRANO_TESTS_SUPPORT_TESTACCESS_H

#include "assets/pvmesh.h"
#include "assets/pvshader.h"
#include "core/pevrano.h"
#include "core/pvopengl.h"

struct PVTESTACCESS {
    static bool openglInit() { return PVOPENGL::init(); }
    static bool openglFree() { return PVOPENGL::free(); }
    static bool openglIsActive() { return PVOPENGL::isActive(); }
    static void setFBOSupport(bool on) { PVOPENGL::FBOFlag = on; }

    static bool shaderInit() { return PVSHADER::init(); }
    static bool shaderFree() { return PVSHADER::free(); }
    static bool shaderIsActive() { return PVSHADER::isActive(); }
    static bool shaderEnabled() { return PVSHADER::enabled; }
    static PVSHADER* currentShader() { return PVSHADER::currentShader; }
    static void setCurrentShader(PVSHADER* shader) { PVSHADER::currentShader = shader; }

    // Skinning four lanes at a time (when the processor can) or one by one.
    static bool vectorSkinning() { return PVMESH::vectorSkinning; }
    static void setVectorSkinning(bool on) { PVMESH::vectorSkinning = on; }

    // The video-memory budget and frame stamp that init and begin3D set.
    static void setVideoMemory(unsigned int bytes) { PVFRAMESTATE::videoMemoryTotal = bytes; }
    static void setTimeStamp(long stamp) { PVFRAMESTATE::timeStamp = stamp; }

    // The colour-code read-back of picking, without drawing anything.
    static unsigned int readPixelCode(int x, int y) { return PEVRANO::readPixelCode(x, y); }
};

#endif
