// Camera: free, look-at-target and follow modes, pre-rotation, look-at.
#include "scene/pvcamera.h"

#include "core/pvgl.h"

PVCAMERA* PVCAMERA::thisPassCamera = nullptr;
K3MVECTOR3D PVCAMERA::cameraPosition;
K3MMATRIX PVCAMERA::cameraMatrix;

PVCAMERA::PVCAMERA() : upDirection(0.0f, 1.0f, 0.0f)
{
    type = PV_TYPE_CAMERA;
    setDefaultName("[camera %d]");
}

// Free mode: the camera's own matrix as it stands, or the inverse of the node
// transform. The rotation order Z, X, Y is not the exact inverse of the node
// order X, Y, Z; views built on it rely on this order.
void PVCAMERA::applyInverseTransform()
{
    if (positioning == PV_POSITIONING_MATRIX) {
        PV_glMultMatrixf(matrix.m);
        return;
    }
    PV_glRotatef(-rotation.z, 0.0f, 0.0f, 1.0f);
    PV_glRotatef(-rotation.x, 1.0f, 0.0f, 0.0f);
    PV_glRotatef(-rotation.y, 0.0f, 1.0f, 0.0f);
    PV_glTranslatef(-position.x, -position.y, -position.z);
}

// Replaces the current matrix with a view from eye towards centre.
void PVCAMERA::lookAt(const K3MVECTOR3D& eye, const K3MVECTOR3D& centre, const K3MVECTOR3D& up)
{
    K3MVECTOR3D f = eye - centre;
    f.normalize();
    K3MVECTOR3D s = up ^ f;
    s.normalize();
    K3MVECTOR3D v = f ^ s;
    v.normalize();
    const K3MMATRIX view(s.x, v.x, f.x, 0.0f, s.y, v.y, f.y, 0.0f, s.z, v.z, f.z, 0.0f, 0.0f, 0.0f, 0.0f,
                         1.0f);
    PV_glLoadMatrixf(view.m);
    PV_glTranslatef(-eye.x, -eye.y, -eye.z);
}

bool PVCAMERA::render(void*)
{
    PV_glLoadIdentity();
    applyRotation(preRotation);

    const K3MVECTOR3D eye = placedPosition();
    if (targetNode == nullptr) {
        applyInverseTransform();
    } else if (targetNode == this) {
        lookAt(eye, target, upDirection);
    } else {
        const K3MVECTOR3D centre = targetNode->getFinalMatrix(nullptr).getTranslation();
        PV_glLoadIdentity();
        lookAt(eye, centre, upDirection);
    }

    cameraPosition = eye;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, cameraMatrix.m);
    thisCameraMatrix = cameraMatrix;
    thisPassCamera = this;
    return true;
}

void PVCAMERA::setPreRotation(float x, float y, float z) { preRotation.set(x, y, z); }
void PVCAMERA::setPreRotation(K3MVECTOR3D rotation) { preRotation = rotation; }
K3MVECTOR3D PVCAMERA::getPreRotation() { return preRotation; }
void PVCAMERA::setUpDirection(const K3MVECTOR3D& up) { upDirection = up; }
K3MVECTOR3D PVCAMERA::getUpDirection() { return upDirection; }
K3MMATRIX* PVCAMERA::getThisCameraMatrix() { return &thisCameraMatrix; }

void PVCAMERA::moveDoom(float x, float y, float z)
{
    const float* m = cameraMatrix.m;
    const K3MVECTOR3D right(m[0], m[4], m[8]);
    const K3MVECTOR3D up(m[1], m[5], m[9]);
    const K3MVECTOR3D backward(m[2], m[6], m[10]);
    const K3MVECTOR3D step = right * x + up * y + backward * z;
    setDirection(step);
    move(step);
}

void PVCAMERA::moveDoom(K3MVECTOR3D step) { moveDoom(step.x, step.y, step.z); }

K3MMATRIX* PVCAMERA::getCameraMatrix() { return &cameraMatrix; }
K3MVECTOR3D PVCAMERA::getCameraPosition() { return cameraPosition; }
PVCAMERA* PVCAMERA::getThisPassCamera() { return thisPassCamera; }
