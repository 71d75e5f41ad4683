// Frame-buffer bookkeeping: registry, bound texture or size, viewport.
#include "assets/pvfbo.h"

#include <cstdio>

#include <GLES/gl.h>

#include "assets/pvtexture.h"
#include "core/pvopengl.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"

PVFBO* PVFBO::firstFbo = nullptr;
PVFBO* PVFBO::currentFbo = nullptr;
int PVFBO::viewport[4] = {0, 0, 0, 0};

PVFBO::PVFBO() :
    id(kvfNewId()),
    previous(nullptr),
    next(nullptr),
    texture(nullptr),
    sizeX(0),
    sizeY(0),
    frameBufferHandle(0),
    renderBufferHandle(0)
{
    snprintf(name, sizeof(name), "[fbo %d]", id);
    Registry::append(this);
}

PVFBO::~PVFBO()
{
    kvfReleaseId(id);
    Registry::remove(this);
    if (currentFbo == this)
        currentFbo = nullptr;
}

bool PVFBO::cleanUp()
{
    if (!firstFbo)
        return false;
    const int count = Registry::deleteAll();
    kvfLog("   %d fbo(s) released\n", count);
    return true;
}

unsigned int PVFBO::getNumberOfFbos() { return Registry::count(); }

bool PVFBO::isOk() { return PVOPENGL::useFBO(); }

bool PVFBO::bindTexture(int, PVTEXTURE* newTexture)
{
    if (!newTexture) {
        kvfLog("   [!] Invalid params @ PVFBO::bindTexture\n");
        return false;
    }
    if (!PVOPENGL::useFBO())
        return false;
    texture = newTexture;
    sizeX = int(newTexture->getSizeX());
    sizeY = int(newTexture->getSizeY());
    return true;
}

bool PVFBO::bindRenderBuffer(int, int newSizeX, int newSizeY)
{
    if (!PVOPENGL::useFBO())
        return false;
    sizeX = newSizeX;
    sizeY = newSizeY;
    return true;
}

bool PVFBO::render(void*)
{
    if (PVOPENGL::useFBO() && currentFbo != this) {
        glViewport(0, 0, sizeX, sizeY);
        currentFbo = this;
    }
    return true;
}

void PVFBO::unbind()
{
    if (PVOPENGL::useFBO())
        currentFbo = nullptr;
}

bool PVFBO::blur(PVFBO*, PVSHADER*, int) { return true; }
bool PVFBO::computeLuminance(float*) { return true; }

PVTEXTURE* PVFBO::getTexture() { return texture; }
int PVFBO::getSizeX() { return sizeX; }
int PVFBO::getSizeY() { return sizeY; }
unsigned int PVFBO::getId() { return id; }
char* PVFBO::getName() { return name; }
