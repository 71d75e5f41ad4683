/// \file
/// Window: a movable panel with a title bar (first child), a vertical scroll
/// bar (second child), a word-wrapped text area and any number of widgets
/// (the children from the third on). It clips every widget inside it and
/// scrolls its text together with them.
#ifndef PEVRANO_GUI_PVWINDOW_H
#define PEVRANO_GUI_PVWINDOW_H

#include "gui/pvbutton.h"

class PVVSCROLLBAR;

#define PV_WINDOW_TEXT_SIZE 3968

class PVWINDOW : public PVBUTTON {
public:
    PVWINDOW();
    PVWINDOW(const PVWINDOW& other) = default;
    PVWINDOW& operator=(const PVWINDOW& other) = default;
    ~PVWINDOW() override = default;
    bool render(void* element) override;

    void setCaption(const char* text);
    void setFont(PVFONT* newFont);
    void setSizes(int w, int h);
    void setScrollLine(int value) { scrollLine = value; }
    int getScrollLine() const { return scrollLine; }
    bool isMinimized() const { return !maximized; }
    PVBUTTON* getTitleBar() const { return titleBar; }
    PVVSCROLLBAR* getScrollBar() const { return scrollBar; }
    const char* getText() const { return text; }
    const char* getFormattedText() const { return formattedText; }
    int getContentHeight() const { return contentHeight; }

    void clear();
    bool write(const char* format, ...);
    bool format();
    /// Returns true when the window ends up restored.
    bool minmaximize();
    bool updateScroll();
    void enableScissor();
    void disableScissor();

private:
    bool maximized;
    char text[PV_WINDOW_TEXT_SIZE];
    /// Wrapping may add a line break per character.
    char formattedText[PV_WINDOW_TEXT_SIZE * 2];
    PVBUTTON* titleBar;
    PVVSCROLLBAR* scrollBar;
    int scrollLine;
    int scrollOffset;
    int contentHeight;
    int textHeight;
};

#endif
