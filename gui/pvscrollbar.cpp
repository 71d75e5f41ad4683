#include "gui/pvscrollbar.h"

#include "foundation/kvflog.h"

static float clampTo(float value, float low, float high)
{
    if (value < low)
        return low;
    if (value > high)
        return high;
    return value;
}

PVSCROLLBAR::PVSCROLLBAR(bool alongY, const char* name) :
    minValue(0.0f),
    maxValue(1.0f),
    cursor(new PVBUTTON()),
    vertical(alongY),
    className(name)
{
    type = vertical ? PV_TYPE_VSCROLLBAR : PV_TYPE_HSCROLLBAR;
    // Both bars take the horizontal name pattern, deliberately.
    setDefaultName("[hscrollbar %d]");
    if (vertical) {
        setSizes(4, 64);
        cursor->setSizes(8, 16);
    } else {
        setSizes(64, 4);
        cursor->setSizes(16, 8);
    }
    color = K3MVECTOR4D(0.6f, 0.2f, 0.0f, 0.35f);
    checkStatus = false;
    staticStatus = true;
    cursor->setStaticStatus(false);
    cursor->setLimitStatus(true);
    cursor->setColor(0.8f, 0.3f, 0.0f, 0.9f);
    renewCursorLimits();
    // At the start of its travel, centred across the track.
    cursor->setPosition(float(cursor->getStartX()), float(cursor->getStartY()));
    cursor->link(this);
}

// Along the bar the cursor's centre reaches both ends; across it the cursor
// stays centred on the track.
void PVSCROLLBAR::renewCursorLimits()
{
    const int cw = cursor->getSizeX();
    const int ch = cursor->getSizeY();
    if (vertical)
        cursor->setLimits(-cw / 4, -ch / 2, cw - cw / 4, sizeY + ch / 2);
    else
        cursor->setLimits(-cw / 2, -ch / 4, sizeX + cw / 2, ch - ch / 4);
}

float PVSCROLLBAR::cursorPlace() const
{
    const K3MVECTOR3D at = cursor->getPosition();
    return vertical ? at.y : at.x;
}

float PVSCROLLBAR::cursorLength() const { return float(vertical ? cursor->getSizeY() : cursor->getSizeX()); }

void PVSCROLLBAR::placeCursor(float place)
{
    const K3MVECTOR3D at = cursor->getPosition();
    if (vertical)
        cursor->setPosition(at.x, place);
    else
        cursor->setPosition(place, at.y);
}

bool PVSCROLLBAR::hasCursor(const char* operation)
{
    if (cursor)
        return true;
    kvfLog("   [!] Invalid cursor reference @ %s::%s\n", className, operation);
    return false;
}

void PVSCROLLBAR::setDisplayStatus(bool value)
{
    displayStatus = value;
    if (cursor)
        cursor->setDisplayStatus(value);
}

void PVSCROLLBAR::setCursorSize(int size)
{
    if (!cursor)
        return;
    placeCursor(cursorPlace() + cursorLength() / 2.0f - float(size) / 2.0f);
    if (vertical)
        cursor->setSizeY(size);
    else
        cursor->setSizeX(size);
}

void PVSCROLLBAR::setValue(float value)
{
    if (!hasCursor("setValue"))
        return;
    const float t = (clampTo(value, minValue, maxValue) - minValue) / (maxValue - minValue);
    placeCursor(t * float(trackLength()) - cursorLength() / 2.0f);
}

float PVSCROLLBAR::getValue()
{
    if (!hasCursor("getValue"))
        return 0.0f;
    const float length = float(trackLength());
    const float t = 1.0f - (length - (cursorPlace() + cursorLength() / 2.0f)) / length;
    return clampTo((maxValue - minValue) * t + minValue, minValue, maxValue);
}

bool PVSCROLLBAR::render(void* element)
{
    if (cursor)
        renewCursorLimits();
    PVBOX::render(element);
    return true;
}
