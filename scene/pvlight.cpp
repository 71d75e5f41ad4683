// Light: omni, directional and spot lights programmed into GL light slots.
#include "scene/pvlight.h"

#include "core/pvframestate.h"
#include "core/pvgl.h"
#include "foundation/kvflog.h"
#include "foundation/kvfreader.h"

#include "scene/pvelement.h"
#include <algorithm>
#include <cstring>
#include <new>

bool PVLIGHT::lighting = false;
PVLIGHT::SLOTSTATE PVLIGHT::programmed[PV_ELEMENT_LIGHTS];

PVLIGHT::PVLIGHT() :
    lightType(PV_LIGHT_OMNI),
    ambient(0.2f, 0.2f, 0.2f, 1.0f),
    diffuse(0.7f, 0.7f, 0.7f, 1.0f),
    specular(0.2f, 0.2f, 0.2f, 1.0f),
    attenuation(1.0f, 0.0f, 0.0f),
    cutOff(180.0f),
    exponent(0.0f),
    exclusive(false),
    shadowCaster(false),
    shadowNearPlane(1.0f),
    shadowFarPlane(1024.0f)
{
    type = PV_TYPE_LIGHT;
    setDefaultName("[light %d]");
}

PVLIGHT::~PVLIGHT() {}

void PVLIGHT::lightingOn()
{
    if (lighting)
        return;
    glEnable(GL_LIGHTING);
    lighting = true;
}

void PVLIGHT::lightingOff()
{
    if (!lighting)
        return;
    glDisable(GL_LIGHTING);
    lighting = false;
}

bool PVLIGHT::getLighting() { return lighting; }

void PVLIGHT::forgetLighting()
{
    lighting = false;
    std::memset(static_cast<void*>(programmed), 0, sizeof programmed);
}

void PVLIGHT::forgetSlots()
{
    for (SLOTSTATE& slot : programmed)
        if (slot.light == this)
            std::memset(static_cast<void*>(&slot), 0, sizeof slot);
}

// Rotation about x, then y, then z; a zero angle changes nothing and costs
// no GL call.
static void rotateNonZero(const K3MVECTOR3D& angles)
{
    if (angles.x != 0.0f)
        PV_glRotatef(angles.x, 1.0f, 0.0f, 0.0f);
    if (angles.y != 0.0f)
        PV_glRotatef(angles.y, 0.0f, 1.0f, 0.0f);
    if (angles.z != 0.0f)
        PV_glRotatef(angles.z, 0.0f, 0.0f, 1.0f);
}

bool PVLIGHT::activateNearest(PVELEMENT* element)
{
    if (element == nullptr) {
        kvfLog("   [!] Invalid params @ PVLIGHT::activateNearest\n");
        return false;
    }
    if (!lighting)
        return false;

    PVELEMENT::sortLights(element->getMatrix()->getTranslation());
    const unsigned int count = std::min(PVELEMENT::getNumberOfLights(), unsigned(PV_ELEMENT_LIGHTS));
    unsigned int slots[PV_ELEMENT_LIGHTS];
    assignSlots(count, slots);
    for (unsigned int i = 0; i < count; i++) {
        PVELEMENT* lightElement = PVELEMENT::getLight(i);
        PVNODE* node = lightElement->getNode();
        if (node->getType() != PV_TYPE_LIGHT) {
            kvfLog("   [!] Consistency error: invalid object passed as light @ PVLIGHT::activateNearest\n");
            return false;
        }
        lightElement->setParam1(slots[i]);
        node->render(lightElement);
        element->setNearestLight(i, lightElement);
    }
    return true;
}

