// Vertical scroll bar.
#ifndef PV_VSCROLLBAR_H
#define PV_VSCROLLBAR_H

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
