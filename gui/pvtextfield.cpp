#include "gui/pvtextfield.h"

#include <cstdio>
#include <cstring>

#include "assets/pvtexture.h"
#include "core/pvevent.h"
#include "core/pvframestate.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "gui/pvfont.h"
#include "gui/pvinput.h"

// The caret is the glyph of code 127, shown for the last 70% of each second.
#define PV_CARET_CODE 127
#define PV_CARET_SHOWN_AFTER 0.3f

PVTEXTFIELD::PVTEXTFIELD() : editing(false), caretTimer(0.0f), lastKey(PV_TEXTFIELD_KEY_NONE)
{
    type = PV_TYPE_TEXTFIELD;
    setDefaultName("[textfield %d]");
    thickness = 1;
    checkStatus = true;
}

void PVTEXTFIELD::append(char c)
{
    const size_t length = strlen(caption);
    caption[length] = c;
    caption[length + 1] = '\0';
}

PV_TEXTFIELD_KEY PVTEXTFIELD::eraseLast()
{
    const size_t length = strlen(caption);
    if (length == 0)
        return PV_TEXTFIELD_KEY_NONE;
    caption[length - 1] = '\0';
    return PV_TEXTFIELD_KEY_ERASED;
}

// A typed code: nothing without a font or for code 0, backspace erases, a
// code the font cannot draw is refused, a drawable one goes in when fits
// says it does.
PV_TEXTFIELD_KEY PVTEXTFIELD::typeCode(unsigned int code, bool (PVTEXTFIELD::*fits)(char) const)
{
    if (!font)
        return lastKey = PV_TEXTFIELD_KEY_NO_FONT;
    editing = true;
    if (code == 0)
        return lastKey = PV_TEXTFIELD_KEY_NONE;
    if (code == PV_KEY_BACKSPACE)
        return lastKey = eraseLast();
    if (code < PV_FONT_FIRST_CODE || code > PV_FONT_LAST_CODE)
        return lastKey = PV_TEXTFIELD_KEY_NOT_DRAWABLE;
    if (!(this->*fits)(char(code)))
        return lastKey = PV_TEXTFIELD_KEY_FULL;
    append(char(code));
    return lastKey = PV_TEXTFIELD_KEY_INSERTED;
}

// The kerning is added here, not the advance: kept as it is.
bool PVTEXTFIELD::fitsWithKerning(char key) const
{
    const unsigned int room = unsigned(sizeX) - font->getCharSizeX();
    return font->stringLength(caption) + unsigned(font->getKerning(key)) <= room &&
           strlen(caption) < PV_CAPTION_SIZE - 1;
}

// The text is drawn only while it and the caret are narrower than the room:
// a character that would hide it is refused.
bool PVTEXTFIELD::fitsWithCaret(char key) const
{
    char typed[PV_CAPTION_SIZE + 2];
    snprintf(typed, sizeof(typed), "%s%c\x7f", caption, key);
    const unsigned int room = unsigned(sizeX) - font->getCharSizeX();
    return strlen(caption) < PV_CAPTION_SIZE - 1 && font->stringLength(typed) < room;
}

bool PVTEXTFIELD::manageKey(char key)
{
    return typeCode(static_cast<unsigned char>(key), &PVTEXTFIELD::fitsWithKerning) !=
           PV_TEXTFIELD_KEY_NO_FONT;
}

PV_TEXTFIELD_KEY PVTEXTFIELD::typeCharacter(unsigned int code)
{
    return typeCode(code, &PVTEXTFIELD::fitsWithCaret);
}

PVTEXTFIELD* PVTEXTFIELD::getFocus() { return PVINPUT::getFocus(); }

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
