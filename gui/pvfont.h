/// \file
/// Font: a fixed-cell bitmap font. One texture holds the glyphs of codes 32 to
/// 127 in a 16 by 16 grid; text is queued glyph by glyph in a class-wide cache
/// and each string is drawn with one indexed draw call. Per-character kerning
/// narrows the advance and can be read from a key/value file.
#ifndef PEVRANO_GUI_PVFONT_H
#define PEVRANO_GUI_PVFONT_H

#include <GLES/gl.h>

#include "core/pvregistry.h"

class PVTEXTURE;

/// Where a glyph's ink lies in its cell: pixels from the cell's top-left,
/// right and bottom excluded; all zero for a blank glyph.
struct PVGLYPHINK {
    /// The ink's box in the cell.
    ///@{
    unsigned char left, top, right, bottom;
    ///@}
};

/// Size of a font name, of the glyph cache (glyphs per draw) and of one
/// formatted string, terminators included.
///@{
#define PV_FONT_NAME_SIZE 256
#define PV_FONT_CACHE_GLYPHS 1024
#define PV_FONT_STRING_SIZE 4096
///@}
/// Codes 32 to 127 have a glyph and a kerning entry.
///@{
#define PV_FONT_FIRST_CODE 32
#define PV_FONT_LAST_CODE 127
///@}

/// A bitmap font: a texture sheet of 16 x 16 cells for codes 32 to 127 and
/// a kerning table. Fonts register themselves; PEVRANO::free deletes those left.
class PVFONT {
public:
    /// Creation and copying; a font cannot be copy-constructed.
    ///@{
    PVFONT();
    PVFONT(const PVFONT& other) = delete;
    /// Copies the whole record, registry links included.
    PVFONT& operator=(const PVFONT& other) = default;
    ///@}
    /// Lets go of the texture and the id and leaves the registry.
    ~PVFONT();

    /// Name (copied when shorter than 256 characters) and registry id.
    ///@{
    void setName(const char* newName);
    const char* getName() const { return name; }
    unsigned int getId() const { return id; }
    ///@}
    /// Cell width and height in pixels; text is laid out again.
    ///@{
    void setCharSizeX(unsigned int value);
    void setCharSizeY(unsigned int value);
    unsigned int getCharSizeX() const { return charSizeX; }
    unsigned int getCharSizeY() const { return charSizeY; }
    ///@}
    /// Neighbours in the registry of fonts.
    ///@{
    PVFONT* getNext() const { return next; }
    PVFONT* getPrevious() const { return previous; }
    ///@}
    /// The glyph sheet, null until set.
    PVTEXTURE* getTexture() const { return texture; }

    /// Holds one reference on the sheet and lets go of the old one; false with
    /// "Invalid params" for null.
    bool setTexture(PVTEXTURE* newTexture);
    /// Pixels taken off a code's advance; false with "Invalid params" for a
    /// code outside 32 to 127.
    bool setKerning(char c, char value);
    /// Kerning of a code, 0 outside 32 to 127.
    char getKerning(char c) const;
    /// Reads the kerning of the file at the font path followed by file.
    bool loadKerning(const char* file);

    /// Width in pixels of one line of text, escapes included.
    unsigned int stringLength(const char* text) const;
    /// Queues one glyph, or with immediate draws it at once.
    bool putChar(int x, int y, char c, bool immediate);
    /// printf-style text with colour and offset escapes, one draw call.
    bool putString(int x, int y, const char* format, ...);
    /// Widget text, read as a format without arguments: "%%" draws '%' and
    /// any other conversion draws nothing (it has no argument to read).
    bool putText(int x, int y, const char* text);
    /// Copies in to out breaking lines at spaces so that none is wider than
    /// width; returns the height the breaks add. out must hold twice the
    /// length of in plus one. The last argument is not used.
    int format(const char* in, char* out, unsigned int width, unsigned int unused);

    /// Class-wide state, for the engine: init allocates the glyph cache (false
    /// with "Out of memory"), free releases it, cleanUp deletes every font
    /// (false when there was none), reset starts a new pass.
    ///@{
    static bool init();
    static bool free();
    static bool cleanUp();
    static void reset();
    ///@}
    /// Registry look-ups: the count, the first font, the first with a name or
    /// id (null if none).
    ///@{
    static int getNumberOfFonts();
    static PVFONT* getFirst() { return firstFont; }
    static PVFONT* findByName(const char* wanted);
    static PVFONT* findById(unsigned int wanted);
    ///@}
    /// Folder prefix of kerning files; a null path stores "".
    ///@{
    static void setPath(const char* path);
    static char* getPath() { return fontPath; }
    ///@}
    /// Glyphs queued and not yet drawn.
    static unsigned int getCachedGlyphs() { return fontCachedCurrent; }

private:
    int advance(char c) const;
    static void flushCache(unsigned int first, unsigned int count);
    /// Draws text already formatted (escapes still in it).
    bool drawFormatted(int x, int y, const char* text);
    static void pointArraysAt(unsigned int slot);
    void writeGlyph(unsigned int slot, int x, int y, char c) const;
    /// Lays the glyphs of text out in the cache arrays; false for a cut
    /// escape (the glyphs before it stay queued).
    bool layOut(int x, int y, const char* text);
    /// Measures the ink of every glyph of a sheet read from a file, 256 x 256
    /// texels of RGBA; other sheets are drawn whole.
    void measureInk(PVTEXTURE* sheet);
    /// Whether glyphs are drawn trimmed to their ink: the measured sheet at
    /// one texel per pixel, sampled nearest. Pixels outside the ink have
    /// alpha 0 and leave the screen as it is, so trimming draws the same
    /// pixels with a fifth of the fill.
    bool trimsGlyphs() const;
    /// The layout and whether glyphs are trimmed, as the text cache keys it.
    unsigned int cacheLayout() const;
    /// A new layout stamp after a change of cell size or kerning: strings
    /// cached with the old one are no longer drawn.
    void relayout();
    /// Deletes the cached strings of the current layout.
    void forgetCachedText();

    unsigned int id;
    PVTEXTURE* texture;
    signed char kerning[PV_FONT_LAST_CODE - PV_FONT_FIRST_CODE + 1];
    unsigned int charSizeX;
    unsigned int charSizeY;
    char name[PV_FONT_NAME_SIZE];
    PVFONT* previous;
    PVFONT* next;
    /// Identifies the cell sizes and kerning the font lays text out with.
    unsigned int layout;
    PVTEXTURE* inkSheet;
    PVGLYPHINK ink[PV_FONT_LAST_CODE - PV_FONT_FIRST_CODE + 1];

    static PVFONT* firstFont;
    static char fontPath[256];
    static GLfixed* fontCachedVertex;
    static GLfixed* fontCachedTexCoord;
    static GLubyte* fontCachedColor;
    static GLushort* fontCachedIndex;
    static unsigned int fontCachedCurrent;
    static bool overflow;
    static GLubyte currentColor[24];
    static unsigned int layoutCounter;

    using Registry = PVREGISTRY<PVFONT, &PVFONT::firstFont, &PVFONT::previous, &PVFONT::next>;
};

#endif
