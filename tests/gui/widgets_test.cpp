// Buttons, labels, text fields, scroll bars and windows: captions that fit or
// are replaced, every message, keys, slider values, scrolling and clipping.
#include "gui/guifixture.h"

using namespace pvtest;

namespace {

class Widgets : public GuiTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GuiTest::SetUp());
        font = solidFont();
    }
    // The array draws of one 2D frame of root: a borderless box's strip and
    // the glyphs (borders are indexed).
    Calls arrayDraws(PVNODE* root)
    {
        record([&] { drawFrame2D(root); });
        return recorder.filter("glDrawArrays");
    }
    PVFONT* font = nullptr;
};

const PV_TEXTFIELD_KEY none = PV_TEXTFIELD_KEY_NONE, inserted = PV_TEXTFIELD_KEY_INSERTED,
                       erased = PV_TEXTFIELD_KEY_ERASED, full = PV_TEXTFIELD_KEY_FULL,
                       undrawable = PV_TEXTFIELD_KEY_NOT_DRAWABLE;

std::string glyphDraw(int n) { return "glDrawArrays(GL_TRIANGLES,0," + std::to_string(n * 6) + ")"; }

// A caption that does not fit is replaced by "[...]" ("ab" is 32 pixels,
// "abc" exactly as wide as a 48-pixel button, "[...]" wider still); captions
// are formats without arguments: a conversion has nothing to read and draws
// nothing, whatever a user typed into a text field.
TEST_F(Widgets, CaptionsDrawWhatFitsAndIgnoreConversions)
{
    const std::tuple<int, const char*, int> cases[] = {
        {48, "ab", 2},    {48, "abc", 0},         {100, "abcdefg", 5},      {100, "", 0},
        {200, "50%%", 3}, {200, "%s%s%s%n%n", 0}, {200, "a%-08.3lld b", 3}, {200, "x%", 1},
        {200, "%*.*s", 0}};
    for (const auto& [width, caption, glyphs] : cases) {
        PVBUTTON* button = new PVBUTTON();
        button->setFont(font);
        button->setSizeX(width);
        button->setThickness(0);  // the box alone is a strip
        button->setCaption(caption);
        Calls draws = {"glDrawArrays(GL_TRIANGLE_STRIP,0,4)"};  // the box
        if (glyphs)
            draws.push_back(glyphDraw(glyphs));
        EXPECT_EQ(draws, arrayDraws(button)) << caption;
        delete button;
    }
}

TEST_F(Widgets, APressedCaptionMovesByOnePixel)
{
    PVBUTTON* button = new PVBUTTON();
    button->setFont(font);
    button->setPosition(10, 10);
    button->setCaption("A");
    drawFrame2D(button);
    expectPixels({{11, 20, 1, 1, 1}, {26, 26, 1, 1, 1}});  // left column, last pixel
    button->setClickedStatus(true);
    drawFrame2D(button);
    expectPixels({{27, 27, 1, 1, 1}});
    EXPECT_NE(1.0, screen(11, 20).r) << "pressed, left column is border";
}

TEST_F(Widgets, HiddenWidgetsDrawNothing)
{
    PVBUTTON* button = new PVBUTTON();
    PVBOX* box = new PVBOX();
    box->link(button);
    button->setDisplayStatus(false);
    box->setDisplayStatus(false);
    PEVRANO::begin2D();
    button->pass(false);
    EXPECT_EQ(Calls {}, record([&] {
                  EXPECT_TRUE(button->render(PVELEMENT::getPassedElement(0)));
                  EXPECT_FALSE(box->render(PVELEMENT::getPassedElement(1)));
              }));
    PEVRANO::end2D();
}

TEST_F(Widgets, LabelsCopyTheirTextOnceAndDrawOnlyIt)
{
    PVLABEL* label = new PVLABEL();
    logged();
    EXPECT_FALSE(label->write(nullptr));
    EXPECT_EQ("   [!] Invalid params @ PVLABEL::write\n", logged());
    EXPECT_FALSE(label->write("x"));
    EXPECT_EQ("   [!] Font not specified @ PVLABEL::write\n", logged());
    label->setFont(font);
    EXPECT_TRUE(label->write("%d apples ^c8000%s", 12, "red"));
    EXPECT_STREQ("12 apples ^c8000red", label->getText());
    label->setDisplayStatus(false);  // not looked at
    EXPECT_EQ((Calls {glyphDraw(13)}), arrayDraws(label));
}

