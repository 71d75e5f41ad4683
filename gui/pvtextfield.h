// Text field: a button whose caption is edited from the keyboard, with a
// blinking caret while it has the focus.
#ifndef PEVRANO_GUI_PVTEXTFIELD_H
#define PEVRANO_GUI_PVTEXTFIELD_H

#include "gui/pvbutton.h"

class PVTEXTFIELD : public PVBUTTON {
public:
    PVTEXTFIELD();
    PVTEXTFIELD(const PVTEXTFIELD& other) = default;
    PVTEXTFIELD& operator=(const PVTEXTFIELD& other) = default;
    ~PVTEXTFIELD() override = default;
    bool render(void* element) override;

    void clear() { caption[0] = '\0'; }
    // Printable codes are appended while they fit, 8 removes the last
    // character; any key (0 included) marks the field as being edited.
    bool manageKey(char key);
    bool isEditing() const { return editing; }

private:
    void drawSunkenFrame();

    bool editing;
    float caretTimer;
};

#endif
