/// \file
/// Scroll bar: a thin track with one draggable button, its cursor, whose place
/// on the track gives the value; the value is never stored. The horizontal and
/// the vertical bar are this design along x and along y.
#ifndef PEVRANO_GUI_PVSCROLLBAR_H
#define PEVRANO_GUI_PVSCROLLBAR_H

#include "gui/pvbutton.h"

/// Common part of the horizontal and vertical scroll bars: a track with a
/// cursor button, mapping the cursor's place to a value in a range.
class PVSCROLLBAR : public PVBOX {
public:
    /// Copying and deletion.
    ///@{
    PVSCROLLBAR(const PVSCROLLBAR& other) = default;
    PVSCROLLBAR& operator=(const PVSCROLLBAR& other) = default;
    ~PVSCROLLBAR() override = default;
    ///@}
    /// Renews the cursor's limits so that its centre travels the whole
    /// track, then draws the track.
    bool render(void* element) override;

    /// The range of values, from the cursor at the start of the track to the
    /// cursor at its end.
    ///@{
    void setMinValue(float value) { minValue = value; }
    void setMaxValue(float value) { maxValue = value; }
    float getMinValue() const { return minValue; }
    float getMaxValue() const { return maxValue; }
    ///@}
    /// The cursor, a child button owned by the bar.
    PVBUTTON* getCursor() const { return cursor; }
    /// Shows or hides the track and its cursor together.
    void setDisplayStatus(bool value);
    /// Resizes the cursor along the bar, keeping its centre.
    void setCursorSize(int size);
    /// The cursor's centre goes to the fraction of the track that the value
    /// (clamped to the range) covers.
    ///@{
    void setValue(float value);
    float getValue();
    ///@}

protected:
    /// vertical: the bar runs along y; className names the bar in messages.
    PVSCROLLBAR(bool vertical, const char* className);

private:
    int trackLength() const { return vertical ? sizeY : sizeX; }
    float cursorPlace() const;
    float cursorLength() const;
    void placeCursor(float place);
    void renewCursorLimits();
    bool hasCursor(const char* operation);

    float minValue;
    float maxValue;
    PVBUTTON* cursor;
    bool vertical;
    const char* className;
};

#endif