void PVLIGHT::assignSlots(unsigned int count, unsigned int* slots)
{
    bool taken[PV_ELEMENT_LIGHTS] = {false, false, false, false};
    const long stamp = PVFRAMESTATE::getTimeStamp();
    bool allLights = true;
    for (unsigned int i = 0; i < count; i++) {
        const PVELEMENT* lightElement = PVELEMENT::getLight(i);
        allLights = allLights && lightElement->getNode()->getType() == PV_TYPE_LIGHT;
        slots[i] = PV_ELEMENT_LIGHTS;
        for (unsigned int s = 0; s < count; s++) {
            const SLOTSTATE& held = programmed[s];
            if (!taken[s] && held.record == lightElement && held.stamp == stamp &&
                held.light == lightElement->getNode()) {
                slots[i] = s;
                taken[s] = true;
                break;
            }
        }
    }
    // With anything but lights among them, the slots follow the list, so
    // that an aborted activation leaves the same slots programmed.
    for (unsigned int i = 0, free = 0; i < count; i++) {
        if (!allLights) {
            slots[i] = i;
            continue;
        }
        if (slots[i] != PV_ELEMENT_LIGHTS)
            continue;
        while (taken[free])
            free++;
        slots[i] = free;
        taken[free] = true;
    }
}

// A light aimed at its own target vector or at another node points there;
// an unaimed light keeps the direction it was given.
void PVLIGHT::aim()
{
    if (targetNode == nullptr)
        return;
    const K3MVECTOR3D centre =
        targetNode == this ? target : targetNode->getFinalMatrix(nullptr).getTranslation();
    direction = centre - placedPosition();
    direction.normalize();
}

