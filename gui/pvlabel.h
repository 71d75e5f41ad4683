/// \file
/// Label: a box that draws only text, word-processed once when written.
#ifndef PEVRANO_GUI_PVLABEL_H
#define PEVRANO_GUI_PVLABEL_H

#include "gui/pvbox.h"

class PVFONT;

/// Formatted text as written, before the escape-aware copy.
#define PV_LABEL_INPUT_SIZE 512

/// One line of formatted text, not wrapped, drawn with a font.
class PVLABEL : public PVBOX {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVLABEL();
    PVLABEL(const PVLABEL& other) = default;
    PVLABEL& operator=(const PVLABEL& other) = default;
    ~PVLABEL() override = default;
    ///@}
    /// Draws the text at the label's position.
    bool render(void* element) override;

    /// The font the text is laid out with (not owned).
    ///@{
    void setFont(PVFONT* newFont) { font = newFont; }
    PVFONT* getFont() const { return font; }
    ///@}
    /// Replaces the text with the printf-style format; false with "Invalid
    /// params" for a null format, or "Font not specified" without a font.
    bool write(const char* format, ...);
    /// The text as laid out (escapes kept), owned by the label.
    const char* getText() const { return text; }

private:
    /// The copy may gain a line break per character in the worst case.
    char text[PV_LABEL_INPUT_SIZE * 2 + 1];
    PVFONT* font;
};

#endif
