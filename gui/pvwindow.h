/// \file
/// Window: a movable panel with a title bar (first child), a vertical scroll
/// bar (second child), a word-wrapped text area and any number of widgets
/// (the children from the third on). It clips every widget inside it and
/// scrolls its text together with them.
#ifndef PEVRANO_GUI_PVWINDOW_H
#define PEVRANO_GUI_PVWINDOW_H

#include "gui/pvbutton.h"

class PVVSCROLLBAR;

/// Room for a window's text, terminator included.
#define PV_WINDOW_TEXT_SIZE 3968

/// A movable window: a title bar that minimises it, text wrapped to its
/// width, a vertical scroll bar, and child widgets clipped to its area.
class PVWINDOW : public PVBUTTON {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVWINDOW();
    PVWINDOW(const PVWINDOW& other) = default;
    PVWINDOW& operator=(const PVWINDOW& other) = default;
    ~PVWINDOW() override = default;
    ///@}
    /// Draws the window, then its text and children, clipped to its area.
    bool render(void* element) override;

    /// The title bar's caption.
    void setCaption(const char* text);
    /// The font of the title bar and the text (not owned).
    void setFont(PVFONT* newFont);
    /// Width and height in pixels; the title bar and scroll bar follow, the
    /// scroll value returns to 0.
    void setSizes(int w, int h);
    /// The pixels the content is scrolled up by.
    ///@{
    void setScrollLine(int value) { scrollLine = value; }
    int getScrollLine() const { return scrollLine; }
    ///@}
    /// True while only the title bar shows.
    bool isMinimized() const { return !maximized; }
    /// The title bar and scroll bar (children owned by the window), the text as
    /// written and as wrapped, and the height of the content to scroll.
    ///@{
    PVBUTTON* getTitleBar() const { return titleBar; }
    PVVSCROLLBAR* getScrollBar() const { return scrollBar; }
    const char* getText() const { return text; }
    const char* getFormattedText() const { return formattedText; }
    int getContentHeight() const { return contentHeight; }
    ///@}

    /// Empties the text.
    void clear();
    /// Appends printf-style text; false with "Invalid params" for a null format
    /// or "Text overflow" when the text would not fit.
    bool write(const char* format, ...);
    /// Wraps the text to the window width; false without a font.
    bool format();
    /// Returns true when the window ends up restored.
    bool minmaximize();
    /// Measures the content and places the children for the scroll value.
    bool updateScroll();
    /// Clips drawing to the window's area, or stops clipping.
    ///@{
    void enableScissor();
    void disableScissor();
    ///@}

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
