#include "gui/pvbutton.h"

#include <cstdio>
#include <cstring>

#include "core/pvopengl.h"
#include "foundation/kvfstring.h"
#include "gui/pvfont.h"

PVBUTTON::PVBUTTON() : font(nullptr), eventType(PV_BUTTON_ON_RELEASE)
{
    type = PV_TYPE_BUTTON;
    setDefaultName("[button %d]");
    snprintf(caption, sizeof(caption), "[button %d]", int(id));
    color = K3MVECTOR4D(0.8f, 0.3f, 0.0f, 0.9f);
    checkStatus = true;
}

void PVBUTTON::setCaption(const char* text) { kvfCopyIfFits(caption, sizeof caption, text); }

void PVBUTTON::putCaption(const char* text)
{
    const int offset = clickedStatus ? 2 : 1;
    font->putText(offset, offset, text);
}

bool PVBUTTON::render(void* element)
{
    if (!displayStatus)
        return true;
    PVBOX::render(element);
    if (scissorStatus)
        PVOPENGL::scissorOn();
    // A caption that does not fit is replaced by a mark, never cut.
    if (font && caption[0]) {
        if (font->stringLength(caption) < unsigned(sizeX))
            putCaption(caption);
        else if (font->stringLength("[...]") < unsigned(sizeX))
            putCaption("[...]");
    }
    if (scissorStatus)
        PVOPENGL::scissorOff();
    return true;
}
