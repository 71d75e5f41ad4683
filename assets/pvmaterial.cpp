// Materials: registry, colours, texture slots, built-in shader choice and
// the current-material cache.
#include "assets/pvmaterial.h"

#include <GLES/gl.h>

#include <cstdio>
#include <cstring>

#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pvframestate.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfstring.h"

PVMATERIAL* PVMATERIAL::firstMaterial = nullptr;
PVMATERIAL* PVMATERIAL::currentMaterial = nullptr;

namespace {

const unsigned int LIGHT_TYPES = 3;
const unsigned int SPOT_LIGHT = 2;

// Built-in per-pixel-lighting shaders by light type, textured, skinned and
// shadowed (only spot lights have shadowed variants).
PVSHADER** const builtInShaders[LIGHT_TYPES][2][2][2] = {
    {{{&PVSHADER::pplOmni, &PVSHADER::pplOmni}, {&PVSHADER::pplOmniA, &PVSHADER::pplOmniA}},
     {{&PVSHADER::pplOmniT, &PVSHADER::pplOmniT}, {&PVSHADER::pplOmniTA, &PVSHADER::pplOmniTA}}},
    {{{&PVSHADER::pplDirect, &PVSHADER::pplDirect}, {&PVSHADER::pplDirectA, &PVSHADER::pplDirectA}},
     {{&PVSHADER::pplDirectT, &PVSHADER::pplDirectT}, {&PVSHADER::pplDirectTA, &PVSHADER::pplDirectTA}}},
    {{{&PVSHADER::pplSpot, &PVSHADER::pplSpotS}, {&PVSHADER::pplSpotA, &PVSHADER::pplSpotSA}},
     {{&PVSHADER::pplSpotT, &PVSHADER::pplSpotTS}, {&PVSHADER::pplSpotTA, &PVSHADER::pplSpotTSA}}},
};

bool isShadowedSpotShader(const PVSHADER* shader)
{
    return shader == PVSHADER::pplSpotS || shader == PVSHADER::pplSpotSA || shader == PVSHADER::pplSpotTS ||
           shader == PVSHADER::pplSpotTSA;
}

}  // namespace

PVMATERIAL::PVMATERIAL() :
    id(kvfNewId()),
    timeStamp(0),
    references(0),
    ambient(0.2f, 0.2f, 0.2f, 1.0f),
    diffuse(0.6f, 0.6f, 0.6f, 1.0f),
    specular(0.2f, 0.2f, 0.2f, 1.0f),
    emission(0.0f, 0.0f, 0.0f, 1.0f),
    transparency(1.0f),
    shininess(0.0f),
    textures(),
    shader(nullptr),
    skinning(false),
    previous(nullptr),
    next(nullptr)
{
    snprintf(name, sizeof(name), "[material %d]", id);
    Registry::append(this);
}

PVMATERIAL::~PVMATERIAL()
{
    kvfReleaseId(id);
    Registry::remove(this);
    // A later material at the same address must not look current.
    if (currentMaterial == this)
        currentMaterial = nullptr;
}

bool PVMATERIAL::cleanUp()
{
    if (!firstMaterial)
        return false;
    const int count = Registry::deleteAll();
    kvfLog("   %d material(s) released\n", count);
    return true;
}

void PVMATERIAL::reset() { currentMaterial = nullptr; }

PVMATERIAL* PVMATERIAL::findByName(const char* wanted)
{
    return Registry::findByText(&PVMATERIAL::name, wanted);
}
PVMATERIAL* PVMATERIAL::findById(unsigned int wanted)
{
    return Registry::findByValue(&PVMATERIAL::id, wanted);
}
int PVMATERIAL::getNumberOfMaterials() { return int(Registry::count()); }
PVMATERIAL* PVMATERIAL::getFirst() { return firstMaterial; }
PVMATERIAL* PVMATERIAL::getNext() { return next; }
PVMATERIAL* PVMATERIAL::getPrevious() { return previous; }
PVMATERIAL* PVMATERIAL::getCurrent() { return currentMaterial; }

bool PVMATERIAL::setTexture(unsigned int slot, PVTEXTURE* texture)
{
    if (slot >= PV_MATERIAL_SLOTS) {
        kvfLog("   [!] Invalid params @ PVMATERIAL::setTexture\n");
        return false;
    }
    if (textures[slot])
        textures[slot]->decReferences();
    if (texture)
        texture->incReferences();
    textures[slot] = texture;
    return true;
}

PVTEXTURE* PVMATERIAL::getTexture(unsigned int slot)
{
    return slot < PV_MATERIAL_SLOTS ? textures[slot] : nullptr;
}

