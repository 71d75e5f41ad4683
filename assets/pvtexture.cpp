// Textures: registry, file reading, upload with a CPU-built mipmap chain,
// the video-memory account, per-unit bind cache and the garbage collector.
// TGA decoding is in pvtexturetga.cpp.
#include "assets/pvtexture.h"

#include <GLES/gl.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "assets/pvshader.h"
#include "core/pvframestate.h"
#include "foundation/kvffile.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfstring.h"

PVTEXTURE* PVTEXTURE::firstTexture = nullptr;
unsigned long PVTEXTURE::usedMemory = 0;
char PVTEXTURE::texturePath[PV_TEXTURE_NAME_SIZE] = "";
PVTEXTURE* PVTEXTURE::channelCache[PV_TEXTURE_UNITS] = {};
bool PVTEXTURE::channelActive[PV_TEXTURE_UNITS] = {};

namespace {

const unsigned int DYNAMIC_FORMAT_FIRST = 3;
const unsigned int DYNAMIC_FORMAT_LAST = 6;

// One box-filtered mipmap level, written in place over the previous one.
// Source pixel (x, y) is read at y * 2 * width + x, the rows being taken to
// be two destination rows long even where the previous level is narrower or
// shorter than twice this one; such reads land on older data still in the
// bitmap. Only a picture with a side of one pixel would read past the
// bitmap that way: there the previous level is sampled at its own row
// length with coordinates held inside it.
void halveLevel(unsigned char* pixels, size_t capacity, unsigned int bytes, unsigned int sourceX,
                unsigned int sourceY, unsigned int width, unsigned int height)
{
    const size_t stride = 2 * size_t(width);
    auto source = [&](unsigned int x, unsigned int y) {
        size_t index = y * stride + x;
        if (index >= capacity)
            index = size_t(std::min(y, sourceY - 1)) * sourceX + std::min(x, sourceX - 1);
        return pixels + index * bytes;
    };
    for (unsigned int y = 0; y < height; y++) {
        for (unsigned int x = 0; x < width; x++) {
            const unsigned char* a = source(2 * x, 2 * y);
            const unsigned char* b = source(2 * x + 1, 2 * y);
            const unsigned char* c = source(2 * x, 2 * y + 1);
            const unsigned char* d = source(2 * x + 1, 2 * y + 1);
            unsigned char* destination = pixels + (size_t(y) * width + x) * bytes;
            for (unsigned int channel = 0; channel < bytes; channel++)
                destination[channel] = (a[channel] + b[channel] + c[channel] + d[channel]) >> 2;
        }
    }
}

GLenum glFormatOf(unsigned int format) { return format == 3 ? GL_RGB : GL_RGBA; }

}  // namespace

PVTEXTURE::PVTEXTURE() :
    id(kvfNewId()),
    timeStamp(0),
    references(0),
    bitmap(nullptr),
    sizeX(0),
    sizeY(0),
    memorySize(0),
    format(0),
    cubeType(0),
    glId(0),
    trilinear(true),
    mipmapped(true),
    clamped(false),
    mipmapCharged(false),
    previous(nullptr),
    next(nullptr)
{
    snprintf(filename, sizeof(filename), "[texture %d]", id);
    Registry::append(this);
}

PVTEXTURE::~PVTEXTURE()
{
    unload(true);
    kvfReleaseId(id);
    Registry::remove(this);
    // A later texture at the same address must not look bound already.
    for (PVTEXTURE*& cached : channelCache)
        if (cached == this)
            cached = nullptr;
}

bool PVTEXTURE::cleanUp()
{
    if (!firstTexture)
        return false;
    const int count = Registry::deleteAll();
    kvfLog("   %d texture(s) released\n", count);
    return true;
}

PVTEXTURE* PVTEXTURE::findByFilename(const char* name)
{
    return Registry::findByText(&PVTEXTURE::filename, name);
}
PVTEXTURE* PVTEXTURE::findOrLoad(const char* name, bool* loadedNow)
{
    PVTEXTURE* texture = findByFilename(name);
    if (loadedNow)
        *loadedNow = !texture;
    if (!texture) {
        texture = new PVTEXTURE();
        if (!texture->load(name)) {
            delete texture;
            return nullptr;
        }
    }
    return texture;
}

PVTEXTURE* PVTEXTURE::acquire(const char* name, bool* loadedNow)
{
    PVTEXTURE* texture = findOrLoad(name, loadedNow);
    if (texture)
        texture->incReferences();
    return texture;
}

