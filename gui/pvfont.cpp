#include "gui/pvfont.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "assets/pvtexture.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "foundation/kvffile.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfparser.h"
#include "foundation/kvfstring.h"
#include "gui/pvbox.h"
#include "gui/pvtextcache.h"

#define PV_FONT_CACHE_VERTICES (PV_FONT_CACHE_GLYPHS * 6)

PVFONT* PVFONT::firstFont = nullptr;
char PVFONT::fontPath[256] = "";
GLfixed* PVFONT::fontCachedVertex = nullptr;
GLfixed* PVFONT::fontCachedTexCoord = nullptr;
GLubyte* PVFONT::fontCachedColor = nullptr;
GLushort* PVFONT::fontCachedIndex = nullptr;
unsigned int PVFONT::fontCachedCurrent = 0;
bool PVFONT::overflow = false;
GLubyte PVFONT::currentColor[24];
unsigned int PVFONT::layoutCounter = 0;

namespace {

enum EscapeKind { NOT_ESCAPE, TRUNCATED, COLOR_ESCAPE, MOVE_X, MOVE_Y };

// What the '^' at text[i] starts: a colour or offset escape with its four
// characters, a cut-off one, or nothing (the '^' is then an ordinary glyph).
EscapeKind escapeAt(const char* text, size_t i, size_t length)
{
    if (i + 1 >= length)
        return TRUNCATED;
    EscapeKind kind;
    switch (tolower(static_cast<unsigned char>(text[i + 1]))) {
    case 'c':
        kind = COLOR_ESCAPE;
        break;
    case 'x':
        kind = MOVE_X;
        break;
    case 'y':
        kind = MOVE_Y;
        break;
    default:
        return NOT_ESCAPE;
    }
    return i + 5 < length ? kind : TRUNCATED;
}

// The decimal value of the four characters that follow an escape letter.
int escapeValue(const char* digits)
{
    char value[5];
    memcpy(value, digits, 4);
    value[4] = '\0';
    return atoi(value);
}

// A whole number of pixels in 16.16 fixed point (wrapping as GL's fixed
// values do far outside the screen).
GLfixed toFixed(int64_t pixels) { return GLfixed(uint32_t(uint64_t(pixels) << 16)); }

// '0' to '8' span 0 to 255; '9' wraps to 31.
GLubyte colorByte(char digit) { return GLubyte(int(float(digit - '0') * 31.89f) & 0xFF); }

}  // namespace

PVFONT::PVFONT() :
    id(kvfNewId()),
    texture(nullptr),
    kerning(),
    charSizeX(16),
    charSizeY(16),
    previous(nullptr),
    next(nullptr),
    layout(++layoutCounter),
    inkSheet(nullptr),
    ink()
{
    snprintf(name, sizeof(name), "[font %d]", int(id));
    Registry::append(this);
}

PVFONT::~PVFONT()
{
    if (texture)
        texture->decReferences();
    kvfReleaseId(id);
    Registry::remove(this);
    forgetCachedText();
}

void PVFONT::forgetCachedText() { PVTEXTCACHE::forget(layout * 2); }

void PVFONT::relayout()
{
    forgetCachedText();
    layout = ++layoutCounter;
}

void PVFONT::setCharSizeX(unsigned int value)
{
    charSizeX = value;
    relayout();
}

void PVFONT::setCharSizeY(unsigned int value)
{
    charSizeY = value;
    relayout();
}

void PVFONT::setName(const char* newName) { kvfCopyIfFits(name, sizeof name, newName); }

bool PVFONT::setTexture(PVTEXTURE* newTexture)
{
    if (!newTexture) {
        kvfLog("   [!] Invalid params @ PVFONT::setTexture\n");
        return false;
    }
    if (texture)
        texture->decReferences();
    texture = newTexture;
    texture->incReferences();
    measureInk(texture);
    relayout();
    return true;
}

