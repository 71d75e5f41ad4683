#include "scene/pvhelper.h"

#include "foundation/kvflog.h"

PVHELPER::PVHELPER() : radius(0.0f)
{
    type = PV_TYPE_HELPER;
    setDefaultName("[helper %d]");
}

bool PVHELPER::render(void* element)
{
    if (!element) {
        kvfLog("   [!] Invalid params @ PVHELPER::render\n");
        return false;
    }
    return true;
}
