#include "gui/pvtextfield.h"

#include <cstring>

#include "assets/pvtexture.h"
#include "core/pvframestate.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "gui/pvfont.h"

// The caret is the glyph of code 127, shown for the last 70% of each second.
#define PV_CARET_CODE 127
#define PV_CARET_SHOWN_AFTER 0.3f
#define PV_KEY_BACKSPACE 8

PVTEXTFIELD::PVTEXTFIELD() : editing(false), caretTimer(0.0f)
{
    type = PV_TYPE_TEXTFIELD;
    setDefaultName("[textfield %d]");
    thickness = 1;
    checkStatus = true;
}

bool PVTEXTFIELD::manageKey(char key)
{
    if (!font)
        return false;
    editing = true;
    const int code = static_cast<unsigned char>(key);
    const size_t length = strlen(caption);
    if (code >= 32 && code <= 127) {
        // The kerning is added here, not the advance: kept as it is.
        const unsigned int room = unsigned(sizeX) - font->getCharSizeX();
        if (font->stringLength(caption) + unsigned(font->getKerning(key)) <= room &&
            length < PV_CAPTION_SIZE - 1) {
            caption[length] = key;
            caption[length + 1] = '\0';
        }
    } else if (code == PV_KEY_BACKSPACE && length > 0) {
        caption[length - 1] = '\0';
    }
    return true;
}

bool PVTEXTFIELD::render(void* element)
{
    PVBUTTON::render(element);
    char shown[PV_CAPTION_SIZE + 1];
    strcpy(shown, caption);
    if (editing) {
        if (caretTimer > PV_CARET_SHOWN_AFTER)
            strcat(shown, "\x7f");
        caretTimer += PVFRAMESTATE::getFPSfactor();
        if (caretTimer >= 1.0f)
            caretTimer = 0.0f;
    }
    editing = false;
    if (font && font->stringLength(shown) < unsigned(sizeX) - font->getCharSizeX())
        putCaption(shown);
    drawSunkenFrame();
    return true;
}

// Ring i of the frame inside the border: dark top and left lines, light
// bottom and right lines, and a darker inner corner.
void PVTEXTFIELD::drawSunkenFrame()
{
    static const GLubyte topLeft[] = {0, 1, 0, 2};
    static const GLubyte bottomRight[] = {2, 3, 1, 3};
    static const GLubyte innerCorner[] = {4, 5, 4, 6};
    static const float shades[3] = {0.7f, 1.3f, 0.4f};
    static const GLubyte* lines[3] = {topLeft, bottomRight, innerCorner};
    const float pressed = clickedStatus ? 0.9f : 1.0f;
    const int width = sizeX - 2 * int(thickness);
    const int height = sizeY - 2 * int(thickness);

    PVTEXTURE::texturingOff(0);
    PVOPENGL::blendingOn();
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
    PV_glTranslatef(float(thickness), float(thickness), 0.0f);
    for (int i = 0; i < int(thickness); i++) {
        const int right = width - i;
        const int bottom = height - i;
        const GLfixed corners[14] = {
            PV_floatToFixed(float(i)),     PV_floatToFixed(float(i)),         PV_floatToFixed(float(right)),
            PV_floatToFixed(float(i)),     PV_floatToFixed(float(i)),         PV_floatToFixed(float(bottom)),
            PV_floatToFixed(float(right)), PV_floatToFixed(float(bottom)),    PV_floatToFixed(float(i + 1)),
            PV_floatToFixed(float(i + 1)), PV_floatToFixed(float(right - 1)), PV_floatToFixed(float(i + 1)),
            PV_floatToFixed(float(i + 1)), PV_floatToFixed(float(bottom - 1))};
        glVertexPointer(2, GL_FIXED, 0, corners);
        for (int piece = 0; piece < 3; piece++) {
            const K3MVECTOR4D shade = color * (shades[piece] * pressed);
            PV_glColor4f(shade.x, shade.y, shade.z, color.w);
            glDrawElements(GL_LINES, 4, GL_UNSIGNED_BYTE, lines[piece]);
        }
    }
    // The boxes and glyphs drawn next use every array.
    PVOPENGL::colorArrayOn();
    PVOPENGL::textureArrayOn();
}
