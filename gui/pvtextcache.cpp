#include "gui/pvtextcache.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "foundation/kvfmemory.h"

#define PV_TEXT_CACHE_BUCKETS 2048

struct PVTEXTCACHEENTRY {
    GLuint buffer;  // 0 for a free entry
    unsigned int layout;
    int x, y;
    unsigned int hash;
    unsigned int glyphs;
    unsigned int lastPass;
    int nextInBucket;
    GLubyte lastColor[4];
    char text[PV_TEXT_CACHE_TEXT];
};

PVTEXTCACHEENTRY* PVTEXTCACHE::entries = nullptr;
int* PVTEXTCACHE::buckets = nullptr;
unsigned int PVTEXTCACHE::pass = 0;

namespace {

// FNV-1a over the text, then the place and the layout.
unsigned int keyHash(unsigned int layout, int x, int y, const char* text, size_t length)
{
    uint32_t hash = 2166136261u;
    auto mix = [&hash](uint32_t byte) { hash = (hash ^ byte) * 16777619u; };
    for (size_t i = 0; i < length; i++)
        mix(static_cast<unsigned char>(text[i]));
    for (uint32_t value : {uint32_t(x), uint32_t(y), uint32_t(layout)})
        for (int shift = 0; shift < 32; shift += 8)
            mix((value >> shift) & 0xFF);
    return hash;
}

// Byte offsets of the three arrays in a string's buffer.
size_t texCoordsOffset(unsigned int glyphs) { return size_t(glyphs) * 12 * sizeof(GLfixed); }
size_t colorsOffset(unsigned int glyphs) { return texCoordsOffset(glyphs) * 2; }

}  // namespace

bool PVTEXTCACHE::init()
{
    entries = static_cast<PVTEXTCACHEENTRY*>(kvfMalloc(PV_TEXT_CACHE_ENTRIES * sizeof(PVTEXTCACHEENTRY)));
    buckets = static_cast<int*>(kvfMalloc(PV_TEXT_CACHE_BUCKETS * sizeof(int)));
    if (!entries || !buckets) {
        free();
        return false;
    }
    memset(entries, 0, PV_TEXT_CACHE_ENTRIES * sizeof(PVTEXTCACHEENTRY));
    for (int i = 0; i < PV_TEXT_CACHE_BUCKETS; i++)
        buckets[i] = -1;
    pass = 0;
    return true;
}

void PVTEXTCACHE::free()
{
    if (entries)
        for (int i = 0; i < PV_TEXT_CACHE_ENTRIES; i++)
            if (entries[i].buffer)
                glDeleteBuffers(1, &entries[i].buffer);
    if (entries)
        kvfFree(entries);
    if (buckets)
        kvfFree(buckets);
    entries = nullptr;
    buckets = nullptr;
}

unsigned int PVTEXTCACHE::bucketOf(unsigned int hash) { return hash & (PV_TEXT_CACHE_BUCKETS - 1); }

void PVTEXTCACHE::unlink(int index)
{
    int* link = &buckets[bucketOf(entries[index].hash)];
    while (*link != index)
        link = &entries[*link].nextInBucket;
    *link = entries[index].nextInBucket;
}

void PVTEXTCACHE::release(int index)
{
    unlink(index);
    glDeleteBuffers(1, &entries[index].buffer);
    entries[index].buffer = 0;
}

void PVTEXTCACHE::newPass()
{
    if (!entries)
        return;
    pass++;
    if (pass % PV_TEXT_CACHE_IDLE_PASSES != 0)
        return;
    for (int i = 0; i < PV_TEXT_CACHE_ENTRIES; i++)
        if (entries[i].buffer && pass - entries[i].lastPass >= PV_TEXT_CACHE_IDLE_PASSES)
            release(i);
}

PVTEXTCACHEKEY PVTEXTCACHE::makeKey(unsigned int layout, int x, int y, const char* text)
{
    PVTEXTCACHEKEY key = {layout, x, y, text, strnlen(text, PV_TEXT_CACHE_TEXT), 0};
    if (key.length < PV_TEXT_CACHE_TEXT)
        key.hash = keyHash(layout, x, y, text, key.length);
    return key;
}

