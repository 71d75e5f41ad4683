/// \file
/// Label: a box that draws only text, word-processed once when written.
#ifndef PEVRANO_GUI_PVLABEL_H
#define PEVRANO_GUI_PVLABEL_H

#include "gui/pvbox.h"

class PVFONT;

/// Formatted text as written, before the escape-aware copy.
#define PV_LABEL_INPUT_SIZE 512

class PVLABEL : public PVBOX {
public:
    PVLABEL();
    PVLABEL(const PVLABEL& other) = default;
    PVLABEL& operator=(const PVLABEL& other) = default;
    ~PVLABEL() override = default;
    bool render(void* element) override;

    void setFont(PVFONT* newFont) { font = newFont; }
    PVFONT* getFont() const { return font; }
    bool write(const char* format, ...);
    const char* getText() const { return text; }

private:
    /// The copy may gain a line break per character in the worst case.
    char text[PV_LABEL_INPUT_SIZE * 2 + 1];
    PVFONT* font;
};

#endif
