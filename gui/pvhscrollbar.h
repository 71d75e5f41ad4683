/// \file
/// Horizontal scroll bar.
#ifndef PEVRANO_GUI_PVHSCROLLBAR_H
#define PEVRANO_GUI_PVHSCROLLBAR_H

#include "gui/pvscrollbar.h"

/// A horizontal scroll bar.
class PVHSCROLLBAR : public PVSCROLLBAR {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVHSCROLLBAR();
    PVHSCROLLBAR(const PVHSCROLLBAR& other) = default;
    PVHSCROLLBAR& operator=(const PVHSCROLLBAR& other) = default;
    ~PVHSCROLLBAR() override = default;
    ///@}
    /// Draws the track.
    bool render(void* element) override { return PVSCROLLBAR::render(element); }
};

#endif
