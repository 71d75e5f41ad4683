/// \file
/// Horizontal scroll bar.
#ifndef PEVRANO_GUI_PVHSCROLLBAR_H
#define PEVRANO_GUI_PVHSCROLLBAR_H

#include "gui/pvscrollbar.h"

class PVHSCROLLBAR : public PVSCROLLBAR {
public:
    PVHSCROLLBAR();
    PVHSCROLLBAR(const PVHSCROLLBAR& other) = default;
    PVHSCROLLBAR& operator=(const PVHSCROLLBAR& other) = default;
    ~PVHSCROLLBAR() override = default;
    bool render(void* element) override { return PVSCROLLBAR::render(element); }
};

#endif
