#include "gui/pvwindow.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"
#include "gui/pvfont.h"
#include "gui/pvvscrollbar.h"

#define PV_TITLE_BAR_HEIGHT 19
// Mark put in front of the title while the window is minimised.
#define PV_MINIMIZED_MARK "[+] %s"
#define PV_MINIMIZED_MARK_LENGTH 4
// Children from this index on are the user's widgets.
#define PV_FIRST_USER_CHILD 2
// A label's line height when it counts in the content.
#define PV_LABEL_LINE 16

PVWINDOW::PVWINDOW() :
    maximized(true),
    text(),
    formattedText(),
    titleBar(new PVBUTTON()),
    scrollBar(new PVVSCROLLBAR()),
    scrollLine(0),
    scrollOffset(0),
    contentHeight(0),
    textHeight(0)
{
    type = PV_TYPE_WINDOW;
    setDefaultName("[window %d]");
    checkStatus = true;
    staticStatus = false;
    sizeX = 128;
    sizeY = 128;
    setPosition(0.0f, float(PV_TITLE_BAR_HEIGHT));
    color = K3MVECTOR4D(0.0f, 0.0f, 0.6f, 0.9f);
    thickness = 2;
    caption[0] = '\0';

    titleBar->setStaticStatus(false);
    titleBar->setScissorStatus(false);
    titleBar->setSizes(128, PV_TITLE_BAR_HEIGHT);
    titleBar->setPosition(0.0f, -float(PV_TITLE_BAR_HEIGHT));
    titleBar->setColor(0.8f, 0.3f, 0.0f, 0.9f);
    titleBar->setEventType(PV_BUTTON_TITLE_BAR);
    titleBar->link(this);

    scrollBar->setPosition(120.0f, 16.0f);
    scrollBar->setSizeY(96);
    scrollBar->setValue(0.0f);
    scrollBar->link(this);
}

void PVWINDOW::setCaption(const char* newCaption) { titleBar->setCaption(newCaption); }

void PVWINDOW::setFont(PVFONT* newFont)
{
    titleBar->setFont(newFont);
    font = newFont;
}

void PVWINDOW::setSizes(int w, int h)
{
    titleBar->setSizeX(w);
    scrollBar->setSizeY(h - 32);
    scrollBar->setPosition(float(w - 8), 16.0f);
    scrollBar->setValue(0.0f);
    sizeX = w;
    sizeY = h;
}

void PVWINDOW::clear()
{
    text[0] = '\0';
    textHeight = 0;
}

bool PVWINDOW::write(const char* formatText, ...)
{
    if (!formatText) {
        kvfLog("   [!] Invalid params @ PVWINDOW::write\n");
        return false;
    }
    char piece[PV_WINDOW_TEXT_SIZE];
    va_list arguments;
    va_start(arguments, formatText);
    const int needed = vsnprintf(piece, sizeof(piece), formatText, arguments);
    va_end(arguments);
    if (needed < 0 || strlen(text) + size_t(needed) >= PV_WINDOW_TEXT_SIZE) {
        kvfLog("   [!] Text overflow @ PVWINDOW::write\n");
        return false;
    }
    strcat(text, piece);
    return true;
}

bool PVWINDOW::format()
{
    if (!font)
        return false;
    textHeight = font->format(text, formattedText, unsigned(sizeX), 0);
    return true;
}

bool PVWINDOW::minmaximize()
{
    maximized = !maximized;
    const char* old = titleBar->getCaption();
    if (!maximized) {
        char marked[PV_CAPTION_SIZE + PV_MINIMIZED_MARK_LENGTH];
        snprintf(marked, sizeof(marked), PV_MINIMIZED_MARK, old);
        titleBar->setCaption(marked);
    } else if (strlen(old) >= PV_MINIMIZED_MARK_LENGTH) {
        char restored[PV_CAPTION_SIZE];
        snprintf(restored, sizeof(restored), "%s", old + PV_MINIMIZED_MARK_LENGTH);
        titleBar->setCaption(restored);
    }
    return maximized;
}

void PVWINDOW::enableScissor()
{
    PV_glPushMatrix();
    PV_glLoadIdentity();
    const K3MVECTOR3D at = ancestorsPosition() + position;
    const int x = int(at.x);
    const int y = int(at.y);
    PVOPENGL::scissorOn();
    // GL counts rows from the bottom, the interface from the top; in
    // landscape the axes are exchanged.
    if (PVSETTINGS::isSDLLandscape())
        glScissor(y, x, sizeY, sizeX);
    else
        glScissor(x, PVSETTINGS::getSDLWindowY() - y - sizeY, sizeX, sizeY);
    PV_glPopMatrix();
}

void PVWINDOW::disableScissor()
{
    const int width = PVSETTINGS::getSDLWindowX();
    const int height = PVSETTINGS::getSDLWindowY();
    if (PVSETTINGS::isSDLLandscape())
        glScissor(0, 0, height, width);
    else
        glScissor(0, 0, width, height);
    glDisable(GL_SCISSOR_TEST);
}

bool PVWINDOW::updateScroll()
{
    contentHeight = textHeight;
    for (unsigned int i = PV_FIRST_USER_CHILD; i < numberOfChildren; i++) {
        PVNODE* child = children[i];
        const PV_NODE_TYPE childType = child->getType();
        if (childType == PV_TYPE_WINDOW || childType < PV_TYPE_BOX || childType > PV_TYPE_VSCROLLBAR)
            continue;
        const float y = child->getPosition().y;
        // The label test reads scrollLine and the new height scrollOffset,
        // and the extra hundredth of the offset is kept as it is.
        if (childType == PV_TYPE_LABEL) {
            if (y + PV_LABEL_LINE + float(scrollLine) > float(contentHeight))
                contentHeight = int(y + PV_LABEL_LINE + float(scrollOffset) + float(scrollOffset) * 0.01f);
        } else {
            const int sizeY = static_cast<PVBOX*>(child)->getSizeY();
            if (int(y) + sizeY + scrollOffset > contentHeight)
                contentHeight = int(y + float(sizeY) + float(scrollOffset) + float(scrollOffset) * 0.01f);
        }
    }
    if (contentHeight > sizeY) {
        scrollBar->setDisplayStatus(true);
        int cursor = int(float(sizeY) / float(contentHeight) * float(sizeY - 32));
        scrollBar->setCursorSize(cursor < 8 ? 8 : cursor);
    } else {
        scrollBar->setDisplayStatus(false);
        scrollLine = 0;
    }
    const int delta = scrollOffset - scrollLine;
    if (delta != 0)
        for (unsigned int i = PV_FIRST_USER_CHILD; i < numberOfChildren; i++)
            if (children[i]->getType() != PV_TYPE_WINDOW)
                children[i]->move(0.0f, float(delta));
    return true;
}

bool PVWINDOW::render(void* element)
{
    if (!displayStatus || !maximized)
        return true;
    scrollLine = int(scrollBar->getValue() * float(contentHeight - sizeY));
    updateScroll();
    PVBUTTON::render(element);
    if (scissorStatus)
        PVOPENGL::scissorOn();
    // The formatted text is read as a format: "%%" in the window's text
    // draws one '%'.
    if (font) {
        if (clickedStatus)
            font->putText(1, 1 - scrollOffset, formattedText);
        else
            font->putText(0, -scrollOffset, formattedText);
    }
    scrollOffset = scrollLine;
    if (scissorStatus)
        PVOPENGL::scissorOff();
    return true;
}