TEST_F(Widgets, TextFieldsTakeKeysWhileTheyFit)
{
    PVTEXTFIELD field;
    field.setSizeX(64);  // room: 64 - 16 = 48
    EXPECT_FALSE(field.manageKey('a'));
    field.setFont(font);
    field.clear();
    // Nothing to erase at first. The test adds the key's kerning, not its
    // advance: a fourth glyph still goes in when three fill the room; a
    // negative kerning wraps the unsigned sum.
    font->setKerning('z', -20);
    const std::tuple<char, const char*, PV_TEXTFIELD_KEY> cases[] = {
        {'\b', "", none},          {'a', "a", inserted},
        {'b', "ab", inserted},     {'c', "abc", inserted},
        {'d', "abcd", inserted},   {'e', "abcd", full},
        {'\b', "abc", erased},     {0, "abc", none},
        {'\t', "abc", undrawable}, {'\xc8', "abc", undrawable},
        {'z', "abcz", inserted}};
    for (const auto& [key, caption, outcome] : cases) {
        EXPECT_TRUE(field.manageKey(key)) << int(key);
        EXPECT_STREQ(caption, field.getCaption()) << int(key);
        EXPECT_EQ(outcome, field.getLastKey()) << int(key);
    }
    EXPECT_TRUE(field.isEditing());
}

// Characters typed by their code are never cut to 8 bits: codes the font
// sheet holds go in while the text and the caret still show; others, and
// characters a full field has no room for, are refused and the caret stays.
TEST_F(Widgets, TypedCharactersGoInOnlyWhenTheyCanBeDrawnAndShown)
{
    PVTEXTFIELD field;
    field.setSizeX(80);  // room: 80 - 16 = 64, the text and the caret below it
    EXPECT_EQ(PV_TEXTFIELD_KEY_NO_FONT, field.typeCharacter('a'));
    field.setFont(font);
    field.clear();
    // 0xE9 (e acute) is not 'i' nor 0x141 (L stroke) 'A'; 'c' would leave the
    // caret at 64, not below it.
    const std::tuple<unsigned int, const char*, PV_TEXTFIELD_KEY> cases[] = {
        {'a', "a", inserted},  {0xE9, "a", undrawable}, {0x141, "a", undrawable},
        {13, "a", undrawable}, {'b', "ab", inserted},   {'c', "ab", full},
        {0, "ab", none},       {8, "a", erased},        {127, "a\x7f", inserted}};
    for (const auto& [code, caption, outcome] : cases) {
        EXPECT_EQ(outcome, field.typeCharacter(code)) << code;
        EXPECT_STREQ(caption, field.getCaption()) << code;
    }
}

TEST_F(Widgets, ATextFieldDrawsASunkenFrameOfLines)
{
    PVTEXTFIELD* field = new PVTEXTFIELD();
    field->setThickness(2);
    field->setCaption("");
    record([&] { drawFrame2D(field); });
    Calls draws(7, "glDrawElements(GL_LINES,4,GL_UNSIGNED_BYTE)");
    draws[0] = "glDrawElements(GL_TRIANGLES,54,GL_UNSIGNED_SHORT)";  // the fill and the border's 8 pieces
    EXPECT_EQ(draws, recorder.filter("glDrawElements"));
    // The frame is drawn inside the border, after the node's own placement.
    EXPECT_EQ("glTranslatex(131072,131072,0)", recorder.filter("glTranslatex").back());
}

// Values follow the cursor's place; the bars renew the cursor's limits when
// drawn and hide it with them.
TEST_F(Widgets, ScrollBarValuesComeFromTheCursorsPlace)
{
    PVHSCROLLBAR* across = new PVHSCROLLBAR();
    PVVSCROLLBAR* down = new PVVSCROLLBAR();
    for (PVSCROLLBAR* bar : {static_cast<PVSCROLLBAR*>(across), static_cast<PVSCROLLBAR*>(down)}) {
        bar->setMinValue(10);
        bar->setMaxValue(20);
        const float set[] = {10, 12.5f, 15, 19, 20, 99, -5}, got[] = {10, 12.5f, 15, 19, 20, 20, 10};
        for (size_t i = 0; i < 7; i++) {
            bar->setValue(set[i]);
            EXPECT_NEAR(got[i], bar->getValue(), 1e-4) << bar->getType() << " set to " << set[i];
        }
    }
    // At either end (99 and -5 are clamped to them) the cursor's centre is on
    // the track's end.
    across->setValue(99);
    EXPECT_EQ(64 - 8, across->getCursor()->getPosition().x);
    across->setValue(-5);
    EXPECT_EQ(0 - 8, across->getCursor()->getPosition().x);
    down->setValue(15);
    EXPECT_EQ(32 - 8, down->getCursor()->getPosition().y);
    // Resizing keeps the centre.
    down->setCursorSize(30);
    EXPECT_EQ(32 - 15, down->getCursor()->getPosition().y);
    EXPECT_EQ(30, down->getCursor()->getSizeY());
    EXPECT_NEAR(15.0f, down->getValue(), 1e-4);

    across->setSizeX(100);
    down->setSizeY(50);
    across->link(down);
    drawFrame2D(down);
    auto limits = [](PVSCROLLBAR* bar) {
        PVBUTTON* c = bar->getCursor();
        return std::vector<int> {c->getStartX(), c->getStartY(), c->getEndX(), c->getEndY()};
    };
    EXPECT_EQ((std::vector<int> {-8, -2, 108, 6}), limits(across));
    EXPECT_EQ((std::vector<int> {-2, -15, 6, 65}), limits(down));
    down->setDisplayStatus(false);
    EXPECT_FALSE(down->getCursor()->getDisplayStatus());
}

