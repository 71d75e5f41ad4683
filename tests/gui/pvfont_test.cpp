// Fonts: widths, word wrap and kerning files worked out by hand, every
// message, the registry, the glyph batches as GL calls and text as pixels.
#include <functional>

#include "gui/guifixture.h"
#include "gui/pvtextcache.h"

using namespace pvtest;

namespace {

class Font : public GuiTest {
protected:
    // 16-pixel cells; 'i' advances 6, 'W' 18 and the blank 8.
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GuiTest::SetUp());
        font.setKerning('i', 10);
        font.setKerning('W', -2);
        font.setKerning(' ', 8);
    }
    // The engine's shut-down deletes every registered font.
    PVFONT& font = *new PVFONT();
};

TEST_F(Font, StringLengthAddsAdvancesAndHorizontalEscapes)
{
    const std::tuple<const char*, unsigned int> cases[] = {
        {"", 0},         {"abc", 48},      {"iW i", 38},    {"^c1234ab", 32}, {"^C1234ab", 32},
        {"^x0010a", 26}, {"^X-010ab", 22}, {"^y0020a", 16}, {"a^", 16},       {"a^c12", 16},
        {"a^x001", 16},  {"a^zb", 64},     {"a\nb", 48},    {"\x01", 16},     {"\xff", 16},
    };
    for (const auto& [text, width] : cases)
        EXPECT_EQ(width, font.stringLength(text)) << '"' << text << '"';
}

// The blank becomes the break; with no blank a break goes in before the
// overflow; text exactly as wide as allowed stays whole; a line begun by a
// newline starts one cell wide; offsets count in the width and vertical ones
// in the height; "^z" is no escape, '^' a character; the width after a break
// keeps the blank's advance.
TEST_F(Font, FormatBreaksAtBlanksOrInsideWordsThatDoNotFit)
{
    const std::tuple<const char*, unsigned int, const char*, int> cases[] = {
        {"ab cd", 40, "ab\ncd", 16},    {"abcd", 40, "ab\ncd", 16},         {"abcd", 64, "abcd", 0},
        {"a\nbcd", 40, "a\nbc\nd", 48}, {"^x0020ab", 40, "^x0020a\nb", 16}, {"^y0005a", 40, "^y0005a", 5},
        {"^zab", 40, "^z\nab", 16},     {"i i i i", 20, "i\ni\ni\n i", 48}};
    for (const auto& [in, width, broken, height] : cases) {
        char out[64];
        EXPECT_EQ(height, font.format(in, out, width, 0)) << '"' << in << '"';
        EXPECT_STREQ(broken, out) << '"' << in << '"';
    }
}

// data/fonts/sans.txt: comments, blanks around the value, named keys.
TEST_F(Font, KerningFilesSetTheKeysTheyHold)
{
    PVFONT loaded;
    loaded.setKerning('x', 7);
    loaded.setKerning('D', 1);
    PVFONT::setPath(PEVRANO_TEST_DATA "/fonts/");
    EXPECT_TRUE(loaded.loadKerning("sans.txt"));
    // Keys are found inside longer ones, first line first: 'S' reads the
    // blank's line, 'D' and 'E' the named keys' lines, as numbers 0.
    const std::tuple<char, char> cases[] = {{'a', 0}, {'i', 10}, {'W', -2}, {' ', 4},   {'S', 0}, {'#', 5},
                                            {'=', 6}, {'D', 0},  {'E', 0},  {'~', 127}, {'x', 7}};
    for (const auto& [c, kerning] : cases)
        EXPECT_EQ(kerning, loaded.getKerning(c)) << c;
    EXPECT_EQ("", logged());
}

TEST_F(Font, EveryMessage)
{
    char out[8];
    const std::string invalid = "   [!] Invalid params @ PVFONT::";
    const std::tuple<std::function<bool()>, std::string> cases[] = {
        {[&] { return font.setTexture(nullptr); }, invalid + "setTexture\n"},
        {[&] { return font.setKerning(char(128), 1); }, invalid + "setKerning\n"},
        {[&] { return font.setKerning(31, 1); }, invalid + "setKerning\n"},
        {[&] { return font.loadKerning(nullptr); }, invalid + "loadKerning\n"},
        {[&] { return font.loadKerning("absent.txt"); },
         "   [!] File not found (absent.txt) @ PVFONT::loadKerning\n"},
        {[&] { return font.putString(0, 0, nullptr); }, invalid + "putString\n"},
        {[&] { return font.stringLength(nullptr) != 0; }, invalid + "stringLength\n"},
        {[&] { return font.format(nullptr, out, 10, 0) != 0; }, invalid + "format\n"},
        {[&] { return font.format("a", nullptr, 10, 0) != 0; }, invalid + "format\n"},
        {[&] { return font.putString(0, 0, "no texture"); }, ""}};
    for (const auto& [call, line] : cases) {
        EXPECT_FALSE(call()) << line;
        EXPECT_EQ(line, logged());
    }
    EXPECT_TRUE(font.setKerning(127, -3));
    EXPECT_EQ(-3, font.getKerning(127));
    EXPECT_EQ(0, font.getKerning(31));
    // Lookups are the registry template's (the node tests): the release line
    // is the font's own.
    EXPECT_TRUE(PVFONT::cleanUp());
    EXPECT_FALSE(PVFONT::cleanUp());
    EXPECT_EQ("   1 font(s) released\n", logged());
}

