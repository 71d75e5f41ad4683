/// \file
/// Vertical scroll bar.
#ifndef PEVRANO_GUI_PVVSCROLLBAR_H
#define PEVRANO_GUI_PVVSCROLLBAR_H

#include "gui/pvscrollbar.h"

class PVVSCROLLBAR : public PVSCROLLBAR {
public:
    PVVSCROLLBAR();
    PVVSCROLLBAR(const PVVSCROLLBAR& other) = default;
    PVVSCROLLBAR& operator=(const PVVSCROLLBAR& other) = default;
    ~PVVSCROLLBAR() override = default;
    bool render(void* element) override { return PVSCROLLBAR::render(element); }
};

#endif
