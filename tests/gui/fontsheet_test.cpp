// Text set with the font the build makes from DejaVu Sans with pevrano-font:
// glyphs stand the right way up in their cells and advance as the typeface.
#include "gui/guifixture.h"

using namespace pvtest;

namespace {

class MadeFont : public GuiTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GuiTest::SetUp());
        PVTEXTURE* sheet = new PVTEXTURE();
        ASSERT_TRUE(sheet->load(PEVRANO_FONT_DIR "/dejavu.tga")) << logged();
        font = new PVFONT();
        ASSERT_TRUE(font->setTexture(sheet));
        PVFONT::setPath(PEVRANO_FONT_DIR "/");
        ASSERT_TRUE(font->loadKerning("dejavu.txt")) << logged();
    }

    // Rows of the 16 x 16 cell at (left, top) with at least one lit pixel.
    static std::vector<int> litRows(int left, int top)
    {
        std::vector<int> rows;
        for (int y = 0; y < 16; y++)
            for (int x = 0; x < 16; x++)
                if (screen(left + x, top + y).g > 0.5) {
                    rows.push_back(y);
                    break;
                }
        return rows;
    }
    // The same for text drawn alone at (10, 20).
    std::vector<int> litRows(const char* text)
    {
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        font->putString(10, 20, text);
        PEVRANO::end2D();
        return litRows(10, 20);
    }
    PVFONT* font = nullptr;
};

TEST_F(MadeFont, GlyphsStandUpright)
{
    const std::vector<int> dot = litRows("."), quote = litRows("'");
    EXPECT_TRUE(!dot.empty() && dot.front() >= 9) << "a full stop sits on the baseline";
    EXPECT_TRUE(!quote.empty() && quote.back() <= 7) << "an apostrophe hangs from the top";
    EXPECT_TRUE(litRows(" ").empty());
    EXPECT_GE(litRows("|").size(), 12u) << "a bar crosses the cell";
}

// Widgets drawn between two captions turn texturing off; the second caption
// must still come out as glyphs (a full stop in the lower half of its cell),
// not as solid blocks.
TEST_F(MadeFont, CaptionsAfterUntexturedWidgetsAreStillGlyphs)
{
    PVBOX* root = new PVBOX();
    root->setDisplayStatus(false);
    for (int i = 0; i < 2; i++) {
        PVBUTTON* button = placed<PVBUTTON>(10.0f + 40.0f * float(i), 20.0f, 30, 18, root);
        button->setColor(0, 0, 0, 1);
        button->setThickness(0);
        button->setFont(font);
        button->setCaption(".");
    }
    drawFrame2D(root);
    for (int left : {11, 51}) {
        const std::vector<int> rows = litRows(left, 21);
        EXPECT_TRUE(!rows.empty() && rows.front() >= 8) << "button at " << left;
    }
}

// DejaVu Sans at 13 pixels: i 4, o 8, W 13 pixels wide.
TEST_F(MadeFont, TextAdvancesAsTheTypefaceDoes)
{
    EXPECT_EQ((std::vector<unsigned int> {4, 8, 13, 4 + 8 + 13 + 4}),
              (std::vector<unsigned int> {font->stringLength("i"), font->stringLength("o"),
                                          font->stringLength("W"), font->stringLength("ioW ")}));
}

// Glyphs of a sheet read from a file are drawn trimmed to their ink; every
// pixel is the one the whole cells give, drawn here from a copy of the sheet
// made in memory (drawn whole).
TEST_F(MadeFont, TrimmedGlyphsLightThePixelsOfWholeCells)
{
    std::string text;
    for (int c = 32; c < 127; c++)
        text += c == '%' || c == '^' ? ' ' : char(c);
    auto screenOf = [&](PVFONT* drawing) {
        PVOPENGL::setBackgroundColor(0.2f, 0.1f, 0.3f, 1.0f);
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        for (size_t line = 0; line * 16 < text.size(); line++)
            drawing->putString(int(line), int(line * 16), "^c8538%s", text.substr(line * 16, 16).c_str());
        PEVRANO::end2D();
        std::vector<unsigned char> pixels(windowWidth * windowHeight * 4);
        glReadPixels(0, 0, windowWidth, windowHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    };
    font->getTexture()->setFilter(false, false, false);  // as the interface file reads a font
    PVTEXTURE* copy = new PVTEXTURE();
    copy->setFilter(false, false, false);
    ASSERT_TRUE(copy->create(256, 256, 4) &&
                copy->modify(reinterpret_cast<const char*>(font->getTexture()->getBitmap()), false));
    PVFONT* whole = new PVFONT();
    whole->setTexture(copy);
    ASSERT_TRUE(whole->loadKerning("dejavu.txt"));
    const std::vector<unsigned char> trimmed = screenOf(font);
    EXPECT_TRUE(trimmed == screenOf(whole));
    EXPECT_TRUE(trimmed != screenOf(new PVFONT()));  // no sheet, no text
}

}  // namespace