void PVFONT::measureInk(PVTEXTURE* sheet)
{
    inkSheet = nullptr;
    const unsigned char* pixels = sheet->getBitmap();
    if (!pixels || sheet->getFormat() != 4 || sheet->getSizeX() != 256 || sheet->getSizeY() != 256 ||
        strcmp(sheet->getFilename(), PVTEXTURE::dynamicName) == 0)
        return;
    for (int index = 0; index <= PV_FONT_LAST_CODE - PV_FONT_FIRST_CODE; index++) {
        PVGLYPHINK box = {16, 16, 0, 0};
        // The sheet is stored bottom-up: glyph row 0 is the image's top.
        const int cellLeft = (index % 16) * 16;
        const int cellTopRow = 255 - (index / 16) * 16;
        for (int y = 0; y < 16; y++)
            for (int x = 0; x < 16; x++)
                if (pixels[((cellTopRow - y) * 256 + cellLeft + x) * 4 + 3] != 0)
                    box = {std::min(box.left, (unsigned char)x), std::min(box.top, (unsigned char)y),
                           std::max(box.right, (unsigned char)(x + 1)),
                           std::max(box.bottom, (unsigned char)(y + 1))};
        ink[index] = box.right > box.left ? box : PVGLYPHINK {0, 0, 0, 0};
    }
    inkSheet = sheet;
}

bool PVFONT::trimsGlyphs() const
{
    return inkSheet && inkSheet == texture && charSizeX == 16 && charSizeY == 16 && !texture->isMipmapped() &&
           !texture->isTrilinear();
}

unsigned int PVFONT::cacheLayout() const { return layout * 2 + (trimsGlyphs() ? 1 : 0); }

bool PVFONT::setKerning(char c, char value)
{
    const int code = static_cast<unsigned char>(c);
    if (code < PV_FONT_FIRST_CODE || code > PV_FONT_LAST_CODE) {
        kvfLog("   [!] Invalid params @ PVFONT::setKerning\n");
        return false;
    }
    kerning[code - PV_FONT_FIRST_CODE] = static_cast<signed char>(value);
    relayout();
    return true;
}

char PVFONT::getKerning(char c) const
{
    const int code = static_cast<unsigned char>(c);
    if (code < PV_FONT_FIRST_CODE || code > PV_FONT_LAST_CODE)
        return 0;
    return static_cast<char>(kerning[code - PV_FONT_FIRST_CODE]);
}

int PVFONT::advance(char c) const { return int(charSizeX) - static_cast<signed char>(getKerning(c)); }

bool PVFONT::loadKerning(const char* file)
{
    if (!file) {
        kvfLog("   [!] Invalid params @ PVFONT::loadKerning\n");
        return false;
    }
    char path[512];
    snprintf(path, sizeof(path), "%s%s", fontPath, file);
    if (!kvfFileExists(path)) {
        kvfLog("   [!] File not found (%s) @ PVFONT::loadKerning\n", file);
        return false;
    }
    kvfParser parser;
    if (!kvfOpenParser(&parser, path))
        return false;
    kvfStripComments(&parser, '#');
    char key[32];
    int value;
    for (int c = PV_FONT_FIRST_CODE; c < PV_FONT_LAST_CODE; c++) {
        snprintf(key, sizeof(key), "PEVRANO_kerning_%c", c);
        if (kvfGetInt(&parser, key, &value))
            kerning[c - PV_FONT_FIRST_CODE] = static_cast<signed char>(value);
    }
    // Characters that cannot stand in a key: the blank, the comment mark and
    // the key/value separator.
    static const struct {
        const char* key;
        char code;
    } named[] = {
        {"PEVRANO_kerning_SPACE", ' '}, {"PEVRANO_kerning_DIESIS", '#'}, {"PEVRANO_kerning_EQUAL", '='}};
    for (const auto& entry : named)
        if (kvfGetInt(&parser, entry.key, &value))
            kerning[entry.code - PV_FONT_FIRST_CODE] = static_cast<signed char>(value);
    kvfCloseParser(&parser);
    relayout();
    return true;
}

