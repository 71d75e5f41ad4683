/// \file
/// Vertical scroll bar.
#ifndef PEVRANO_GUI_PVVSCROLLBAR_H
#define PEVRANO_GUI_PVVSCROLLBAR_H

#include "gui/pvscrollbar.h"

/// A vertical scroll bar.
class PVVSCROLLBAR : public PVSCROLLBAR {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVVSCROLLBAR();
    PVVSCROLLBAR(const PVVSCROLLBAR& other) = default;
    PVVSCROLLBAR& operator=(const PVVSCROLLBAR& other) = default;
    ~PVVSCROLLBAR() override = default;
    ///@}
    /// Draws the track.
    bool render(void* element) override { return PVSCROLLBAR::render(element); }
};

#endif
