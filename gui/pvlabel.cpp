#include "gui/pvlabel.h"

#include <cstdarg>
#include <cstdio>

#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "foundation/kvflog.h"
#include "gui/pvfont.h"
#include "scene/pvelement.h"

// Wide enough that writing never wraps; the copy only handles escapes.
#define PV_LABEL_NO_WRAP 65000

PVLABEL::PVLABEL() : text(), font(nullptr)
{
    type = PV_TYPE_LABEL;
    setDefaultName("[label %d]");
    kvfLog("   PVLABEL() called\n");
}

bool PVLABEL::write(const char* format, ...)
{
    if (!format) {
        kvfLog("   [!] Invalid params @ PVLABEL::write\n");
        return false;
    }
    if (!font) {
        kvfLog("   [!] Font not specified @ PVLABEL::write\n");
        return false;
    }
    char formatted[PV_LABEL_INPUT_SIZE];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(formatted, sizeof(formatted), format, arguments);
    va_end(arguments);
    font->format(formatted, text, PV_LABEL_NO_WRAP, 0);
    return true;
}

// No background and no display test: only the text, clipped like a box.
bool PVLABEL::render(void* element)
{
    PV_glLoadMatrixf(static_cast<PVELEMENT*>(element)->getMatrix()->m);
    applyScissor();
    if (font)
        font->putText(0, 0, text);
    if (scissorStatus)
        PVOPENGL::scissorOff();
    return true;
}
