// PEVRANO's event pump: window events and pushed ones, handed to the
// interface one by one.
#include "core/pevrano.h"

#include "core/pveventpump.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"

bool PEVRANO::pollEvent(PVEVENT* event)
{
    if (!event) {
        kvfLog("   [!] Invalid params @ PEVRANO::pollEvent\n");
        return false;
    }
    if (!PVEVENTPUMP::pop(event) && !PVSETTINGS::readDisplayEvent(event)) {
        PVEVENTPUMP::settle();
        return false;
    }
    PVEVENTPUMP::apply(event);
    return true;
}

bool PEVRANO::pushEvent(const PVEVENT* event)
{
    if (!event || event->type < PV_EVENT_KEY_DOWN || event->type > PV_EVENT_QUIT ||
        (event->type == PV_EVENT_RESIZE && (event->width < 1 || event->height < 1))) {
        kvfLog("   [!] Invalid params @ PEVRANO::pushEvent\n");
        return false;
    }
    if (!PVEVENTPUMP::push(*event)) {
        kvfLog("   [!] Event queue full @ PEVRANO::pushEvent\n");
        return false;
    }
    return true;
}

bool PEVRANO::isKeyDown(int key) { return PVEVENTPUMP::isKeyDown(key); }

void PEVRANO::getPointer(int* x, int* y, int* buttons)
{
    if (x)
        *x = PVEVENTPUMP::getPointerX();
    if (y)
        *y = PVEVENTPUMP::getPointerY();
    if (buttons)
        *buttons = PVEVENTPUMP::getButtons();
}