bool PVLIGHT::render(void* element)
{
    if (element == nullptr) {
        kvfLog("   [!] Invalid params @ PVLIGHT::render\n");
        return false;
    }
    PVELEMENT* record = static_cast<PVELEMENT*>(element);
    const unsigned int slotIndex = record->getParam1();
    aim();

    float glPosition[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    float spotDirection[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    float cut = 180.0f;
    switch (lightType) {
    case PV_LIGHT_OMNI:
        break;
    case PV_LIGHT_DIRECTIONAL:
        glPosition[0] = -direction.x;
        glPosition[1] = -direction.y;
        glPosition[2] = -direction.z;
        glPosition[3] = 0.0f;
        spotDirection[3] = 0.0f;
        break;
    case PV_LIGHT_SPOT:
        spotDirection[0] = direction.x;
        spotDirection[1] = direction.y;
        spotDirection[2] = direction.z;
        cut = cutOff;
        break;
    default:
        kvfLog("   [!] Consistency broken: unknow type for %s @ PVLIGHT::render\n", name);
        cut = cutOff;
        break;
    }

    lightingOn();
    SLOTSTATE state;
    std::memset(static_cast<void*>(&state), 0, sizeof state);
    state.light = this;
    state.record = record;
    state.stamp = PVFRAMESTATE::getTimeStamp();
    state.matrix = *record->getMatrix();
    state.rotation = rotation;
    std::memcpy(state.position, glPosition, sizeof glPosition);
    std::memcpy(state.spotDirection, spotDirection, sizeof spotDirection);
    state.cutOff = cut;
    state.exponent = exponent;
    state.ambient = ambient;
    state.diffuse = diffuse;
    state.specular = specular;
    state.attenuation = attenuation;
    if (slotIndex < PV_ELEMENT_LIGHTS && std::memcmp(&programmed[slotIndex], &state, sizeof state) == 0)
        return true;

    const GLenum slot = GL_LIGHT0 + slotIndex;
    glEnable(slot);
    PV_glLightfv(slot, GL_AMBIENT, ambient);
    PV_glLightfv(slot, GL_DIFFUSE, diffuse);
    PV_glLightfv(slot, GL_SPECULAR, specular);
    PV_glLightf(slot, GL_SPOT_CUTOFF, cut);
    PV_glLightf(slot, GL_SPOT_EXPONENT, exponent);
    PV_glLightf(slot, GL_CONSTANT_ATTENUATION, attenuation.x);
    PV_glLightf(slot, GL_LINEAR_ATTENUATION, attenuation.y);
    PV_glLightf(slot, GL_QUADRATIC_ATTENUATION, attenuation.z);

    // Position and spot direction are taken in the light's own frame.
    PV_glLoadMatrixf(record->getMatrix()->m);
    rotateNonZero(rotation);
    PV_glLightfv(slot, GL_POSITION, glPosition);
    PV_glLightfv(slot, GL_SPOT_DIRECTION, spotDirection);
    if (slotIndex < PV_ELEMENT_LIGHTS)
        programmed[slotIndex] = state;
    return true;
}

void PVLIGHT::setLightType(PV_LIGHT_TYPE value) { lightType = value; }
PV_LIGHT_TYPE PVLIGHT::getLightType() { return lightType; }
void PVLIGHT::setAmbient(K3MVECTOR4D colour) { ambient = colour; }
void PVLIGHT::setAmbient(float r, float g, float b, float a) { ambient.set(r, g, b, a); }
K3MVECTOR4D PVLIGHT::getAmbient() { return ambient; }
void PVLIGHT::setDiffuse(K3MVECTOR4D colour) { diffuse = colour; }
void PVLIGHT::setDiffuse(float r, float g, float b, float a) { diffuse.set(r, g, b, a); }
K3MVECTOR4D PVLIGHT::getDiffuse() { return diffuse; }
void PVLIGHT::setSpecular(K3MVECTOR4D colour) { specular = colour; }
void PVLIGHT::setSpecular(float r, float g, float b, float a) { specular.set(r, g, b, a); }
K3MVECTOR4D PVLIGHT::getSpecular() { return specular; }
void PVLIGHT::setAttenuation(float constant, float linear, float quadratic)
{
    attenuation.set(constant, linear, quadratic);
}
K3MVECTOR3D PVLIGHT::getAttenuation() { return attenuation; }
void PVLIGHT::setCutOff(float degrees) { cutOff = degrees; }
float PVLIGHT::getCutOff() { return cutOff; }
void PVLIGHT::setExponent(float value) { exponent = value; }
float PVLIGHT::getExponent() { return exponent; }
void PVLIGHT::setExclusive(bool value) { exclusive = value; }
bool PVLIGHT::isExclusive() { return exclusive; }
void PVLIGHT::castShadows(bool caster) { shadowCaster = caster; }
bool PVLIGHT::isShadowCaster() { return shadowCaster; }
void PVLIGHT::setShadowNearPlane(float distance) { shadowNearPlane = distance; }
float PVLIGHT::getShadowNearPlane() { return shadowNearPlane; }
void PVLIGHT::setShadowFarPlane(float distance) { shadowFarPlane = distance; }
float PVLIGHT::getShadowFarPlane() { return shadowFarPlane; }

PVNODE* PVLIGHT::load(KVFREADER& reader, uint16_t& children)
{
    PVLIGHT* light = new (std::nothrow) PVLIGHT();
    if (light && light->readBody(reader, children))
        return light;
    delete light;
    return nullptr;
}

// Type, name, position, direction (aimed from the position), cut-off and
// one colour from which the three light colours derive.
bool PVLIGHT::readBody(KVFREADER& reader, uint16_t& children)
{
    uint8_t kind;
    float cut;
    float colour[3];
    if (!reader.readU8(kind) || !readName(reader) || !readVector(reader, position) ||
        !readVector(reader, direction) || !reader.readFloat(cut) || !reader.readFloats(colour, 3) ||
        !reader.readU16(children))
        return false;
    lightType = static_cast<PV_LIGHT_TYPE>(kind);
    target = position + direction;
    setCutOff(cut);
    setAmbient(colour[0] / 5.0f, colour[1] / 5.0f, colour[2] / 5.0f, 1.0f);
    setDiffuse(colour[0], colour[1], colour[2], 1.0f);
    setSpecular(colour[0] / 10.0f, colour[1] / 10.0f, colour[2] / 10.0f, 1.0f);
    return true;
}
