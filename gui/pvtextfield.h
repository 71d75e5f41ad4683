/// \file
/// Text field: a button whose caption is edited from the keyboard, with a
/// blinking caret while it has the focus.
#ifndef PEVRANO_GUI_PVTEXTFIELD_H
#define PEVRANO_GUI_PVTEXTFIELD_H

#include "gui/pvbutton.h"

/// What became of the last key given to a text field.
/// What a key typed into a text field did.
enum PV_TEXTFIELD_KEY : int {
    PV_TEXTFIELD_KEY_NONE = 0,  ///< no key (code 0), or backspace on an empty field
    PV_TEXTFIELD_KEY_INSERTED = 1,  ///< appended: the caret moved on
    PV_TEXTFIELD_KEY_ERASED = 2,  ///< backspace removed the last character
    PV_TEXTFIELD_KEY_NOT_DRAWABLE = 3,  ///< a code outside 32 to 127 the font sheet holds
    PV_TEXTFIELD_KEY_FULL = 4,  ///< the field has no room left for it
    PV_TEXTFIELD_KEY_NO_FONT = 5  ///< the field has no font
};

/// A one-line text input: a button whose caption takes the keys typed while
/// it has the focus, with a blinking caret.
class PVTEXTFIELD : public PVBUTTON {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVTEXTFIELD();
    PVTEXTFIELD(const PVTEXTFIELD& other) = default;
    PVTEXTFIELD& operator=(const PVTEXTFIELD& other) = default;
    ~PVTEXTFIELD() override = default;
    ///@}
    /// Draws the box, the text and, while editing, the caret.
    bool render(void* element) override;

    /// Empties the text.
    void clear() { caption[0] = '\0'; }
    /// Printable codes are appended while they fit, 8 removes the last
    /// character; any key (0 included) marks the field as being edited.
    bool manageKey(char key);
    /// Types one character given by its code as the window system reports it
    /// (Unicode), never cut to 8 bits: codes 32 to 127 are appended while the
    /// text with them and the caret still shows, 8 erases the last one, 0
    /// only keeps the caret blinking; any other code is refused.
    PV_TEXTFIELD_KEY typeCharacter(unsigned int code);
    /// What the last key did, through manageKey or typeCharacter.
    ///@{
    PV_TEXTFIELD_KEY getLastKey() const { return lastKey; }
    /// Whether keys have reached the field since it took the focus.
    bool isEditing() const { return editing; }
    ///@}
    /// The text field that takes the keys (the one pressed last), or null.
    static PVTEXTFIELD* getFocus();

private:
    void drawSunkenFrame();
    void append(char c);
    PV_TEXTFIELD_KEY eraseLast();
    PV_TEXTFIELD_KEY typeCode(unsigned int code, bool (PVTEXTFIELD::*fits)(char) const);
    bool fitsWithKerning(char key) const;
    bool fitsWithCaret(char key) const;

    bool editing;
    float caretTimer;
    PV_TEXTFIELD_KEY lastKey;
};

#endif
