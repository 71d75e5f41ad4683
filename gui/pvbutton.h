/// \file
/// Button: a box with a caption drawn in a font and an event type telling the
/// interface's event dispatcher how presses are reported.
#ifndef PEVRANO_GUI_PVBUTTON_H
#define PEVRANO_GUI_PVBUTTON_H

#include "gui/pvbox.h"

class PVFONT;

#define PV_CAPTION_SIZE 256

enum PV_BUTTON_EVENT : int {
    PV_BUTTON_ON_RELEASE = 0,  ///< reported when the pointer is released over it
    PV_BUTTON_ON_PRESS = 1,  ///< reported when pressed
    PV_BUTTON_TOGGLE = 2,  ///< each press flips the pressed state and is reported
    PV_BUTTON_TITLE_BAR = 3   ///< a window's title bar: minimises, moves and raises the window
};

class PVBUTTON : public PVBOX {
public:
    PVBUTTON();
    PVBUTTON(const PVBUTTON& other) = default;
    PVBUTTON& operator=(const PVBUTTON& other) = default;
    ~PVBUTTON() override = default;
    bool render(void* element) override;

    /// Ignored for null or for 256 characters and more.
    void setCaption(const char* text);
    const char* getCaption() const { return caption; }
    void setFont(PVFONT* newFont) { font = newFont; }
    PVFONT* getFont() const { return font; }
    void setEventType(PV_BUTTON_EVENT value) { eventType = value; }
    PV_BUTTON_EVENT getEventType() const { return eventType; }

protected:
    /// Draws text at (1, 1), one pixel further while pressed; the text is
    /// read as a format without arguments ("%%" draws '%').
    void putCaption(const char* text);

    PVFONT* font;
    char caption[PV_CAPTION_SIZE];
    PV_BUTTON_EVENT eventType;
};

#endif
