// Shared by the interface tests: an engine started in a small window, whole
// 2D frames of a widget tree, a glyph sheet whose glyphs are solid white
// blocks, and pixels read with y counted from the top as the interface does.
#ifndef PEVRANO_TESTS_GUI_GUIFIXTURE_H
#define PEVRANO_TESTS_GUI_GUIFIXTURE_H

#include <tuple>
#include <vector>

#include <pevrano.h>

#include "scene/scenefixture.h"

namespace pvtest {

class GuiTest : public RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startEngine()) << log.text();
        log.fresh();
    }
    // The engine in the pixel tests' window; landscape cases turn it.
    virtual bool startEngine() { return startEngineInWindow(); }
    void TearDown() override
    {
        recorder.stop();
        PEVRANO::free();
    }

    // What the log gained since the previous call (start-up lines skipped).
    std::string logged() { return log.fresh(); }

    // One 2D frame of everything under root, on a black background.
    static void drawFrame2D(PVNODE* root)
    {
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();
        root->pass(false);
        PEVRANO::end2D();
    }

    // A 256 x 256 sheet whose every pixel is opaque white: each glyph draws
    // a solid block in the colour of its text.
    static PVTEXTURE* solidSheet()
    {
        PVTEXTURE* sheet = new PVTEXTURE();
        const std::vector<char> white(256 * 256 * 4, char(0xFF));
        EXPECT_TRUE(sheet->create(256, 256, 4) && sheet->modify(white.data(), false));
        return sheet;
    }

    // A new widget at (x, y), w x h, linked under parent when one is given.
    template <typename Widget = PVBOX>
    static Widget* placed(float x, float y, int w, int h, PVNODE* parent = nullptr)
    {
        Widget* widget = new Widget();
        widget->setPosition(x, y);
        widget->setSizes(w, h);
        if (parent)
            widget->link(parent);
        return widget;
    }

    static PVFONT* solidFont()
    {
        PVFONT* font = new PVFONT();
        font->setTexture(solidSheet());
        return font;
    }

    // The colour at (x, y), y counted from the top of the window.
    static Rgb screen(int x, int y) { return pixelAt(x, windowHeight - 1 - y); }

    // Pixels at (x, y from the top) and the colours (r, g, b) expected there.
    using Probe = std::tuple<int, int, double, double, double>;
    static void expectPixels(const std::vector<Probe>& probes)
    {
        for (const auto& [x, y, r, g, b] : probes)
            expectColour({r, g, b}, screen(x, y), std::to_string(x) + ", " + std::to_string(y));
    }
};

// The same cases with the window turned a quarter (landscape).
template <typename Base> class Landscape : public Base {
protected:
    bool startEngine() override
    {
        PVSETTINGS settings;
        settings.setWindowX(windowWidth);
        settings.setWindowY(windowHeight);
        settings.setFullScreen(false);
        settings.setLandscape(true);
        return PEVRANO::init(&settings);
    }
};

}  // namespace pvtest

#endif
