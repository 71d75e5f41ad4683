// Interface costs: a frame of text (25 strings of 40 characters in the demo's
// font and size) drawn one draw call per string, against the same glyphs
// drawn one draw call each (the peer in the same run); the CPU cost of a 2D
// frame of 50 widgets (bevelled boxes and captioned buttons); and a frame of
// 1,000 bevelled boxes against the same boxes drawn one draw call per piece
// (the floor in the same run). Draw calls are counted at the GL entry point.
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <string>
#include <vector>

#include <pevrano.h>

#include "benchengine.h"
#include "glcalls.h"

namespace {

long& drawCalls = pvbench::glCalls().draws;

// Minor page faults of the process so far (a fault each time a freed page
// comes back into use).
long pageFaults()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

using pvbench::engineStarted;

// The demo's font: DejaVu Sans made by pevrano-font at build time, read as
// the interface file reads a font (sheet neither filtered nor mipmapped) and
// drawn at its own 16-pixel cells, the size the demo draws.
PVFONT* demoFont()
{
    static PVFONT* font = [] {
        const std::string texturePath = PVTEXTURE::getPath();
        PVTEXTURE::setPath(PEVRANO_FONT_DIR "/");
        PVFONT::setPath(PEVRANO_FONT_DIR "/");
        PVTEXTURE* sheet = new PVTEXTURE();
        const bool loaded = sheet->load("dejavu.tga");
        PVTEXTURE::setPath(texturePath.c_str());
        if (!loaded)
            return static_cast<PVFONT*>(nullptr);
        sheet->setFilter(false, false, false);
        PVFONT* made = new PVFONT();
        made->setTexture(sheet);
        made->loadKerning("dejavu.txt");
        return made;
    }();
    return font;
}

// 1,000 glyphs a frame: 25 lines of 40 characters, one text line (16
// pixels) apart, about 320 pixels wide.
const int textLines = 25;
const int lineGlyphs = 40;

// Letters, digits and punctuation; no '%' or '^', which the text would read
// as conversions and escapes.
std::vector<std::string> textPage()
{
    static const char glyphs[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789.,;:!?()[]-+=/*'";
    const int kinds = int(sizeof(glyphs)) - 1;
    std::vector<std::string> lines;
    for (int i = 0; i < textLines; i++) {
        std::string line;
        for (int c = 0; c < lineGlyphs; c++)
            line += glyphs[(i * 7 + c * 13) % kinds];
        lines.push_back(line);
    }
    return lines;
}

// Pixels of the text's area, read back once the benchmark has run over a
// black screen, that the glyphs lit.
long litPixels()
{
    const int width = 400;
    const int height = textLines * 16;
    std::vector<unsigned char> pixels(size_t(width * height * 4));
    glReadPixels(0, PVSETTINGS::getSDLWindowY() - height, width, height, GL_RGBA, GL_UNSIGNED_BYTE,
                 pixels.data());
    long lit = 0;
    for (size_t i = 0; i < pixels.size(); i += 4)
        lit += pixels[i] > 0;
    return lit;
}

template <typename DrawLine> void textFrame(benchmark::State& state, DrawLine drawLine)
{
    PVFONT* font = engineStarted() ? demoFont() : nullptr;
    if (!font) {
        state.SkipWithError("engine or demo font missing");
        return;
    }
    const std::vector<std::string> lines = textPage();
    PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
    PEVRANO::clear(true, true, false);
    PEVRANO::begin2D();
    drawCalls = 0;
    const double processStart = pvbench::processSeconds();
    const long faultsStart = pageFaults();
    for (auto _ : state) {
        for (int i = 0; i < textLines; i++)
            drawLine(font, 0, i * 16, lines[size_t(i)]);
        glFinish();
    }
    const double processTime = pvbench::processSeconds() - processStart;
    const double faults = double(pageFaults() - faultsStart);
    PEVRANO::end2D();
    const double strings = double(state.iterations()) * textLines;
    state.SetItemsProcessed(int64_t(strings * lineGlyphs));
    state.counters["glyphs/s"] = benchmark::Counter(strings * lineGlyphs, benchmark::Counter::kIsRate);
    // Every thread's processor time: llvmpipe rasterises in threads of its own.
    state.counters["glyphs/s_process_cpu"] = strings * lineGlyphs / processTime;
    state.counters["draws/string"] = double(drawCalls) / strings;
    state.counters["faults/frame"] = faults / double(state.iterations());
    // Text that never reached the screen would be timed for nothing.
    const long lit = litPixels();
    state.counters["lit_pixels"] = double(lit);
    if (lit < textLines * lineGlyphs * 10)
        state.SkipWithError("the text did not appear on the screen");
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
        int pen = x;
        for (char c : line) {
            font->putChar(pen, y, c, true);
            pen += int(font->getCharSizeX()) - font->getKerning(c);
        }
    });
}
BENCHMARK(BM_TextFrameGlyphByGlyph)->Unit(benchmark::kMillisecond);

// An undrawn box to hang a frame's widgets under, once the engine runs;
// null (the benchmark skipped) when it does not start.
PVBOX* widgetRoot(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return nullptr;
    }
    PVBOX* root = new PVBOX();
    root->setDisplayStatus(false);
    return root;
}

void BM_WidgetFrame50(benchmark::State& state)
{
    PVBOX* root = widgetRoot(state);
    if (!root)
        return;
    for (int i = 0; i < 50; i++) {
        PVBOX* widget = i % 2 ? new PVBUTTON() : new PVBOX();
        widget->setPosition(float((i % 10) * 42), float((i / 10) * 20));
        widget->setSizes(40, 18);  // room for a caption in the demo's font
        if (i % 2) {
            static_cast<PVBUTTON*>(widget)->setFont(demoFont());
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

// The floor: a box drawn the way boxes were drawn before their pieces were
// batched, one draw call for the fill and one for each border piece.
class OneDrawPerPieceBox : public PVBOX {
public:
    bool render(void* element) override
    {
        if (!displayStatus)
            return false;
        beginDrawing(element, isTransparent());
        drawQuad(0, 0, sizeX, sizeY, fillColor(), &boxCoord);
        PVTEXTURE::texturingOff(0);
        PVOPENGL::blendingOn();
        for (int ring = 0; ring < int(thickness); ring++)
            for (int piece = 0; piece < PV_BOX_RING_PIECES; piece++) {
                const PVBOXQUAD quad = borderQuad(ring, piece);
                drawQuad(quad.left, quad.top, quad.right, quad.bottom, quad.color, nullptr);
            }
        if (scissorStatus)
            PVOPENGL::scissorOff();
        return true;
    }
};

// 1,000 bevelled boxes (3-pixel borders) in a 40 x 25 grid filling the
// screen, a quarter of them translucent and a quarter pressed; each
// iteration is one 2D frame drawn to the end.
template <typename Box> void boxFrame(benchmark::State& state)
{
    PVBOX* root = widgetRoot(state);
    if (!root)
        return;
    for (int i = 0; i < 1000; i++) {
        PVBOX* box = new Box();
        box->setPosition(float((i % 40) * 16), float((i / 40) * 19));
        box->setSizes(15, 18);
        box->setColor(0.2f + 0.6f * float(i % 7) / 7.0f, 0.5f, 0.3f, i % 4 == 1 ? 0.6f : 1.0f);
        box->setClickedStatus(i % 4 == 2);
        box->link(root);
    }
    drawCalls = 0;
    const double processStart = pvbench::processSeconds();
    for (auto _ : state) {
        PEVRANO::begin2D();
        root->pass(false);
        PEVRANO::end2D();
        glFinish();
    }
    const double frames = double(state.iterations());
    state.counters["process_cpu_ms/frame"] = (pvbench::processSeconds() - processStart) * 1000.0 / frames;
    state.counters["draws/frame"] = double(drawCalls) / frames;
    PVNODE::cleanUp();
}

void BM_BoxFrame1000(benchmark::State& state) { boxFrame<PVBOX>(state); }
BENCHMARK(BM_BoxFrame1000)->Unit(benchmark::kMillisecond);

void BM_BoxFrame1000OneDrawPerPiece(benchmark::State& state) { boxFrame<OneDrawPerPieceBox>(state); }
BENCHMARK(BM_BoxFrame1000OneDrawPerPiece)->Unit(benchmark::kMillisecond);

}  // namespace