TEST_F(Widgets, WindowTextStopsShortOfItsBufferAndRestoredTitlesLoseTheirMark)
{
    PVWINDOW window;
    const std::string most(3967, 'w');
    EXPECT_TRUE(window.write("%s", most.c_str()));
    EXPECT_FALSE(window.write("x"));
    EXPECT_EQ("   [!] Text overflow @ PVWINDOW::write\n", logged());
    EXPECT_EQ(most, window.getText());
    EXPECT_FALSE(window.write(nullptr));
    EXPECT_EQ("   [!] Invalid params @ PVWINDOW::write\n", logged());
    window.clear();
    EXPECT_TRUE(window.write("%d%%", 50));
    EXPECT_STREQ("50%", window.getText());
    EXPECT_FALSE(window.format());  // no font
    window.setFont(font);
    window.setSizes(100, 60);
    window.write(" ab cd");
    EXPECT_TRUE(window.format());
    EXPECT_STREQ("50%\nab cd", window.getFormattedText());

    // Minimising marks the title (the input tests press it); restoring drops
    // four characters only from captions that have them.
    window.setCaption("");
    EXPECT_FALSE(window.minmaximize());
    EXPECT_STREQ("[+] ", window.getTitleBar()->getCaption());
    EXPECT_TRUE(window.minmaximize());
    EXPECT_STREQ("", window.getTitleBar()->getCaption());
    window.minmaximize();
    window.setCaption("abc");
    window.minmaximize();
    EXPECT_STREQ("abc", window.getTitleBar()->getCaption());
}

TEST_F(Widgets, WindowsScrollTheirWidgetsWithTheBar)
{
    PVWINDOW* window = new PVWINDOW();  // 128 x 128 at (0, 19)
    PVBUTTON* button = placed<PVBUTTON>(10, 40, 64, 64, window);  // reaches 104
    EXPECT_TRUE(window->updateScroll());
    EXPECT_FALSE(window->getScrollBar()->getDisplayStatus());
    EXPECT_EQ(104, window->getContentHeight());

    button->setPosition(10, 300);  // content 364: cursor 128 / 364 * 96 = 33 pixels
    drawFrame2D(window);  // measures the content
    window->getScrollBar()->setValue(1.0f);
    drawFrame2D(window);  // scrolls by 364 - 128 = 236: drawn and hit where it moved
    EXPECT_TRUE(window->getScrollBar()->getDisplayStatus());
    EXPECT_EQ(33, window->getScrollBar()->getCursor()->getSizeY());
    EXPECT_EQ(64.0f, button->getPosition().y);
    EXPECT_TRUE(button->checkBoundaries(15, 19 + 70));
    EXPECT_FALSE(button->checkBoundaries(15, 19 + 305));
    window->setScrollLine(5);
    window->updateScroll();
    EXPECT_EQ(295.0f, button->getPosition().y);  // moved by offset - line

    PVWINDOW* tall = new PVWINDOW();
    PVBOX* huge = placed(0, 0, 64, 10000, tall);
    tall->updateScroll();
    EXPECT_EQ(8, tall->getScrollBar()->getCursor()->getSizeY());  // never below 8

    tall->getScrollBar()->setDisplayStatus(false);
    huge->setSizeY(10);
    tall->setScrollLine(7);
    tall->updateScroll();
    EXPECT_EQ(0, tall->getScrollLine());  // short content: no scrolling
}

// Text and widgets alike are cut at the window's right and bottom sides.
TEST_F(Widgets, AWindowClipsItsTextAndWidgets)
{
    PVWINDOW* window = placed<PVWINDOW>(20, 30, 64, 40);  // x 20 to 84, y 30 to 70
    window->setColor(0, 0, 0, 1);
    window->setThickness(0);
    window->setFont(font);
    window->getScrollBar()->setDisplayStatus(false);
    window->write("ab ab ab ab");
    window->format();  // four lines 32 pixels wide: 64 high, taller than the window
    PVBOX* box = placed(40, 20, 40, 30, window);  // x 60 to 100, y 50 to 80
    box->setThickness(0);
    box->setColor(0.5f, 0.25f, 0.75f, 1.0f);
    drawFrame2D(window);
    // The first and last glyph pixels, the box's corner and the window's
    // last pixel; then below and right of the window.
    const std::vector<Probe> probes = {
        {20, 30, 1, 1, 1},         {51, 69, 1, 1, 1}, {51, 70, 0, 0, 0}, {60, 50, 0.5, 0.25, 0.75},
        {83, 69, 0.5, 0.25, 0.75}, {84, 55, 0, 0, 0}, {70, 70, 0, 0, 0}};
    expectPixels(probes);
}

}  // namespace
