// pevrano-font: makes a font for the engine from a TrueType or OpenType file.
//
//   pevrano-font <typeface.ttf> <sheet.tga> <kerning.txt> [pixel size]
//
// The sheet is a 256 x 256, 32-bit TGA: codes 32 to 127 in a 16 x 16 grid of
// 16-pixel cells, code 32 in the top-left cell, white glyphs whose coverage is
// the alpha channel; code 127 is the text caret (a thin bar). The kerning file
// gives, per character, how many pixels the typeface's advance falls short of
// the cell width, so that text set by the engine advances as the typeface
// does. Single-character keys come first: the engine finds keys inside longer
// ones, so the named keys (SPACE, DIESIS, EQUAL) must come after "S", "D", "E".
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

const int sheetSize = 256;
const int cellSize = 16;
const int firstCode = 32;
const int lastCode = 127;
const int caretCode = 127;

struct Sheet {
    // Coverage, row 0 at the top of the image.
    std::vector<unsigned char> alpha = std::vector<unsigned char>(sheetSize * sheetSize, 0);

    void cover(int x, int y, unsigned char value)
    {
        if (x >= 0 && y >= 0 && x < sheetSize && y < sheetSize)
            alpha[y * sheetSize + x] = std::max(alpha[y * sheetSize + x], value);
    }
};

// Top-left corner of the cell of code c.
void cellOf(int c, int& left, int& top)
{
    const int index = c - firstCode;
    left = (index % 16) * cellSize;
    top = (index / 16) * cellSize;
}

// Copies the rendered glyph into its cell, on the baseline, clipped to the cell.
void placeGlyph(Sheet& sheet, const FT_GlyphSlot glyph, int c, int baseline)
{
    int left, top;
    cellOf(c, left, top);
    const FT_Bitmap& bitmap = glyph->bitmap;
    for (unsigned int row = 0; row < bitmap.rows; row++) {
        const int y = baseline - glyph->bitmap_top + int(row);
        if (y < 0 || y >= cellSize)
            continue;
        for (unsigned int column = 0; column < bitmap.width; column++) {
            const int x = std::max(0, glyph->bitmap_left) + int(column);
            if (x >= cellSize)
                continue;
            sheet.cover(left + x, top + y, bitmap.buffer[row * bitmap.pitch + int(column)]);
        }
    }
}

void drawCaret(Sheet& sheet)
{
    int left, top;
    cellOf(caretCode, left, top);
    for (int y = 1; y < cellSize - 1; y++)
        for (int x = 1; x < 3; x++)
            sheet.cover(left + x, top + y, 255);
}

// Uncompressed true-colour TGA, rows from the bottom up, 8 alpha bits.
bool writeTga(const Sheet& sheet, const char* path)
{
    FILE* file = std::fopen(path, "wb");
    if (!file)
        return false;
    const unsigned char header[18] = {0,
                                      0,
                                      2,
                                      0,
                                      0,
                                      0,
                                      0,
                                      0,
                                      0,
                                      0,
                                      0,
                                      0,
                                      sheetSize & 0xFF,
                                      sheetSize >> 8,
                                      sheetSize & 0xFF,
                                      sheetSize >> 8,
                                      32,
                                      8};
    bool ok = std::fwrite(header, 1, sizeof(header), file) == sizeof(header);
    std::vector<unsigned char> row(sheetSize * 4);
    for (int y = sheetSize - 1; y >= 0 && ok; y--) {
        for (int x = 0; x < sheetSize; x++) {
            unsigned char* pixel = &row[x * 4];
            pixel[0] = pixel[1] = pixel[2] = 255;
            pixel[3] = sheet.alpha[y * sheetSize + x];
        }
        ok = std::fwrite(row.data(), 1, row.size(), file) == row.size();
    }
    return std::fclose(file) == 0 && ok;
}

bool writeKerning(const std::vector<int>& advances, const char* typeface, const char* path)
{
    FILE* file = std::fopen(path, "w");
    if (!file)
        return false;
    auto kerningOf = [&](int c) { return std::clamp(cellSize - advances[c - firstCode], -128, 127); };
    std::fprintf(file, "# Kerning of %s in %d-pixel cells\n", typeface, cellSize);
    for (int c = firstCode + 1; c < lastCode; c++)
        if (c != '#' && c != '=')
            std::fprintf(file, "PEVRANO_kerning_%c=%d\n", c, kerningOf(c));
    std::fprintf(file, "PEVRANO_kerning_SPACE=%d\n", kerningOf(' '));
    std::fprintf(file, "PEVRANO_kerning_DIESIS=%d\n", kerningOf('#'));
    std::fprintf(file, "PEVRANO_kerning_EQUAL=%d\n", kerningOf('='));
    return std::fclose(file) == 0;
}

int fail(const std::string& message)
{
    std::fprintf(stderr, "pevrano-font: %s\n", message.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 4 || argc > 5) {
        std::fprintf(stderr, "usage: pevrano-font <typeface.ttf> <sheet.tga> <kerning.txt> [pixel size]\n");
        return 2;
    }
    const int pixelSize = argc == 5 ? std::atoi(argv[4]) : 13;
    if (pixelSize < 4 || pixelSize > cellSize)
        return fail("the pixel size must be between 4 and 16");

    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library))
        return fail("FreeType did not start");
    if (FT_New_Face(library, argv[1], 0, &face)) {
        FT_Done_FreeType(library);
        return fail(std::string("cannot read the typeface ") + argv[1]);
    }
    FT_Set_Pixel_Sizes(face, 0, FT_UInt(pixelSize));
    // The baseline leaves the descenders room at the bottom of the cell.
    const int descender = int(-face->size->metrics.descender >> 6);
    const int baseline = std::min(cellSize - 1, cellSize - descender);

    Sheet sheet;
    std::vector<int> advances(lastCode - firstCode + 1, cellSize);
    for (int c = firstCode; c < caretCode; c++) {
        if (FT_Load_Char(face, FT_ULong(c), FT_LOAD_RENDER))
            continue;
        advances[c - firstCode] = int(face->glyph->advance.x >> 6);
        placeGlyph(sheet, face->glyph, c, baseline);
    }
    drawCaret(sheet);
    FT_Done_Face(face);
    FT_Done_FreeType(library);

    if (!writeTga(sheet, argv[2]))
        return fail(std::string("cannot write ") + argv[2]);
    if (!writeKerning(advances, argv[1], argv[3]))
        return fail(std::string("cannot write ") + argv[3]);
    return 0;
}
