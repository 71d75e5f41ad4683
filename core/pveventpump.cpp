#include "core/pveventpump.h"

#include <algorithm>

#include "core/pvsettings.h"
#include "scene/pvelement.h"

PVEVENT PVEVENTPUMP::queue[capacity];
int PVEVENTPUMP::first = 0;
int PVEVENTPUMP::count = 0;
bool PVEVENTPUMP::keys[keyCount] = {};
int PVEVENTPUMP::pointerX = 0;
int PVEVENTPUMP::pointerY = 0;
int PVEVENTPUMP::buttons = 0;

namespace {

bool isPointerEvent(PV_EVENT_TYPE type)
{
    return type == PV_EVENT_POINTER_MOVE || type == PV_EVENT_POINTER_DOWN || type == PV_EVENT_POINTER_UP;
}

int buttonBit(int button)
{
    return button >= PV_POINTER_LEFT && button <= PV_POINTER_RIGHT ? PV_POINTER_BIT(button) : 0;
}

}  // namespace

bool PVEVENTPUMP::push(const PVEVENT& event)
{
    if (count == capacity)
        return false;
    queue[(first + count) % capacity] = event;
    count++;
    return true;
}

bool PVEVENTPUMP::pop(PVEVENT* event)
{
    if (count == 0)
        return false;
    *event = queue[first];
    first = (first + 1) % capacity;
    count--;
    return true;
}

void PVEVENTPUMP::reset()
{
    first = count = 0;
    std::fill(keys, keys + keyCount, false);
    pointerX = pointerY = buttons = 0;
}

bool PVEVENTPUMP::isKeyDown(int key) { return key >= 0 && key < keyCount && keys[key]; }

void PVEVENTPUMP::setKey(int key, bool down)
{
    if (key >= 0 && key < keyCount)
        keys[key] = down;
}

char PVEVENTPUMP::typedCharacter(const PVEVENT& event)
{
    if (event.unicode > 0 && event.unicode < 128)
        return char(event.unicode);
    return event.key == PV_KEY_BACKSPACE ? char(PV_KEY_BACKSPACE) : 0;
}

// The interface's pointer is pressed while the left button is.
void PVEVENTPUMP::dispatch(PVEVENT* event, char key)
{
    event->overInterface = PVELEMENT::manageGUIEvents(
        key, pointerX, pointerY, buttons & PV_POINTER_BIT(PV_POINTER_LEFT), 0, &event->clickedId);
}

void PVEVENTPUMP::apply(PVEVENT* event)
{
    event->clickedId = 0;
    event->overInterface = false;
    if (isPointerEvent(event->type)) {
        pointerX = event->x;
        pointerY = event->y;
    } else {
        event->x = pointerX;
        event->y = pointerY;
    }
    switch (event->type) {
    case PV_EVENT_KEY_DOWN:
        setKey(event->key, true);
        dispatch(event, typedCharacter(*event));
        break;
    case PV_EVENT_KEY_UP:
        setKey(event->key, false);
        dispatch(event, 0);
        break;
    case PV_EVENT_POINTER_DOWN:
        buttons |= buttonBit(event->button);
        dispatch(event, 0);
        break;
    case PV_EVENT_POINTER_UP:
        buttons &= ~buttonBit(event->button);
        dispatch(event, 0);
        break;
    case PV_EVENT_POINTER_MOVE:
        dispatch(event, 0);
        break;
    case PV_EVENT_RESIZE:
        // The viewport now, the 2D projection at the next begin2D.
        if (PVSETTINGS::isActive())
            PVSETTINGS::resize(0, 0, event->width, event->height);
        break;
    default:
        break;
    }
}

void PVEVENTPUMP::settle()
{
    PVEVENT unchanged;
    dispatch(&unchanged, 0);
}
