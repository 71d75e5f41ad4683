// Interface costs: a frame of text (100 strings of 100 characters) drawn in
// batches, against the same glyphs drawn one draw call each (the peer in the
// same run); and the CPU cost of a 2D frame of 50 widgets (bevelled boxes and
// captioned buttons). Draw calls are counted at the GL entry point.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include <pevrano.h>

#include "benchengine.h"
#include "glcalls.h"

namespace {

long& drawCalls = pvbench::glCalls().draws;

using pvbench::engineStarted;

// A font whose sheet is opaque white: every glyph is a solid block.
PVFONT* solidFont()
{
    static PVFONT* font = [] {
        PVTEXTURE* sheet = new PVTEXTURE();
        std::vector<char> white(256 * 256 * 4, char(0xFF));
        sheet->create(256, 256, 4);
        sheet->modify(white.data(), false);
        PVFONT* made = new PVFONT();
        made->setTexture(sheet);
        made->setCharSizeX(2);  // small cells: the engine's cost, not the rasteriser's
        made->setCharSizeY(2);
        return made;
    }();
    return font;
}

std::vector<std::string> hundredLines()
{
    std::vector<std::string> lines;
    for (int i = 0; i < 100; i++) {
        std::string line;
        for (int c = 0; c < 100; c++)
            line += char('a' + (i * 7 + c * 13) % 26);
        lines.push_back(line);
    }
    return lines;
}

template <typename DrawLine> void textFrame(benchmark::State& state, DrawLine drawLine)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    PVFONT* font = solidFont();
    const std::vector<std::string> lines = hundredLines();
    PEVRANO::begin2D();
    drawCalls = 0;
    for (auto _ : state) {
        for (int i = 0; i < 100; i++)
            drawLine(font, i % 60, (i * 2) % 200, lines[size_t(i)]);
        glFinish();
    }
    PEVRANO::end2D();
    const double strings = double(state.iterations()) * 100.0;
    state.SetItemsProcessed(int64_t(strings * 100.0));
    state.counters["glyphs/s"] = benchmark::Counter(strings * 100.0, benchmark::Counter::kIsRate);
    state.counters["draws/string"] = double(drawCalls) / strings;
}

void BM_TextFrameBatched(benchmark::State& state)
{
    textFrame(state, [](PVFONT* font, int x, int y, const std::string& line) {
        font->putString(x, y, line.c_str());
    });
}
BENCHMARK(BM_TextFrameBatched)->Unit(benchmark::kMillisecond);

// The peer: the same glyphs, each bound and drawn on its own.
void BM_TextFrameGlyphByGlyph(benchmark::State& state)
{
    textFrame(state, [](PVFONT* font, int x, int y, const std::string& line) {
        for (size_t c = 0; c < line.size(); c++)
            font->putChar(x + int(c) * 2, y, line[c], true);
    });
}
BENCHMARK(BM_TextFrameGlyphByGlyph)->Unit(benchmark::kMillisecond);

void BM_WidgetFrame50(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    PVBOX* root = new PVBOX();
    root->setDisplayStatus(false);
    for (int i = 0; i < 50; i++) {
        PVBOX* widget = i % 2 ? new PVBUTTON() : new PVBOX();
        widget->setPosition(float((i % 10) * 20), float((i / 10) * 20));
        widget->setSizes(18, 18);
        if (i % 2) {
            static_cast<PVBUTTON*>(widget)->setFont(solidFont());
            static_cast<PVBUTTON*>(widget)->setCaption("Ok");
        }
        widget->link(root);
    }
    drawCalls = 0;
    for (auto _ : state) {
        PEVRANO::begin2D();
        root->pass(false);
        PEVRANO::end2D();
    }
    glFinish();
    state.counters["draws/frame"] = double(drawCalls) / double(state.iterations());
    PVNODE::cleanUp();
}
BENCHMARK(BM_WidgetFrame50)->Unit(benchmark::kMicrosecond);

}  // namespace
