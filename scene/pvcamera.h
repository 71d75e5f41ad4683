/// \file
/// Camera: sets up the viewing transform at the start of a 3D frame and
/// publishes the view matrix and the eye position for the rest of the frame.
#ifndef PEVRANO_SCENE_PVCAMERA_H
#define PEVRANO_SCENE_PVCAMERA_H

#include "math/k3mmatrix.h"
#include "math/k3mvector3d.h"
#include "scene/pvnode.h"

/// Three ways of aiming, chosen by the target node: none is a free camera
/// (position and rotation, or its own matrix), the camera itself looks at its
/// target vector, any other node is followed.
class PVCAMERA : public PVNODE {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVCAMERA();
    PVCAMERA(const PVCAMERA& other) = default;
    PVCAMERA& operator=(const PVCAMERA& other) = default;
    ~PVCAMERA() override = default;
    ///@}

    /// Replaces the current matrix with the view matrix and publishes it;
    /// the argument is not used. Returns true.
    bool render(void* element) override;

    /// Rotation (degrees about x, y, z) applied before the view: free and
    /// aimed cameras alike turn by it.
    ///@{
    void setPreRotation(float x, float y, float z);
    void setPreRotation(K3MVECTOR3D rotation);
    K3MVECTOR3D getPreRotation();
    ///@}
    /// Up direction of aimed and following cameras.
    ///@{
    void setUpDirection(const K3MVECTOR3D& up);
    K3MVECTOR3D getUpDirection();
    ///@}
    /// The view matrix this camera loaded when it last rendered.
    K3MMATRIX* getThisCameraMatrix();

    /// Moves the camera along the axes of the last rendered view (negative z
    /// goes forward); the step is also stored as the node's direction.
    ///@{
    void moveDoom(float x, float y, float z);
    void moveDoom(K3MVECTOR3D step);
    ///@}

    /// The view of the last camera rendered: its matrix, its eye position and
    /// the camera itself (null before any).
    ///@{
    static K3MMATRIX* getCameraMatrix();
    static K3MVECTOR3D getCameraPosition();
    static PVCAMERA* getThisPassCamera();
    ///@}

private:
    void applyInverseTransform();
    static void lookAt(const K3MVECTOR3D& eye, const K3MVECTOR3D& centre, const K3MVECTOR3D& up);

    K3MVECTOR3D preRotation;
    K3MVECTOR3D upDirection;
    K3MMATRIX thisCameraMatrix;

    static PVCAMERA* thisPassCamera;
    static K3MVECTOR3D cameraPosition;
    static K3MMATRIX cameraMatrix;
};

#endif