// Text drawn with a sheet of solid glyphs, on black: each character is a
// block.
class FontDrawing : public GuiTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GuiTest::SetUp());
        font = solidFont();
        PVOPENGL::setBackgroundColor(0, 0, 0, 1);
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        // Bind the sheet once, so that the calls below are the text's own.
        font->putString(0, 0, "");
    }
    void TearDown() override
    {
        PEVRANO::end2D();
        GuiTest::TearDown();
    }
    PVFONT* font = nullptr;
};

// A string is one draw. One that fits the text cache is drawn from a buffer
// filled the first time it is drawn by a font layout at a place; a longer
// one is an indexed draw of up to 1024 glyphs from the arrays, a full batch
// drawn and finished before the next. An immediate glyph is drawn at once.
// Nothing stays queued, and the array buffer is left unbound.
TEST_F(FontDrawing, StringsAreOneDrawAndUploadedOnlyWhenNew)
{
    const std::string eleven(1100, 'a');
    const std::string arraysDraw = "glDrawElements(GL_TRIANGLES,";
    const Calls cached = {"glDrawArrays(GL_TRIANGLES,0,30)"};
    const std::tuple<const char*, std::function<bool()>, Calls, size_t> cases[] = {
        {"a new string", [&] { return font->putString(3, 4, "%s=%d", "Hi", 42); }, cached, 1},
        {"the same again", [&] { return font->putString(3, 4, "Hi=42"); }, cached, 0},
        {"the same elsewhere", [&] { return font->putString(3, 5, "Hi=42"); }, cached, 1},
        {"after a kerning change", [&] { return font->setKerning('H', 1) && font->putString(3, 4, "Hi=42"); },
         cached, 1},
        {"1100 characters",
         [&] { return font->putString(0, 0, eleven.c_str()); },
         {arraysDraw + "6144,GL_UNSIGNED_SHORT)", "glFinish()", arraysDraw + "456,GL_UNSIGNED_SHORT)"},
         0},
        {"an immediate glyph",
         [&] { return font->putChar(0, 0, 'A', true); },
         {"glDrawArrays(GL_TRIANGLES,0,6)"},
         0},
    };
    for (const auto& [what, draw, draws, uploads] : cases) {
        record([&] { EXPECT_TRUE(draw()) << what; });
        EXPECT_EQ(draws,
                  recorder.filter(std::vector<std::string> {"glDrawArrays", "glDrawElements", "glFinish"}))
            << what;
        EXPECT_EQ(uploads, recorder.count("glBufferData")) << what;
        const Calls binds = recorder.filter("glBindBuffer");
        EXPECT_TRUE(binds.empty() || binds.back() == "glBindBuffer(GL_ARRAY_BUFFER,0)") << recorder.text();
        EXPECT_EQ(0u, PVFONT::getCachedGlyphs()) << what;
    }
}

// Buffers go with the font that filled them, with strings left undrawn for
// 64 to 128 2D passes, and with the engine; the texture collector leaves
// them be.
TEST_F(FontDrawing, TextBuffersAreFreedAndSurviveTheTextureCollector)
{
    PVFONT* other = solidFont();
    other->putString(0, 0, "kept");
    font->putString(0, 20, "drawn once");
    font->putString(0, 40, "gone");
    EXPECT_EQ(3u, PVTEXTCACHE::getNumberOfBuffers());
    delete other;
    EXPECT_EQ(2u, PVTEXTCACHE::getNumberOfBuffers());

    PVTEXTURE::garbageCollect(0);  // unloads the font's sheet
    PEVRANO::clear(true, true, false);
    record([&] { font->putString(0, 20, "drawn once"); });
    EXPECT_EQ(0u, recorder.count("glBufferData"));
    expectPixels({{150, 35, 1, 1, 1}, {160, 35, 0, 0, 0}});  // the last glyph, after it

    for (int pass = 0; pass < 2 * PV_TEXT_CACHE_IDLE_PASSES; pass++) {
        PEVRANO::begin2D();
        font->putString(0, 20, "drawn once");
    }
    EXPECT_EQ(1u, PVTEXTCACHE::getNumberOfBuffers());
    record([&] { PEVRANO::free(); });
    EXPECT_EQ(1u, recorder.count("glDeleteBuffers"));
}

TEST_F(FontDrawing, CutEscapesStopTheStringAndKeepWhatWasQueued)
{
    EXPECT_FALSE(font->putString(0, 0, "ab^c12"));
    EXPECT_EQ(2u, PVFONT::getCachedGlyphs());
    PVFONT::reset();
    EXPECT_FALSE(font->putString(0, 0, "abc^"));
    EXPECT_EQ(3u, PVFONT::getCachedGlyphs());
}

TEST_F(FontDrawing, ColourEscapesTintTheGlyphsThatFollow)
{
    // Red, green, blue; '9' wraps to 31, a faint white; then offsets and a
    // new line with the colour kept.
    // A faint glyph is blended by its own alpha.
    const double f = 31 / 255.0 * 31 / 255.0;
    font->putString(10, 20, "^c8008A^c0808B^c0088C^c9999D^c0000E^x-016^c8888F\n^y0004^x0020G");
    // Red (both corners), green, blue, faint, white over the transparent
    // glyph, nothing after the last; the second line moved right and down,
    // left of it and between the lines.
    const std::vector<Probe> probes = {
        {10, 20, 1, 0, 0}, {25, 35, 1, 0, 0}, {26, 20, 0, 1, 0}, {42, 27, 0, 0, 1}, {58, 27, f, f, f},
        {74, 27, 1, 1, 1}, {90, 27, 0, 0, 0}, {30, 40, 1, 1, 1}, {29, 40, 0, 0, 0}, {10, 39, 0, 0, 0}};
    expectPixels(probes);
}

}  // namespace