PVTEXTURE* PVTEXTURE::findById(unsigned int wanted) { return Registry::findByValue(&PVTEXTURE::id, wanted); }
unsigned int PVTEXTURE::getNumberOfTextures() { return Registry::count(); }
PVTEXTURE* PVTEXTURE::getFirst() { return firstTexture; }
PVTEXTURE* PVTEXTURE::getNext() { return next; }
PVTEXTURE* PVTEXTURE::getPrevious() { return previous; }

void PVTEXTURE::setPath(const char* path)
{
    kvfCopyIfFits(texturePath, sizeof texturePath, path ? path : "");
}

char* PVTEXTURE::getPath() { return texturePath; }
int PVTEXTURE::getUsedMemory() { return int(usedMemory); }

unsigned int PVTEXTURE::getId() { return id; }
char* PVTEXTURE::getFilename() { return filename; }
long PVTEXTURE::getTimeStamp() { return timeStamp; }
int PVTEXTURE::getReferences() { return references; }
void PVTEXTURE::incReferences() { references++; }
void PVTEXTURE::decReferences() { references--; }
unsigned char* PVTEXTURE::getBitmap() { return bitmap; }
unsigned int PVTEXTURE::getSizeX() { return sizeX; }
unsigned int PVTEXTURE::getSizeY() { return sizeY; }
unsigned int PVTEXTURE::getMemorySize() { return memorySize; }
unsigned int PVTEXTURE::getFormat() { return format; }
unsigned int PVTEXTURE::getGLId() { return glId; }
bool PVTEXTURE::isLoaded() { return glId != 0; }
bool PVTEXTURE::isTrilinear() { return trilinear; }
bool PVTEXTURE::isMipmapped() { return mipmapped; }
bool PVTEXTURE::isClamped() { return clamped; }
void PVTEXTURE::setCubeType(unsigned int type) { cubeType = type; }
unsigned int PVTEXTURE::getCubeType() { return cubeType; }

// A texture is found by its file name: a name the field cannot hold whole is
// refused rather than cut.
bool PVTEXTURE::acceptsName(const char* name)
{
    if (name && strnlen(name, PV_TEXTURE_NAME_SIZE) < PV_TEXTURE_NAME_SIZE)
        return true;
    kvfLog("   [!] Invalid params @ PVTEXTURE@loadTGA\n");
    return false;
}

bool PVTEXTURE::load(const char* name)
{
    if (!acceptsName(name))
        return false;
    if (strcmp(name, dynamicName) == 0)
        return true;
    char path[2 * PV_TEXTURE_NAME_SIZE];
    snprintf(path, sizeof(path), "%s%s", texturePath, name);
    FILE* file = kvfOpenReadable(path);
    if (!file) {
        kvfLog("   [!] Unable to open file %s @ PVTEXTURE::loadTGA\n", name);
        return false;
    }
    fseek(file, 0, SEEK_END);
    const long size = std::max(ftell(file), 0L);
    fseek(file, 0, SEEK_SET);
    // At least one byte, so that an empty file is not taken for a lack of memory.
    unsigned char* buffer = static_cast<unsigned char*>(kvfMalloc(unsigned(std::max(size, 1L))));
    if (!buffer) {
        kvfLog("   [!] Out of memory for %s @ PVTEXTURE::loadTGA\n", name);
        fclose(file);
        return false;
    }
    const bool complete = fread(buffer, 1, size_t(size), file) == size_t(size);
    fclose(file);
    const bool loaded = complete && loadImage(buffer, size_t(size), name);
    if (!complete)
        kvfLog("   [!] File corrupted %s @ PVTEXTURE::loadTGA\n", name);
    kvfFree(buffer);
    return loaded;
}

// The bitmap a load replaces, given back to the system-memory account.
void PVTEXTURE::releaseLoadedBitmap()
{
    if (!bitmap)
        return;
    releaseBitmap();
    usedMemory -= memorySize;
}

// What every successful load records: sizes, the memory charged (four bytes
// a pixel whatever the format) and the name.
void PVTEXTURE::storeLoaded(unsigned int width, unsigned int height, const char* name)
{
    sizeX = width;
    sizeY = height;
    memorySize = sizeX * sizeY * 4;
    usedMemory += memorySize;
    // name may be this texture's own filename (a reload after eviction).
    kvfCopyIfFits(filename, sizeof filename, name);
}

void PVTEXTURE::releaseBitmap()
{
    kvfFree(bitmap);
    bitmap = nullptr;
}