const PVTEXTCACHEENTRY* PVTEXTCACHE::find(const PVTEXTCACHEKEY& key)
{
    if (!entries || key.length >= PV_TEXT_CACHE_TEXT)
        return nullptr;
    for (int i = buckets[bucketOf(key.hash)]; i >= 0; i = entries[i].nextInBucket) {
        PVTEXTCACHEENTRY& entry = entries[i];
        if (entry.hash == key.hash && entry.layout == key.layout && entry.x == key.x && entry.y == key.y &&
            memcmp(entry.text, key.text, key.length + 1) == 0) {
            entry.lastPass = pass;
            return &entry;
        }
    }
    return nullptr;
}

// A free entry, or the one drawn longest ago with its buffer kept for reuse.
int PVTEXTCACHE::freeSlot()
{
    int oldest = 0;
    for (int i = 0; i < PV_TEXT_CACHE_ENTRIES; i++) {
        if (!entries[i].buffer)
            return i;
        if (pass - entries[i].lastPass > pass - entries[oldest].lastPass)
            oldest = i;
    }
    unlink(oldest);
    return oldest;
}

const PVTEXTCACHEENTRY* PVTEXTCACHE::store(const PVTEXTCACHEKEY& key, const PVGLYPHARRAYS& glyphs,
                                           const GLubyte lastColor[4])
{
    if (!entries || key.length >= PV_TEXT_CACHE_TEXT || glyphs.glyphs == 0)
        return nullptr;
    const int index = freeSlot();
    PVTEXTCACHEENTRY& entry = entries[index];
    if (!entry.buffer)
        glGenBuffers(1, &entry.buffer);
    entry.layout = key.layout;
    entry.x = key.x;
    entry.y = key.y;
    entry.hash = key.hash;
    entry.glyphs = glyphs.glyphs;
    entry.lastPass = pass;
    memcpy(entry.lastColor, lastColor, 4);
    memcpy(entry.text, key.text, key.length + 1);
    entry.nextInBucket = buckets[bucketOf(entry.hash)];
    buckets[bucketOf(entry.hash)] = index;

    const size_t positions = texCoordsOffset(glyphs.glyphs);
    const size_t colors = size_t(glyphs.glyphs) * 24;
    glBindBuffer(GL_ARRAY_BUFFER, entry.buffer);
    glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(positions * 2 + colors), nullptr, GL_STATIC_DRAW);
    glBufferSubData(GL_ARRAY_BUFFER, 0, GLsizeiptr(positions), glyphs.vertices);
    glBufferSubData(GL_ARRAY_BUFFER, GLintptr(positions), GLsizeiptr(positions), glyphs.texCoords);
    glBufferSubData(GL_ARRAY_BUFFER, GLintptr(positions * 2), GLsizeiptr(colors), glyphs.colors);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return &entry;
}

void PVTEXTCACHE::draw(const PVTEXTCACHEENTRY* entry)
{
    const auto at = [](size_t offset) { return reinterpret_cast<const void*>(offset); };
    glBindBuffer(GL_ARRAY_BUFFER, entry->buffer);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, at(colorsOffset(entry->glyphs)));
    glVertexPointer(2, GL_FIXED, 0, at(0));
    glTexCoordPointer(2, GL_FIXED, 0, at(texCoordsOffset(entry->glyphs)));
    glDrawArrays(GL_TRIANGLES, 0, GLsizei(entry->glyphs * 6));
    // Everything else draws from client arrays.
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

const GLubyte* PVTEXTCACHE::lastColor(const PVTEXTCACHEENTRY* entry) { return entry->lastColor; }

void PVTEXTCACHE::forget(unsigned int layout)
{
    if (!entries)
        return;
    for (int i = 0; i < PV_TEXT_CACHE_ENTRIES; i++)
        if (entries[i].buffer && entries[i].layout >> 1 == layout >> 1)
            release(i);
}

unsigned int PVTEXTCACHE::getNumberOfBuffers()
{
    unsigned int count = 0;
    if (entries)
        for (int i = 0; i < PV_TEXT_CACHE_ENTRIES; i++)
            count += entries[i].buffer != 0;
    return count;
}