void PVMATERIAL::clone(PVMATERIAL* source)
{
    if (!source)
        return;
    // A name that grows past the buffer is cut (source may be this material).
    char cloned[PV_MATERIAL_NAME_SIZE + 16];
    snprintf(cloned, sizeof(cloned), "%s%d", source->name, id);
    cloned[PV_MATERIAL_NAME_SIZE - 1] = '\0';
    memcpy(name, cloned, sizeof(name));
    ambient = source->ambient;
    diffuse = source->diffuse;
    specular = source->specular;
    emission = source->emission;
    transparency = source->transparency;
    shininess = source->shininess;
    memcpy(textures, source->textures, sizeof(textures));
    shader = source->shader;
}

void PVMATERIAL::setName(const char* newName) { kvfCopyIfFits(name, sizeof name, newName); }

char* PVMATERIAL::getName() { return name; }
unsigned int PVMATERIAL::getId() { return id; }
int PVMATERIAL::getTimeStamp() { return timeStamp; }
int PVMATERIAL::getReferences() { return references; }
void PVMATERIAL::incReferences() { references++; }
void PVMATERIAL::decReferences() { references--; }

void PVMATERIAL::setAmbient(K3MVECTOR4D color) { ambient = color; }
void PVMATERIAL::setAmbient(float r, float g, float b, float a) { ambient.set(r, g, b, a); }
void PVMATERIAL::setDiffuse(K3MVECTOR4D color) { diffuse = color; }
void PVMATERIAL::setDiffuse(float r, float g, float b, float a) { diffuse.set(r, g, b, a); }
void PVMATERIAL::setSpecular(K3MVECTOR4D color) { specular = color; }
void PVMATERIAL::setSpecular(float r, float g, float b, float a) { specular.set(r, g, b, a); }
void PVMATERIAL::setEmission(K3MVECTOR4D color) { emission = color; }
void PVMATERIAL::setEmission(float r, float g, float b, float a) { emission.set(r, g, b, a); }
K3MVECTOR4D PVMATERIAL::getAmbient() { return ambient; }
K3MVECTOR4D PVMATERIAL::getDiffuse() { return diffuse; }
K3MVECTOR4D PVMATERIAL::getSpecular() { return specular; }
K3MVECTOR4D PVMATERIAL::getEmission() { return emission; }
void PVMATERIAL::setTransparency(float value) { transparency = value; }
float PVMATERIAL::getTransparency() { return transparency; }
void PVMATERIAL::setShininess(float value) { shininess = value; }
float PVMATERIAL::getShininess() { return shininess; }
void PVMATERIAL::setShader(PVSHADER* newShader) { shader = newShader; }
PVSHADER* PVMATERIAL::getShader() { return shader; }
void PVMATERIAL::setSkinning(bool value) { skinning = value; }
bool PVMATERIAL::isSkinned() { return skinning; }

bool PVMATERIAL::isTransparent() { return transparency != 1.0f; }
bool PVMATERIAL::isTextured() { return textures[0] != nullptr; }

bool PVMATERIAL::render(void* param)
{
    timeStamp = int(PVFRAMESTATE::getTimeStamp());
    if (currentMaterial == this)
        return true;
    applyShader(chooseShader(param));
    applyColors();
    if (isTransparent()) {
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        PVOPENGL::blendingOn();
    } else {
        PVOPENGL::blendingOff();
    }
    applyTextures();
    currentMaterial = this;
    return true;
}

// The material's own shader, else (with shaders switched on and a light
// type given) the built-in one for the light type and the material's kind.
PVSHADER* PVMATERIAL::chooseShader(void* param)
{
    if (shader)
        return shader;
    if (!PVSETTINGS::getSDLShaders() || !param)
        return nullptr;
    const unsigned int lightType = *static_cast<unsigned int*>(param);
    if (lightType >= LIGHT_TYPES)
        return nullptr;
    const bool shadowed = lightType == SPOT_LIGHT && PVFRAMESTATE::isShadowed();
    return *builtInShaders[lightType][isTextured()][isSkinned()][shadowed];
}

void PVMATERIAL::applyShader(PVSHADER* chosen)
{
    if (!chosen || !chosen->isOperative()) {
        PVSHADER::disable();
        return;
    }
    chosen->render(nullptr);
    if (isShadowedSpotShader(chosen)) {
        const int size = PVSETTINGS::getSDLShadowMapSize();
        PVSHADER::bindSizes(size, size);
        PVSHADER::bindTexture(1);
    }
}

// The colours take the transparency as alpha, and keep it.
void PVMATERIAL::applyColors()
{
    emission.w = specular.w = diffuse.w = ambient.w = transparency;
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, emission);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    PV_glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, shininess);
}

// Each texture on the unit of its slot; no texture at all switches
// texturing off on every unit.
void PVMATERIAL::applyTextures()
{
    bool textured = false;
    for (unsigned int slot = 0; slot < PV_MATERIAL_SLOTS; slot++) {
        if (!textures[slot])
            continue;
        unsigned int unit = slot;
        textures[slot]->render(&unit);
        textured = true;
    }
    if (!textured)
        PVTEXTURE::texturingOff(PV_TEXTURE_UNITS);
}
