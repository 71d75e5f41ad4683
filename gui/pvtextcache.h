// Text cache: the glyphs of strings already drawn, kept in GL buffer objects
// so that a string drawn again, unchanged, by the same font layout at the
// same place is one draw from its buffer and its vertices are not handed to
// GL again. Entries are found by their text, place and the font's layout
// stamp; the least recently drawn gives way when the cache is full, and
// entries left undrawn for a while give their buffers back.
#ifndef PEVRANO_GUI_PVTEXTCACHE_H
#define PEVRANO_GUI_PVTEXTCACHE_H

#include <GLES/gl.h>

#include <cstddef>

// Strings up to this length (escapes included) are cached.
#define PV_TEXT_CACHE_TEXT 256
#define PV_TEXT_CACHE_ENTRIES 1024
// An entry undrawn for this many 2D passes has its buffer deleted at the
// next sweep (every this many passes).
#define PV_TEXT_CACHE_IDLE_PASSES 64

struct PVTEXTCACHEENTRY;

// A string looked up and, on a miss, stored: its length and hash are worked
// out once for both. length is PV_TEXT_CACHE_TEXT for a text too long to be
// cached (its hash then unset).
struct PVTEXTCACHEKEY {
    unsigned int layout;
    int x, y;
    const char* text;
    size_t length;
    unsigned int hash;
};

// The glyph arrays of a drawn string: six vertices per glyph.
struct PVGLYPHARRAYS {
    const GLfixed* vertices;
    const GLfixed* texCoords;
    const GLubyte* colors;
    unsigned int glyphs;
};

class PVTEXTCACHE {
public:
    static bool init();
    // Deletes every buffer and the entries.
    static void free();
    // Called at the start of each 2D pass: ages the entries.
    static void newPass();
    static PVTEXTCACHEKEY makeKey(unsigned int layout, int x, int y, const char* text);
    // The cached string, or null.
    static const PVTEXTCACHEENTRY* find(const PVTEXTCACHEKEY& key);
    // Keeps the glyphs of a string just laid out and returns its entry; null
    // when the text is too long to be cached or the cache is not running.
    static const PVTEXTCACHEENTRY* store(const PVTEXTCACHEKEY& key, const PVGLYPHARRAYS& glyphs,
                                         const GLubyte lastColor[4]);
    // Draws a cached string with the texture and blending already set.
    static void draw(const PVTEXTCACHEENTRY* entry);
    // The colour the string's last escape left (opaque white without one).
    static const GLubyte* lastColor(const PVTEXTCACHEENTRY* entry);
    // Deletes the entries of a font layout that no longer exists: both its
    // variants, which differ in the lowest bit of the layout stamp only.
    static void forget(unsigned int layout);
    // Entries holding a buffer.
    static unsigned int getNumberOfBuffers();

private:
    static unsigned int bucketOf(unsigned int hash);
    static void unlink(int index);
    static void release(int index);
    static int freeSlot();

    static PVTEXTCACHEENTRY* entries;
    static int* buckets;
    static unsigned int pass;
};

#endif