unsigned int PVFONT::stringLength(const char* text) const
{
    if (!text) {
        kvfLog("   [!] Invalid params @ PVFONT::stringLength\n");
        return 0;
    }
    const size_t length = strlen(text);
    unsigned int width = 0;
    for (size_t i = 0; i < length; i++) {
        if (text[i] == '^') {
            const EscapeKind kind = escapeAt(text, i, length);
            if (kind == TRUNCATED)
                break;
            if (kind != NOT_ESCAPE) {
                if (kind == MOVE_X)
                    width += unsigned(escapeValue(text + i + 2));
                i += 5;
                continue;
            }
        }
        width += unsigned(advance(text[i]));
    }
    return width;
}

// The glyph cell of code c: the column deliberately steps by the cell width
// where the grid width would be expected, so fonts whose cells are not 16
// pixels wide pick shifted cells.
void PVFONT::writeGlyph(unsigned int slot, int x, int y, char c) const
{
    const int index = static_cast<unsigned char>(c) - PV_FONT_FIRST_CODE;
    const int row = index / 16;
    const int column = index - row * int(charSizeX);
    // The whole cell, or its ink: in 16.16 fixed point a sixteenth of the
    // sheet is 4096 and a texel 256, so every corner is exact in integers.
    PVGLYPHINK box = {0, 0, 16, 16};
    int64_t width = charSizeX;
    int64_t height = charSizeY;
    if (index >= 0 && trimsGlyphs()) {
        box = ink[index];
        width = box.right;
        height = box.bottom;
    }
    const GLfixed u0 = GLfixed(column * 4096 + box.left * 256);
    const GLfixed u1 = GLfixed(column * 4096 + box.right * 256);
    const GLfixed vt = GLfixed((16 - row) * 4096 - box.top * 256);
    const GLfixed vb = GLfixed((16 - row) * 4096 - box.bottom * 256);
    const GLfixed left = toFixed(int64_t(x) + box.left);
    const GLfixed right = toFixed(int64_t(x) + width);
    const GLfixed top = toFixed(int64_t(y) + box.top);
    const GLfixed bottom = toFixed(int64_t(y) + height);
    const GLfixed positions[12] = {left,  bottom, right, bottom, left, top,
                                   right, bottom, right, top,    left, top};
    const GLfixed uv[12] = {u0, vb, u1, vb, u0, vt, u1, vb, u1, vt, u0, vt};
    memcpy(fontCachedVertex + slot * 12, positions, sizeof(positions));
    memcpy(fontCachedTexCoord + slot * 12, uv, sizeof(uv));
    memcpy(fontCachedColor + slot * 24, currentColor, sizeof(currentColor));
}

void PVFONT::pointArraysAt(unsigned int slot)
{
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, fontCachedColor + slot * 24);
    glVertexPointer(2, GL_FIXED, 0, fontCachedVertex + slot * 12);
    glTexCoordPointer(2, GL_FIXED, 0, fontCachedTexCoord + slot * 12);
}

void PVFONT::flushCache(unsigned int first, unsigned int count)
{
    pointArraysAt(0);
    glDrawElements(GL_TRIANGLES, GLsizei(count * 6), GL_UNSIGNED_SHORT, fontCachedIndex + first * 6);
}

bool PVFONT::putChar(int x, int y, char c, bool immediate)
{
    if (!fontCachedVertex)
        return false;
    if (immediate && !texture)
        return false;
    writeGlyph(fontCachedCurrent, x, y, c);
    if (immediate) {
        PVBOX::bindTexture(texture);
        PVOPENGL::blendingOn();
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        pointArraysAt(fontCachedCurrent);
        glDrawArrays(GL_TRIANGLES, 0, 6);
        return true;
    }
    if (++fontCachedCurrent >= PV_FONT_CACHE_GLYPHS) {
        overflow = true;
        flushCache(0, fontCachedCurrent);
        glFinish();
        fontCachedCurrent = 0;
    }
    return true;
}

bool PVFONT::putString(int x, int y, const char* format, ...)
{
    if (!format) {
        kvfLog("   [!] Invalid params @ PVFONT::putString\n");
        return false;
    }
    if (!texture || !fontCachedVertex)
        return false;
    static char text[PV_FONT_STRING_SIZE];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return drawFormatted(x, y, text);
}

