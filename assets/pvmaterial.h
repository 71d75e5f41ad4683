/// \file
/// How a surface is lit and textured: four fixed-function colours, shininess,
/// transparency, one texture per texture unit, an optional shader and a
/// skinning flag. Materials are registered so that the scene loader finds them
/// by name; a class-wide current material lets consecutive meshes with the
/// same material skip every state change within a frame.
#ifndef PEVRANO_ASSETS_PVMATERIAL_H
#define PEVRANO_ASSETS_PVMATERIAL_H

#include "core/pvregistry.h"
#include "math/k3mvector4d.h"

/// Size of a material name (terminator included) and texture slots per material.
///@{
#define PV_MATERIAL_NAME_SIZE 256
#define PV_MATERIAL_SLOTS 16
///@}

class PVTEXTURE;
class PVSHADER;

/// A material: four colours, transparency, shininess, up to 16 textures and a
/// shader. Materials register themselves and are shared by reference count;
/// PEVRANO::free deletes those left.
class PVMATERIAL {
public:
    /// Creation and deletion (joins and leaves the registry); not copyable.
    ///@{
    PVMATERIAL();
    /// Texture references are not given back.
    ~PVMATERIAL();
    PVMATERIAL(const PVMATERIAL&) = delete;
    PVMATERIAL& operator=(const PVMATERIAL&) = delete;
    ///@}

    /// Deletes every registered material; false (no log line) when there was none.
    static bool cleanUp();
    /// Forgets the current material, so that the next render sets GL state.
    static void reset();
    /// Registry: the first material with a name or id (null if none), the
    /// count, the walk from the first, and the material last put into GL.
    ///@{
    static PVMATERIAL* findByName(const char* name);
    static PVMATERIAL* findById(unsigned int id);
    static int getNumberOfMaterials();
    static PVMATERIAL* getFirst();
    PVMATERIAL* getNext();
    PVMATERIAL* getPrevious();
    static PVMATERIAL* getCurrent();
    ///@}

    /// Slot below 16 (else false with "Invalid params"); the old texture loses a
    /// reference, the new one gains one; null empties the slot.
    bool setTexture(unsigned int slot, PVTEXTURE* texture);
    /// The texture in a slot, null for none.
    PVTEXTURE* getTexture(unsigned int slot);
    /// Copies name (+ own id), colours, transparency, shininess, textures and
    /// shader of source; no references are taken, skinning is not copied.
    void clone(PVMATERIAL* source);
    /// Copies only names shorter than 256 characters.
    void setName(const char* newName);
    /// Name, registry id and frame stamp of the last render.
    ///@{
    char* getName();
    unsigned int getId();
    int getTimeStamp();
    ///@}
    /// References held by meshes.
    ///@{
    int getReferences();
    void incReferences();
    void decReferences();
    ///@}

    /// Ambient, diffuse, specular and emitted colours (RGBA, 0 to 1).
    ///@{
    void setAmbient(K3MVECTOR4D color);
    void setAmbient(float r, float g, float b, float a);
    void setDiffuse(K3MVECTOR4D color);
    void setDiffuse(float r, float g, float b, float a);
    void setSpecular(K3MVECTOR4D color);
    void setSpecular(float r, float g, float b, float a);
    void setEmission(K3MVECTOR4D color);
    void setEmission(float r, float g, float b, float a);
    K3MVECTOR4D getAmbient();
    K3MVECTOR4D getDiffuse();
    K3MVECTOR4D getSpecular();
    K3MVECTOR4D getEmission();
    ///@}
    /// Transparency: 1 is opaque; below it the material is drawn blended.
    ///@{
    void setTransparency(float value);
    float getTransparency();
    ///@}
    /// Specular exponent.
    ///@{
    void setShininess(float value);
    float getShininess();
    ///@}
    /// The shader drawn with (not owned), null for none.
    ///@{
    void setShader(PVSHADER* newShader);
    PVSHADER* getShader();
    ///@}
    /// Whether the material draws a skinned mesh.
    ///@{
    void setSkinning(bool value);
    bool isSkinned();
    ///@}

    /// Transparency differs from 1.
    bool isTransparent();
    /// Slot 0 holds a texture (the other slots do not count).
    bool isTextured();

    /// Puts the material's state into GL; param points to an unsigned int
    /// light type (PV_LIGHT_TYPE values) or is null. Always true.
    bool render(void* param);

private:
    friend struct PVTESTACCESS;

    PVSHADER* chooseShader(void* param);
    void applyShader(PVSHADER* chosen);
    void applyColors();
    void applyTextures();

    unsigned int id;
    char name[PV_MATERIAL_NAME_SIZE];
    int timeStamp;
    int references;
    K3MVECTOR4D ambient;
    K3MVECTOR4D diffuse;
    K3MVECTOR4D specular;
    K3MVECTOR4D emission;
    float transparency;
    float shininess;
    PVTEXTURE* textures[PV_MATERIAL_SLOTS];
    PVSHADER* shader;
    bool skinning;
    PVMATERIAL* previous;
    PVMATERIAL* next;

    static PVMATERIAL* firstMaterial;
    static PVMATERIAL* currentMaterial;

    using Registry =
        PVREGISTRY<PVMATERIAL, &PVMATERIAL::firstMaterial, &PVMATERIAL::previous, &PVMATERIAL::next>;
};

#endif
