/// \file
/// Cached GL state of the engine: projection set-up, viewport, background
/// colour, global ambient light, rendering profile, and on/off switches for
/// the capabilities and client arrays that call GL only when the state changes.
#ifndef PEVRANO_CORE_PVOPENGL_H
#define PEVRANO_CORE_PVOPENGL_H

#include "math/k3mvector4d.h"

class PVFBO;

/// Rendering profiles read by the drawing code.
enum PV_OPENGL_PROFILE : int {
    PV_OPENGL_PROFILE_NORMAL = 1,  ///< ordinary rendering
    PV_OPENGL_PROFILE_SELECTION = 2,  ///< flat colour codes for picking
    PV_OPENGL_PROFILE_DOF = 3  ///< depth-of-field pre-pass
};

/// Number of frame-buffer slots reachable through getFbo.
#define PV_OPENGL_FBO_SLOTS 4

/// The engine's cached GL state and projection set-up; static only.
class PVOPENGL {
public:
    /// Capability and client-array switches.
    ///@{
    static void cullingOn();
    static void cullingOff();
    static bool isCulled();
    static void twoSideOn();
    static void twoSideOff();
    static bool isTwoSide();
    static void blendingOn();
    static void blendingOff();
    static bool isBlended();
    static void scissorOn();
    static void scissorOff();
    static void vertexArrayOn();
    static void vertexArrayOff();
    static void normalArrayOn();
    static void normalArrayOff();
    static void colorArrayOn();
    static void colorArrayOff();
    static void textureArrayOn();
    static void textureArrayOff();
    ///@}

    /// Projection parameters used by resize.
    ///@{
    static void setNearPlane(float value);
    static void setFarPlane(float value);
    static void setAngleOfView(float degrees);
    static float getNearPlane();
    static float getFarPlane();
    static float getAngleOfView();
    ///@}

    /// Only stores the profile; the drawing code reads it back.
    ///@{
    static void setProfile(int profile);
    static PV_OPENGL_PROFILE getProfile();
    ///@}

    /// Store the colour and apply it to GL at once.
    ///@{
    static void setBackgroundColor(float r, float g, float b, float a);
    static void setBackgroundColor(K3MVECTOR4D color);
    static void setGlobalAmbientLight(float r, float g, float b, float a);
    static void setGlobalAmbientLight(K3MVECTOR4D color);
    static K3MVECTOR4D getBackgroundColor();
    static K3MVECTOR4D getGlobalAmbientLight();
    ///@}

    /// Capabilities of the programmable pipeline; none is present here.
    ///@{
    static float getAnisotropicLevel();
    static bool useVBO();
    static bool useAnisotropic();
    static bool useFBO();
    static bool useMultitexturing();
    static bool useShaders();
    static bool useOcclusionQuery();
    ///@}
    /// Frame buffer in slot index, null for an empty or invalid slot.
    static PVFBO* getFbo(int index);

    /// Multiplies the current matrix by a perspective frustum of the given
    /// vertical angle (degrees) and aspect ratio.
    static void setPerspective(float angle, float aspect, float zNear, float zFar);
    /// Viewport (y counts from the top of the window) and projection.
    static bool resize(int x, int y, int width, int height);
    /// Loads a frustum projection and an identity model-view; the flag is unused.
    static bool setFrustum(float left, float right, float bottom, float top, float zNear, float zFar,
                           bool unused);

private:
    friend class PEVRANO;
    // Test suites reach the start-up entry points and capability flags here.
    friend struct PVTESTACCESS;

    static bool init();
    static void reset();
    static bool free();
    static bool isActive();

    static void logExtensions();
    static void forgetSwitches();

    static bool active;
    static float nearPlane;
    static float farPlane;
    static float angleOfView;
    static PV_OPENGL_PROFILE currentProfile;
    static K3MVECTOR4D backgroundColor;
    static K3MVECTOR4D globalAmbientLight;
    static bool blending;
    static bool scissor;
    static bool culling;
    static bool twoSide;
    static bool vertexArrayStatus;
    static bool indexArrayStatus;
    static bool normalArrayStatus;
    static bool colorArrayStatus;
    static bool textureArrayStatus;
    static bool multitextureFlag;
    static bool VBOFlag;
    static bool shadersFlag;
    static bool anisotropicFlag;
    static bool FBOFlag;
    static bool OcclusionQueryFlag;
    static float anisotropicLevel;
    static PVFBO* fbo[PV_OPENGL_FBO_SLOTS];
};

#endif