bool PVFONT::putText(int x, int y, const char* text)
{
    if (!text) {
        kvfLog("   [!] Invalid params @ PVFONT::putText\n");
        return false;
    }
    if (!texture || !fontCachedVertex)
        return false;
    static char formatted[PV_FONT_STRING_SIZE];
    size_t written = 0;
    for (const char* c = text; *c && written < sizeof(formatted) - 1; c++) {
        if (*c != '%') {
            formatted[written++] = *c;
        } else if (c[1] == '%') {
            formatted[written++] = '%';
            c++;
        } else {
            // Flags, width, precision and length, then the conversion letter.
            c++;
            while (*c && strchr("-+ #0123456789.*hlLqjzt", *c))
                c++;
            if (!*c)
                break;
        }
    }
    formatted[written] = '\0';
    return drawFormatted(x, y, formatted);
}

// A string drawn before by the same layout at the same place is drawn from
// its buffer; a new one is laid out, kept in a buffer when it fits the text
// cache, and drawn. Either way one draw call.
bool PVFONT::drawFormatted(int x, int y, const char* text)
{
    PVBOX::bindTexture(texture);
    PVOPENGL::blendingOn();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    // Glyphs queued by putChar are dropped by the next string, as when the
    // string is laid out; cached strings stand alone.
    const bool cacheable = fontCachedCurrent == 0;
    PVTEXTCACHEKEY key = {};
    if (cacheable) {
        key = PVTEXTCACHE::makeKey(cacheLayout(), x, y, text);
        if (const PVTEXTCACHEENTRY* cached = PVTEXTCACHE::find(key)) {
            for (int v = 0; v < 6; v++)
                memcpy(currentColor + v * 4, PVTEXTCACHE::lastColor(cached), 4);
            overflow = false;
            PVTEXTCACHE::draw(cached);
            return true;
        }
    }
    const unsigned int start = fontCachedCurrent;
    if (!layOut(x, y, text))
        return false;
    const PVGLYPHARRAYS glyphs = {fontCachedVertex, fontCachedTexCoord, fontCachedColor, fontCachedCurrent};
    const PVTEXTCACHEENTRY* stored =
        cacheable && !overflow ? PVTEXTCACHE::store(key, glyphs, currentColor) : nullptr;
    if (stored)
        PVTEXTCACHE::draw(stored);
    else if (overflow && fontCachedCurrent > 0)
        flushCache(0, fontCachedCurrent);  // a flush in the middle drew what came before
    else if (!overflow && fontCachedCurrent > start)
        flushCache(start, fontCachedCurrent - start);
    fontCachedCurrent = 0;
    return true;
}

bool PVFONT::layOut(int x, int y, const char* text)
{
    memset(currentColor, 255, sizeof(currentColor));
    overflow = false;
    int dx = 0;
    int dy = 0;
    const size_t length = strlen(text);
    for (size_t i = 0; i < length; i++) {
        const char c = text[i];
        if (c == '\n') {
            dx = 0;
            dy += int(charSizeY);
            continue;
        }
        if (c == '^') {
            const EscapeKind kind = escapeAt(text, i, length);
            if (kind == TRUNCATED)
                return false;
            if (kind != NOT_ESCAPE) {
                const char* argument = text + i + 2;
                if (kind == COLOR_ESCAPE) {
                    for (int v = 0; v < 6; v++)
                        for (int channel = 0; channel < 4; channel++)
                            currentColor[v * 4 + channel] = colorByte(argument[channel]);
                } else if (kind == MOVE_X) {
                    dx += escapeValue(argument);
                } else {
                    dy += escapeValue(argument);
                }
                i += 5;
                continue;
            }
        }
        putChar(x + dx, y + dy, c, false);
        dx += advance(c);
    }
    return true;
}

