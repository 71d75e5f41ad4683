/// \file
/// One keyframe record of an animation: the rotation (Euler angles in degrees
/// about x, y, z) and position of one bone at one frame, and whether the record
/// is a real keyframe rather than an interpolated or empty one.
#ifndef PEVRANO_ASSETS_PVBONEFRAME_H
#define PEVRANO_ASSETS_PVBONEFRAME_H

#include "math/k3mvector3d.h"

/// One bone's pose in one frame of an animation.
struct PVBONEFRAME {
    /// Rotation (Euler angles) and position of the bone.
    ///@{
    K3MVECTOR3D rotation;
    K3MVECTOR3D position;
    ///@}
    /// Whether the frame holds a pose for this bone.
    bool set = false;
};

#endif
