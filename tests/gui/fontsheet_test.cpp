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

    // Rows of the 16 x 16 cell at (10, 20) with at least one lit pixel.
    std::vector<int> litRows(const char* text)
    {
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        font->putString(10, 20, text);

        PEVRANO::end2D();
        std::vector<int> rows;
        for (int y = 0; y < 16; y++)
            for (int x = 0; x < 16; x++)
                if (screen(10 + x, 20 + y).g > 0.5) {
                    rows.push_back(y);
                    break;
                }
        return rows;
    }
    PVFONT* font = nullptr;
};

TEST_F(MadeFont, GlyphsStandUpright)
{
    const std::vector<int> dot = litRows(".");
    const std::vector<int> quote = litRows("'");
    ASSERT_FALSE(dot.empty());
    ASSERT_FALSE(quote.empty());
    EXPECT_GE(dot.front(), 9) << "a full stop sits on the baseline";
    EXPECT_LE(quote.back(), 7) << "an apostrophe hangs from the top";
    EXPECT_TRUE(litRows(" ").empty());
    EXPECT_GE(litRows("|").size(), 12u) << "a bar crosses the cell";
}

// Widgets drawn between two captions turn texturing off; the second caption
// must still come out as glyphs, not as solid blocks.
TEST_F(MadeFont, CaptionsAfterUntexturedWidgetsAreStillGlyphs)
{
    PVBOX* root = new PVBOX();
    root->setDisplayStatus(false);
    for (int i = 0; i < 2; i++) {
        PVBUTTON* button = new PVBUTTON();
        button->setColor(0, 0, 0, 1);
        button->setThickness(0);
        button->setPosition(10.0f + 40.0f * float(i), 20.0f);
        button->setSizes(30, 18);
        button->setFont(font);
        button->setCaption(".");
        button->link(root);
    }
    drawFrame2D(root);
    for (int left : {10, 50}) {
        int litAbove = 0, litBelow = 0;
        for (int y = 1; y < 17; y++)
            for (int x = 1; x < 17; x++)
                (screen(left + x, 20 + y).g > 0.5 ? (y < 9 ? litAbove : litBelow) : x) += 1;
        EXPECT_EQ(0, litAbove) << "button at " << left;
        EXPECT_GT(litBelow, 0) << "button at " << left;
    }
}

TEST_F(MadeFont, TextAdvancesAsTheTypefaceDoes)
{
    // DejaVu Sans at 13 pixels: i 4, o 8, W 13 pixels wide.
    EXPECT_EQ(4u, font->stringLength("i"));
    EXPECT_EQ(8u, font->stringLength("o"));
    EXPECT_EQ(13u, font->stringLength("W"));
    EXPECT_EQ(4u + 8u + 13u + 4u, font->stringLength("ioW "));
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
    ASSERT_TRUE(copy->create(256, 256, 4));
    ASSERT_TRUE(copy->modify(reinterpret_cast<const char*>(font->getTexture()->getBitmap()), false));
    PVFONT* whole = new PVFONT();
    whole->setTexture(copy);
    ASSERT_TRUE(whole->loadKerning("dejavu.txt"));
    const std::vector<unsigned char> trimmed = screenOf(font);
    EXPECT_TRUE(trimmed == screenOf(whole));
    EXPECT_TRUE(trimmed != screenOf(new PVFONT()));  // no sheet, no text
}

}  // namespace