int PVFONT::format(const char* in, char* out, unsigned int width, unsigned int)
{
    if (!in || !out) {
        kvfLog("   [!] Invalid params @ PVFONT::format\n");
        return 0;
    }
    const size_t length = strlen(in);
    size_t written = 0;
    long lineWidth = 0;
    int height = 0;
    size_t breakAt = 0;
    bool hasBreak = false;
    long widthAtBreak = 0;
    for (size_t i = 0; i < length; i++) {
        while (in[i] == '^' && i + 6 < length) {
            const EscapeKind kind = escapeAt(in, i, length);
            if (kind == NOT_ESCAPE)
                break;
            if (kind == MOVE_X)
                lineWidth += escapeValue(in + i + 2);
            else if (kind == MOVE_Y)
                height += escapeValue(in + i + 2);
            memcpy(out + written, in + i, 6);
            written += 6;
            i += 6;
        }
        const char c = in[i];
        const int code = static_cast<unsigned char>(c);
        if (code < PV_FONT_FIRST_CODE || code > PV_FONT_LAST_CODE) {
            if (c == '\n') {
                lineWidth = 0;
                height += int(charSizeY);
            }
        } else if (lineWidth + advance(c) > long(width)) {
            if (!hasBreak) {
                out[written++] = '\n';
                lineWidth = 0;
            } else {
                out[breakAt] = '\n';
                lineWidth -= widthAtBreak;
                hasBreak = false;
            }
            height += int(charSizeY);
        }
        out[written++] = c;
        if (c == ' ' || c == '\n') {
            breakAt = written - 1;
            hasBreak = true;
            widthAtBreak = lineWidth;
        }
        lineWidth += advance(c);
    }
    out[written] = '\0';
    return height;
}

bool PVFONT::init()
{
    fontCachedVertex = static_cast<GLfixed*>(kvfMalloc(PV_FONT_CACHE_VERTICES * 2 * sizeof(GLfixed)));
    fontCachedTexCoord = static_cast<GLfixed*>(kvfMalloc(PV_FONT_CACHE_VERTICES * 2 * sizeof(GLfixed)));
    fontCachedColor = static_cast<GLubyte*>(kvfMalloc(PV_FONT_CACHE_VERTICES * 4));
    fontCachedIndex = static_cast<GLushort*>(kvfMalloc(PV_FONT_CACHE_VERTICES * sizeof(GLushort)));
    if (!fontCachedVertex || !fontCachedTexCoord || !fontCachedColor || !fontCachedIndex) {
        free();
        kvfLog("   [!] Out of memory @ PVFONT::init\n");
        return false;
    }
    for (unsigned int i = 0; i < PV_FONT_CACHE_VERTICES; i++)
        fontCachedIndex[i] = GLushort(i);
    fontCachedCurrent = 0;
    if (!PVTEXTCACHE::init()) {
        free();
        kvfLog("   [!] Out of memory @ PVFONT::init\n");
        return false;
    }
    return true;
}

// Releases one cache array and forgets it.
template <typename T> static void releaseArray(T*& array)
{
    if (array)
        kvfFree(array);
    array = nullptr;
}

bool PVFONT::free()
{
    releaseArray(fontCachedVertex);
    releaseArray(fontCachedTexCoord);
    releaseArray(fontCachedColor);
    releaseArray(fontCachedIndex);
    fontCachedCurrent = 0;
    PVTEXTCACHE::free();
    return true;
}

bool PVFONT::cleanUp()
{
    const int released = Registry::deleteAll();
    if (released == 0)
        return false;
    kvfLog("   %d font(s) released\n", released);
    return true;
}

void PVFONT::reset()
{
    fontCachedCurrent = 0;
    PVTEXTCACHE::newPass();
}

int PVFONT::getNumberOfFonts() { return int(Registry::count()); }

PVFONT* PVFONT::findByName(const char* wanted) { return Registry::findByText(&PVFONT::name, wanted); }

PVFONT* PVFONT::findById(unsigned int wanted) { return Registry::findByValue(&PVFONT::id, wanted); }

void PVFONT::setPath(const char* path) { kvfCopyIfFits(fontPath, sizeof fontPath, path ? path : ""); }
