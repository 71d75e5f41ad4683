/// \file
/// Helper: a placeholder object exported with a scene (a dummy, a point of
/// interest). It has a bounding radius, used by the render list's clipping
/// and sorting, and draws nothing.
#ifndef PEVRANO_SCENE_PVHELPER_H
#define PEVRANO_SCENE_PVHELPER_H

#include "scene/pvnode.h"

/// A node that marks a place in a scene and draws nothing.
class PVHELPER : public PVNODE {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVHELPER();
    PVHELPER(const PVHELPER& other) = default;
    PVHELPER& operator=(const PVHELPER& other) = default;
    ~PVHELPER() override = default;
    ///@}

    /// Nothing to draw; true for a record, false for a null one.
    bool render(void* element) override;

    /// Bounding radius used for clipping and sorting.
    ///@{
    void setRadius(float value) { radius = value; }
    float getRadius() const { return radius; }
    ///@}

private:
    float radius;
};

#endif