bool PVTEXTURE::create(unsigned int newSizeX, unsigned int newSizeY, unsigned int newFormat)
{
    if (newSizeX > PV_TEXTURE_MAX_SIZE || newSizeY > PV_TEXTURE_MAX_SIZE ||
        newFormat < DYNAMIC_FORMAT_FIRST || newFormat > DYNAMIC_FORMAT_LAST) {
        kvfLog("   [!] Invalid params @ PVTEXTURE::create\n");
        return false;
    }
    if (bitmap)
        releaseBitmap();
    if (glId) {
        glDeleteTextures(1, &glId);
        PVFRAMESTATE::popVideoMemory(memorySize);
        glId = 0;
    }
    if (newFormat <= 4) {
        const unsigned int bytes = newSizeX * newSizeY * newFormat;
        bitmap = static_cast<unsigned char*>(kvfMalloc(bytes));
        if (!bitmap) {
            kvfLog("   [!] Out of memory @ PVTEXTURE::create\n");
            return false;
        }
        memset(bitmap, 0, bytes);
    }
    sizeX = newSizeX;
    sizeY = newSizeY;
    format = newFormat;
    kvfCopyIfFits(filename, sizeof filename, dynamicName);
    return update();
}

bool PVTEXTURE::update()
{
    const bool hasPixels = format <= 4;
    if (hasPixels && !bitmap) {
        kvfLog("   [!] Invalid params @ PVTEXTURE::update\n");
        return false;
    }
    if (glId) {
        glDeleteTextures(1, &glId);
        PVFRAMESTATE::popVideoMemory(memorySize);
        glId = 0;
    }
    const unsigned int needed = memorySize;
    // Every upload of a mipmapped texture doubles the charge again.
    if (mipmapped)
        memorySize *= 2;
    if (PVFRAMESTATE::getFreeVideoMemory() < needed) {
        kvfLog("   Garbage collector at %d\n", int(PVFRAMESTATE::getTimeStamp()));
        // The collector must neither delete this texture nor drop the
        // pixels about to be uploaded.
        unsigned char* pixels = bitmap;
        bitmap = nullptr;
        references++;
        garbageCollect(PVFRAMESTATE::getVideoMemory() - needed);
        references--;
        bitmap = pixels;
    }
    glGenTextures(1, &glId);
    bindForUpload();
    const GLfixed filter = trilinear ? GL_LINEAR : GL_NEAREST;
    GLfixed minFilter = filter;
    if (mipmapped)
        minFilter = trilinear ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_NEAREST;
    const GLfixed wrap = clamped ? GL_CLAMP_TO_EDGE : GL_REPEAT;
    glTexParameterx(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameterx(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, minFilter);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameterx(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    glTexParameterx(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    if (hasPixels) {
        const GLenum glFormat = glFormatOf(format);
        glTexImage2D(GL_TEXTURE_2D, 0, glFormat, sizeX, sizeY, 0, glFormat, GL_UNSIGNED_BYTE, bitmap);
        if (mipmapped)
            buildMipmaps(glFormat);
    }
    mipmapCharged = mipmapped;
    PVFRAMESTATE::pushVideoMemory(mipmapped ? memorySize * 2 : memorySize);
    return true;
}

// Levels 1.. down to the last halving of the longer side, each built from
// the previous one in place at the start of the bitmap and uploaded.
void PVTEXTURE::buildMipmaps(unsigned int glFormat)
{
    if (!sizeX || !sizeY)
        return;  // an empty picture has no levels to build
    unsigned int width = sizeX;
    unsigned int height = sizeY;
    for (int level = 1; std::max(width, height) > 1; level++) {
        const unsigned int halfX = std::max(width / 2, 1u);
        const unsigned int halfY = std::max(height / 2, 1u);
        halveLevel(bitmap, size_t(sizeX) * sizeY, format, width, height, halfX, halfY);
        width = halfX;
        height = halfY;
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glTexImage2D(GL_TEXTURE_2D, level, glFormat, width, height, 0, glFormat, GL_UNSIGNED_BYTE, bitmap);
    }
}

bool PVTEXTURE::modify(const char* pixels, bool keepCopy)
{
    if (!pixels) {
        kvfLog("   [!] Invalid params @ PVTEXTURE::modify\n");
        return false;
    }
    const unsigned int bytes = sizeX * sizeY * format;
    if (keepCopy) {
        // The first call only makes room for the copy; the next one succeeds.
        if (!bitmap) {
            bitmap = static_cast<unsigned char*>(kvfMalloc(bytes));
            if (!bitmap)
                kvfLog("   [!] Out of memory @ PVTEXTURE::modify\n");
            return false;
        }
        memcpy(bitmap, pixels, bytes);
    }
    bindForUpload();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, sizeX, sizeY, glFormatOf(format), GL_UNSIGNED_BYTE, pixels);
    return true;
}

bool PVTEXTURE::reload()
{
    if (glId)
        return false;
    if (!bitmap)
        load(filename);
    update();
    return true;
}

bool PVTEXTURE::unload(bool freeBitmap)
{
    bool released = false;
    if (freeBitmap && bitmap) {
        releaseLoadedBitmap();
        released = true;
    }
    if (glId) {
        releaseVideoMemory();
        released = true;
    }
    if (released)
        kvfLog("   %s unloaded\n", filename);
    return released;
}

// Deletes the GL texture and gives its charge back to the video account.
void PVTEXTURE::releaseVideoMemory()
{
    glDeleteTextures(1, &glId);
    glId = 0;
    PVFRAMESTATE::popVideoMemory(memorySize);
    if (mipmapCharged)
        PVFRAMESTATE::popVideoMemory(memorySize);
}

// Binds the texture to write its pixels. Unit 0's cache entry no longer
// tells what is bound, so it is dropped: the next render binds again.
void PVTEXTURE::bindForUpload()
{
    channelCache[0] = nullptr;
    glBindTexture(GL_TEXTURE_2D, glId);
}

bool PVTEXTURE::setFilter(bool newTrilinear, bool newMipmapped, bool newClamped)
{
    trilinear = newTrilinear;
    mipmapped = newMipmapped;
    clamped = newClamped;
    if (glId)
        update();
    return true;
}

bool PVTEXTURE::render(void* param)
{
    const unsigned int unit = param ? *static_cast<unsigned int*>(param) : 0;
    if (unit >= PV_TEXTURE_UNITS) {
        kvfLog("   [!] Invalid params @ PVTEXTURE::render\n");
        return false;
    }
    timeStamp = PVFRAMESTATE::getTimeStamp();
    if (channelCache[unit] == this)
        return true;
    if (!glId)
        reload();
    texturingOn(unit);
    glBindTexture(GL_TEXTURE_2D, glId);
    PVSHADER::bindTexture(unit);
    channelCache[unit] = this;
    return true;
}

bool PVTEXTURE::texturingOn(unsigned int unit)
{
    if (unit >= PV_TEXTURE_UNITS) {
        for (unsigned int each = 0; each < PV_TEXTURE_UNITS; each++)
            texturingOn(each);
    } else if (!channelActive[unit]) {
        glEnable(GL_TEXTURE_2D);
        channelActive[unit] = true;
    }
    return true;
}

bool PVTEXTURE::texturingOff(unsigned int unit)
{
    if (unit >= PV_TEXTURE_UNITS) {
        for (unsigned int each = 0; each < PV_TEXTURE_UNITS; each++) {
            texturingOff(each);
            channelCache[each] = nullptr;
        }
    } else if (channelActive[unit]) {
        glDisable(GL_TEXTURE_2D);
        channelActive[unit] = false;
    }
    return true;
}

bool PVTEXTURE::garbageCollect(unsigned long limit)
{
    const unsigned int count = getNumberOfTextures();
    if (!count)
        return false;
    PVTEXTURE** sorted = static_cast<PVTEXTURE**>(kvfMalloc(count * sizeof(PVTEXTURE*)));
    if (!sorted) {
        kvfLog("   [!] Out of memory @ PVTEXTURE::garbageCollect()\n");
        return false;
    }
    unsigned int filled = 0;
    for (PVTEXTURE* texture = firstTexture; texture; texture = texture->next)
        sorted[filled++] = texture;
    // Most recently rendered first: eviction starts with the newest. The
    // order is deliberate and kept: it is not to be turned into
    // least-recently-used.
    std::stable_sort(sorted, sorted + count,
                     [](const PVTEXTURE* a, const PVTEXTURE* b) { return a->timeStamp > b->timeStamp; });
    logReport(sorted, count, limit);
    for (unsigned int i = 0; i < count; i++)
        if (PVFRAMESTATE::getUsedVideoMemory() >= limit)
            sorted[i]->unload(true);
    int dead = 0;
    for (unsigned int i = 0; i < count; i++) {
        if (sorted[i]->references < 1) {
            delete sorted[i];
            dead++;
        }
    }
    kvfLog("   Memory used after : %d\n", int(PVFRAMESTATE::getUsedVideoMemory()));
    kvfLog("   Dead textures     : %d\n", dead);
    kvfLog("\n[END GARBAGE COLLECTOR]\n");
    kvfFree(sorted);
    return true;
}

void PVTEXTURE::logReport(PVTEXTURE** sorted, unsigned int count, unsigned long limit)
{
    kvfLog("[BEGIN GARBAGE COLLECTOR]\n\n");
    kvfLog("   Memory used before : %d\n", int(PVFRAMESTATE::getUsedVideoMemory()));
    kvfLog("   Memory max. to keep: %d\n", int(limit));
    kvfLog("   Candidates:\n");
    for (unsigned int i = 0; i < count; i++)
        kvfLog("      %d. %s (%d)\n", int(i), sorted[i]->filename, int(sorted[i]->timeStamp));
}
