/// \file
/// Button: a box with a caption drawn in a font and an event type telling the
/// interface's event dispatcher how presses are reported.
#ifndef PEVRANO_GUI_PVBUTTON_H
#define PEVRANO_GUI_PVBUTTON_H

#include "gui/pvbox.h"

class PVFONT;

/// Size of a caption, terminator included.
#define PV_CAPTION_SIZE 256

/// When a button reports a click to PVELEMENT::manageGUIEvents.
enum PV_BUTTON_EVENT : int {
    PV_BUTTON_ON_RELEASE = 0,  ///< reported when the pointer is released over it
    PV_BUTTON_ON_PRESS = 1,  ///< reported when pressed
    PV_BUTTON_TOGGLE = 2,  ///< each press flips the pressed state and is reported
    PV_BUTTON_TITLE_BAR = 3  ///< a window's title bar: minimises, moves and raises the window
};

/// A box with a caption that reports clicks through the interface events.
class PVBUTTON : public PVBOX {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVBUTTON();
    PVBUTTON(const PVBUTTON& other) = default;
    PVBUTTON& operator=(const PVBUTTON& other) = default;
    ~PVBUTTON() override = default;
    ///@}
    /// Draws the box, pressed or not, and its caption.
    bool render(void* element) override;

    /// Ignored for null or for 256 characters and more.
    void setCaption(const char* text);
    /// The caption (owned by the button) and the font it is drawn with (not
    /// owned; fonts belong to the engine); how the button reports clicks.
    ///@{
    const char* getCaption() const { return caption; }
    void setFont(PVFONT* newFont) { font = newFont; }
    PVFONT* getFont() const { return font; }
    void setEventType(PV_BUTTON_EVENT value) { eventType = value; }
    PV_BUTTON_EVENT getEventType() const { return eventType; }
    ///@}

protected:
    /// Draws text at (1, 1), one pixel further while pressed; the text is
    /// read as a format without arguments ("%%" draws '%').
    void putCaption(const char* text);

    /// Caption font, caption and click reporting, for derived widgets.
    ///@{
    PVFONT* font;
    char caption[PV_CAPTION_SIZE];
    PV_BUTTON_EVENT eventType;
    ///@}
};

#endif
