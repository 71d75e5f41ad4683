/// \file
/// Light: drives one fixed-function GL light slot for the objects it is
/// chosen for.
#ifndef PEVRANO_SCENE_PVLIGHT_H
#define PEVRANO_SCENE_PVLIGHT_H

#include <cstdint>

#include "math/k3mmatrix.h"
#include "math/k3mvector3d.h"
#include "math/k3mvector4d.h"
#include "scene/pvnode.h"

class PVELEMENT;
class KVFREADER;

/// Kind of light: a point shining all around, parallel rays, or a cone.
enum PV_LIGHT_TYPE : int32_t { PV_LIGHT_OMNI = 0, PV_LIGHT_DIRECTIONAL = 1, PV_LIGHT_SPOT = 2 };

/// A GL light as a scene node. Every object is lit by the four lights nearest
/// to it; nodes belong to the engine (PEVRANO::free deletes those left).
class PVLIGHT : public PVNODE {
public:
    /// Creation, copying and deletion; nodes belong to the engine (PEVRANO::free
    /// deletes those left).
    ///@{
    PVLIGHT();
    PVLIGHT(const PVLIGHT& other) = default;
    PVLIGHT& operator=(const PVLIGHT& other) = default;
    ~PVLIGHT() override;
    ///@}

    /// Programs the GL slot named by the light's own render-list record
    /// (its param1). False for a null record.
    bool render(void* element) override;

    /// Chooses up to four lights for one render-list record (exclusive lights
    /// first, then the nearest), programs slots 0 to 3 with them and records
    /// them as the element's nearest lights. False, choosing nothing, when
    /// lighting is off; false also for a null record or a non-light among the
    /// chosen (the slots already programmed stay so).
    static bool activateNearest(PVELEMENT* element);

    /// GL_LIGHTING switch, cached: a call that changes nothing costs no GL call.
    ///@{
    static void lightingOn();
    static void lightingOff();
    static bool getLighting();
    ///@}

    /// Reads a light's scene-file record at the reader's position; its
    /// children count goes to children. Null (the light deleted again) when
    /// the record is cut short.
    static PVNODE* load(KVFREADER& reader, uint16_t& children);

    /// Kind of light.
    ///@{
    void setLightType(PV_LIGHT_TYPE type);
    PV_LIGHT_TYPE getLightType();
    ///@}
    /// Ambient, diffuse and specular colours (RGBA, 0 to 1).
    ///@{
    void setAmbient(K3MVECTOR4D colour);
    void setAmbient(float r, float g, float b, float a);
    K3MVECTOR4D getAmbient();
    void setDiffuse(K3MVECTOR4D colour);
    void setDiffuse(float r, float g, float b, float a);
    K3MVECTOR4D getDiffuse();
    void setSpecular(K3MVECTOR4D colour);
    void setSpecular(float r, float g, float b, float a);
    K3MVECTOR4D getSpecular();
    ///@}
    /// Constant, linear and quadratic attenuation factors.
    ///@{
    void setAttenuation(float constant, float linear, float quadratic);
    K3MVECTOR3D getAttenuation();
    ///@}
    /// Spot cone: half angle in degrees and the exponent of the fall-off.
    ///@{
    void setCutOff(float degrees);
    float getCutOff();
    void setExponent(float exponent);
    float getExponent();
    ///@}
    /// An exclusive light is chosen before the nearest ones.
    ///@{
    void setExclusive(bool exclusive);
    bool isExclusive();
    ///@}
    /// Shadow settings (casting, near and far planes); they are stored for the
    /// shadow renderer only.
    ///@{
    void castShadows(bool caster);
    bool isShadowCaster();
    void setShadowNearPlane(float distance);
    float getShadowNearPlane();
    void setShadowFarPlane(float distance);
    float getShadowFarPlane();
    ///@}

private:
    friend class PEVRANO;

    /// The GL context goes away at shut-down, and lighting with it: the next
    /// context starts with lighting off and no slot programmed.
    static void forgetLighting();

    /// A destroyed light leaves the slots it held.
    void forgetSlots();

    // Slots for the first `count` lights of the list: a light programmed in
    // one of slots 0 to count-1 this frame keeps it, the others take the
    // remaining ones in order. Which slot holds which light does not show in
    // the picture, and a light that stays put costs no GL call.
    static void assignSlots(unsigned int count, unsigned int* slots);

    void aim();
    bool readBody(KVFREADER& reader, uint16_t& children);

    PV_LIGHT_TYPE lightType;
    K3MVECTOR4D ambient;
    K3MVECTOR4D diffuse;
    K3MVECTOR4D specular;
    K3MVECTOR3D attenuation;
    float cutOff;
    float exponent;
    bool exclusive;
    bool shadowCaster;
    float shadowNearPlane;
    float shadowFarPlane;

    static bool lighting;
    /// Everything a render programs into a slot, with the light, its record
    /// and the frame: within a frame a slot whose state would come out the
    /// same is not programmed again (compared bytewise, so zeroed first).
    struct SLOTSTATE {
        const PVLIGHT* light;
        const PVELEMENT* record;
        long stamp;
        K3MMATRIX matrix;
        K3MVECTOR3D rotation;
        float position[4];
        float spotDirection[4];
        float cutOff;
        float exponent;
        K3MVECTOR4D ambient;
        K3MVECTOR4D diffuse;
        K3MVECTOR4D specular;
        K3MVECTOR3D attenuation;
    };
    static SLOTSTATE programmed[4];
};

#endif
