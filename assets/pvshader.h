/// \file
/// Vertex and fragment program pair with parameter slots. On the fixed-function
/// GL profile shaders are bookkeeping only: they are registered, named and
/// found, never compiled or bound, and never operative, so every caller takes
/// its fixed-function path.
#ifndef PEVRANO_ASSETS_PVSHADER_H
#define PEVRANO_ASSETS_PVSHADER_H

#include "core/pvregistry.h"

/// Size of a shader name, parameter slots per shader, built-in shaders.
///@{
#define PV_SHADER_NAME_SIZE 256
#define PV_SHADER_PARAMS 28
#define PV_SHADER_BUILTINS 35
///@}

/// A shader program record. This GL profile has no programmable pipeline:
/// loading succeeds without compiling anything, the binding calls return
/// false, and every capability query answers false. Shaders register
/// themselves; PEVRANO::free deletes those left.
class PVSHADER {
public:
    /// Creation and deletion (joins and leaves the registry); not copyable.
    ///@{
    PVSHADER();
    ~PVSHADER();
    PVSHADER(const PVSHADER&) = delete;
    PVSHADER& operator=(const PVSHADER&) = delete;
    ///@}

    /// Registry: cleanUp deletes every shader (false when there was none), the
    /// others count, find (null if none) and walk them.
    ///@{
    /// Deletes every registered shader; false when there was none.
    static bool cleanUp();
    static int getNumberOfShaders();
    static PVSHADER* findByName(const char* name);
    static PVSHADER* findById(unsigned int id);
    static PVSHADER* getFirst();
    PVSHADER* getNext();
    PVSHADER* getPrevious();
    ///@}

    /// Switches shading on or off (disable also forgets the current shader);
    /// always true.
    ///@{
    static bool enable();
    static bool disable();
    ///@}
    /// Forgets the current shader and disables; run at every 3D frame start.
    static void reset();

    /// Loads the vertex and fragment programs named (null skips one); true here.
    ///@{
    bool load(char* vertexProgram, char* fragmentProgram, bool flag);
    bool loadVertexShader(char* fileName, char* defines);
    bool loadPixelShader(char* fileName, char* defines);
    ///@}
    /// Makes this shader current; true here.
    bool render(void* param);
    /// Hand values to the current program; false here, as there is none.
    ///@{
    bool bindParam(unsigned int slot, char* paramName, bool attribute);
    static bool bindTexture(unsigned int unit);
    static bool bindBones(unsigned int count, float* matrices, float* weights, unsigned int bonesPerVertex,
                          unsigned int stride);
    static bool unbindBones();
    static bool bindSizes(int sizeX, int sizeY);
    static bool bindLuminanceAndExposure(float luminance, float exposure);
    static bool bindFocusAndRange(float focus, float range);
    static bool bindNearAndFarPlane(float zNear, float zFar);
    ///@}

    /// Whether both programs were compiled.
    bool isOperative();
    /// Marks both programs as not compiled.
    void forceDeactivation();

    /// Which effects the shaders can draw; all false here.
    ///@{
    static bool useSkinning();
    static bool usePPL();
    static bool useBloom();
    static bool useShadows();
    static bool usePassthrough();
    static bool useEmitter();
    static bool useDOF();
    static bool useSkydome();
    static bool useWater();
    static bool useTerrain();
    ///@}

    /// Name (copied only when shorter than PV_SHADER_NAME_SIZE), program file
    /// names and registry id.
    ///@{
    /// Copies only names shorter than PV_SHADER_NAME_SIZE.
    void setName(const char* newName);
    char* getName();
    char* getVSFilename();
    char* getPSFilename();
    unsigned int getId();
    ///@}
    /// Parameter slot value, 0 for a slot out of range.
    unsigned int getParam(unsigned int slot);
    /// Folder prefix of program files; a null path stores "".
    ///@{
    /// A null path stores "".
    static void setPath(const char* path);
    static char* getPath();
    ///@}

    /// Built-in shaders created by init, in creation order. Per-pixel
    /// lighting suffixes: A skinned, T textured, S shadowed.
    ///@{
    static PVSHADER* pplDirect;
    static PVSHADER* pplOmni;
    static PVSHADER* pplSpot;
    static PVSHADER* pplDirectA;
    static PVSHADER* pplOmniA;
    static PVSHADER* pplSpotA;
    static PVSHADER* pplDirectT;
    static PVSHADER* pplOmniT;
    static PVSHADER* pplSpotT;
    static PVSHADER* pplDirectTA;
    static PVSHADER* pplOmniTA;
    static PVSHADER* pplSpotTA;
    static PVSHADER* pplSpotS;
    static PVSHADER* pplSpotSA;
    static PVSHADER* pplSpotTS;
    static PVSHADER* pplSpotTSA;
    static PVSHADER* passthrough;
    static PVSHADER* passthroughA;
    static PVSHADER* passthroughZPass;
    static PVSHADER* passthroughZPassA;
    static PVSHADER* bloomBright;
    static PVSHADER* bloomToneMapping;
    static PVSHADER* bloomCombine;
    static PVSHADER* bloomForceAlpha;
    static PVSHADER* bloomV;
    static PVSHADER* bloomH;
    static PVSHADER* gaussian;
    static PVSHADER* emitter;
    static PVSHADER* dofCombine;
    static PVSHADER* dof;
    static PVSHADER* skydome;
    static PVSHADER* water;
    static PVSHADER* waterS;
    static PVSHADER* terrainComplex;
    static PVSHADER* terrainSimple;
    ///@}

private:
    friend class PEVRANO;
    // Test suites reach the class-wide start-up entry points here.
    friend struct PVTESTACCESS;

    static bool init();
    static bool free();
    static bool isActive();
    static PVSHADER** builtIn(int index);

    unsigned int id;
    char name[PV_SHADER_NAME_SIZE];
    char vsFilename[PV_SHADER_NAME_SIZE];
    char psFilename[PV_SHADER_NAME_SIZE];
    bool vertexReady;
    bool fragmentReady;
    unsigned int params[PV_SHADER_PARAMS];
    PVSHADER* previous;
    PVSHADER* next;

    static char shaderPath[PV_SHADER_NAME_SIZE];
    static PVSHADER* firstShader;
    static PVSHADER* currentShader;
    static bool enabled;
    static bool active;
    static bool bloomFlag;
    static bool pplFlag;
    static bool shadowsFlag;
    static bool skinningFlag;
    static bool passthroughFlag;
    static bool emitterFlag;
    static bool dofFlag;
    static bool skydomeFlag;
    static bool waterFlag;
    static bool terrainFlag;

    using Registry = PVREGISTRY<PVSHADER, &PVSHADER::firstShader, &PVSHADER::previous, &PVSHADER::next>;
};

#endif
