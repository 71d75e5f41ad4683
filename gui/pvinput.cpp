#include "gui/pvinput.h"

#include "core/pvsettings.h"
#include "gui/pvbutton.h"
#include "gui/pvtextfield.h"
#include "gui/pvwindow.h"
#include "scene/pvelement.h"

bool PVINPUT::wasDown = false;
int PVINPUT::lastX = 0;
int PVINPUT::lastY = 0;
unsigned int PVINPUT::pressedId = 0;
unsigned int PVINPUT::focusId = 0;
bool PVINPUT::moved = false;

namespace {

bool isWidget(const PVNODE* node)
{
    return node->getType() >= PV_TYPE_BOX && node->getType() <= PV_TYPE_VSCROLLBAR;
}

// Buttons, windows and text fields carry an event type.
bool isButton(const PVNODE* node)
{
    const PV_NODE_TYPE type = node->getType();
    return type == PV_TYPE_BUTTON || type == PV_TYPE_WINDOW || type == PV_TYPE_TEXTFIELD;
}

bool isMinimizedWindow(const PVNODE* node)
{
    return node->getType() == PV_TYPE_WINDOW && static_cast<const PVWINDOW*>(node)->isMinimized();
}

// The window a title bar belongs to, or null for any other widget.
PVWINDOW* titleBarWindow(PVBOX* widget)
{
    if (!isButton(widget) || static_cast<PVBUTTON*>(widget)->getEventType() != PV_BUTTON_TITLE_BAR)
        return nullptr;
    PVNODE* parent = widget->getParent();
    return parent && parent->getType() == PV_TYPE_WINDOW ? static_cast<PVWINDOW*>(parent) : nullptr;
}

}  // namespace

void PVINPUT::reset()
{
    wasDown = false;
    lastX = lastY = 0;
    pressedId = focusId = 0;
    moved = false;
}

PVBOX* PVINPUT::widgetAt(int x, int y)
{
    PVBOX* found = nullptr;
    for (unsigned int i = 0; i < PVELEMENT::getNumberOfPassedElements(); i++) {
        PVNODE* node = PVELEMENT::getPassedElement(i)->getNode();
        if (!isWidget(node) || isMinimizedWindow(node))
            continue;
        PVBOX* widget = static_cast<PVBOX*>(node);
        if (!widget->getDisplayStatus() || !widget->checkBoundaries(x, y))
            continue;
        if (!found || widget->getForemostTimeStamp() > found->getForemostTimeStamp())
            found = widget;
    }
    return found;
}

PVBOX* PVINPUT::passedWidget(unsigned int id)
{
    if (id == 0)
        return nullptr;
    for (unsigned int i = 0; i < PVELEMENT::getNumberOfPassedElements(); i++) {
        PVNODE* node = PVELEMENT::getPassedElement(i)->getNode();
        if (node->getId() == id && isWidget(node))
            return static_cast<PVBOX*>(node);
    }
    return nullptr;
}

// Returns the id reported by the press, or 0.
unsigned int PVINPUT::press(PVBOX* widget)
{
    moved = false;
    if (widget->getType() == PV_TYPE_WINDOW)
        widget->setForemost(0);
    if (PVWINDOW* window = titleBarWindow(widget))
        window->setForemost(0);
    if (widget->getType() == PV_TYPE_TEXTFIELD)
        focusId = widget->getId();
    if (!isButton(widget)) {
        widget->setClickedStatus(true);
        pressedId = widget->getId();
        return 0;
    }
    const PV_BUTTON_EVENT event = static_cast<PVBUTTON*>(widget)->getEventType();
    if (event == PV_BUTTON_TOGGLE) {
        widget->setClickedStatus(!widget->isClicked());
        return widget->getId();
    }
    widget->setClickedStatus(true);
    pressedId = widget->getId();
    return event == PV_BUTTON_ON_PRESS ? widget->getId() : 0;
}

// A title bar moves its window; other movable widgets move themselves.
void PVINPUT::drag(PVBOX* widget, int dx, int dy)
{
    PVBOX* moving = titleBarWindow(widget);
    if (!moving)
        moving = widget;
    if (moving->isStatic() || (dx == 0 && dy == 0))
        return;
    moving->checkLimits(&dx, &dy);
    if (dx == 0 && dy == 0)
        return;
    moving->move(float(dx), float(dy));
    moved = true;
}

// Returns the id reported by the release, or 0.
unsigned int PVINPUT::release(PVBOX* widget, int x, int y)
{
    widget->setClickedStatus(false);
    if (!isButton(widget) || !widget->checkBoundaries(x, y))
        return 0;
    if (PVWINDOW* window = titleBarWindow(widget)) {
        // A bar that was dragged only moved its window.
        if (!moved)
            window->minmaximize();
        return 0;
    }
    return static_cast<PVBUTTON*>(widget)->getEventType() == PV_BUTTON_ON_RELEASE ? widget->getId() : 0;
}

PVTEXTFIELD* PVINPUT::getFocus()
{
    PVBOX* focus = passedWidget(focusId);
    return focus && focus->getType() == PV_TYPE_TEXTFIELD ? static_cast<PVTEXTFIELD*>(focus) : nullptr;
}

void PVINPUT::feedFocus(char key)
{
    if (PVTEXTFIELD* focus = getFocus())
        focus->manageKey(key);
}

bool PVINPUT::manage(char key, int x, int y, int pointerDown, unsigned int* clickedId)
{
    // The interface is drawn turned by a quarter in landscape.
    if (PVSETTINGS::isSDLLandscape()) {
        const int turnedX = PVSETTINGS::getSDLWindowY() - y;
        y = x;
        x = turnedX;
    }
    const bool down = pointerDown != 0;
    PVBOX* hit = widgetAt(x, y);
    unsigned int reported = 0;
    if (down && !wasDown) {
        if (hit)
            reported = press(hit);
    } else if (down) {
        if (PVBOX* pressed = passedWidget(pressedId))
            drag(pressed, x - lastX, y - lastY);
    } else if (wasDown) {
        if (PVBOX* pressed = passedWidget(pressedId))
            reported = release(pressed, x, y);
        pressedId = 0;
    }
    feedFocus(key);
    wasDown = down;
    lastX = x;
    lastY = y;
    if (clickedId)
        *clickedId = reported;
    return hit != nullptr;
}
