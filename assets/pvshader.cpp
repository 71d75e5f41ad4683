// Shader bookkeeping: registry, names, parameter slots and capability flags.
#include "assets/pvshader.h"

#include <cstdio>
#include <cstring>

#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfstring.h"

char PVSHADER::shaderPath[PV_SHADER_NAME_SIZE] = "";
PVSHADER* PVSHADER::firstShader = nullptr;
PVSHADER* PVSHADER::currentShader = nullptr;
bool PVSHADER::enabled = false;
bool PVSHADER::active = false;
bool PVSHADER::bloomFlag = false;
bool PVSHADER::pplFlag = false;
bool PVSHADER::shadowsFlag = false;
bool PVSHADER::skinningFlag = false;
bool PVSHADER::passthroughFlag = false;
bool PVSHADER::emitterFlag = false;
bool PVSHADER::dofFlag = false;
bool PVSHADER::skydomeFlag = false;
bool PVSHADER::waterFlag = false;
bool PVSHADER::terrainFlag = false;

PVSHADER* PVSHADER::pplDirect = nullptr;
PVSHADER* PVSHADER::pplOmni = nullptr;
PVSHADER* PVSHADER::pplSpot = nullptr;
PVSHADER* PVSHADER::pplDirectA = nullptr;
PVSHADER* PVSHADER::pplOmniA = nullptr;
PVSHADER* PVSHADER::pplSpotA = nullptr;
PVSHADER* PVSHADER::pplDirectT = nullptr;
PVSHADER* PVSHADER::pplOmniT = nullptr;
PVSHADER* PVSHADER::pplSpotT = nullptr;
PVSHADER* PVSHADER::pplDirectTA = nullptr;
PVSHADER* PVSHADER::pplOmniTA = nullptr;
PVSHADER* PVSHADER::pplSpotTA = nullptr;
PVSHADER* PVSHADER::pplSpotS = nullptr;
PVSHADER* PVSHADER::pplSpotSA = nullptr;
PVSHADER* PVSHADER::pplSpotTS = nullptr;
PVSHADER* PVSHADER::pplSpotTSA = nullptr;
PVSHADER* PVSHADER::passthrough = nullptr;
PVSHADER* PVSHADER::passthroughA = nullptr;
PVSHADER* PVSHADER::passthroughZPass = nullptr;
PVSHADER* PVSHADER::passthroughZPassA = nullptr;
PVSHADER* PVSHADER::bloomBright = nullptr;
PVSHADER* PVSHADER::bloomToneMapping = nullptr;
PVSHADER* PVSHADER::bloomCombine = nullptr;
PVSHADER* PVSHADER::bloomForceAlpha = nullptr;
PVSHADER* PVSHADER::bloomV = nullptr;
PVSHADER* PVSHADER::bloomH = nullptr;
PVSHADER* PVSHADER::gaussian = nullptr;
PVSHADER* PVSHADER::emitter = nullptr;
PVSHADER* PVSHADER::dofCombine = nullptr;
PVSHADER* PVSHADER::dof = nullptr;
PVSHADER* PVSHADER::skydome = nullptr;
PVSHADER* PVSHADER::water = nullptr;
PVSHADER* PVSHADER::waterS = nullptr;
PVSHADER* PVSHADER::terrainComplex = nullptr;
PVSHADER* PVSHADER::terrainSimple = nullptr;

PVSHADER::PVSHADER() :
    id(kvfNewId()),
    vertexReady(false),
    fragmentReady(false),
    params(),
    previous(nullptr),
    next(nullptr)
{
    snprintf(name, sizeof(name), "[shader %d]", id);
    strcpy(vsFilename, "[none]");
    strcpy(psFilename, "[none]");
    Registry::append(this);
}

PVSHADER::~PVSHADER()
{
    kvfReleaseId(id);
    Registry::remove(this);
    if (currentShader == this)
        currentShader = nullptr;
}

// The built-in shader slots in creation order.
PVSHADER** PVSHADER::builtIn(int index)
{
    static PVSHADER** const slots[PV_SHADER_BUILTINS] = {&pplDirect,        &pplOmni,
                                                         &pplSpot,          &pplDirectA,
                                                         &pplOmniA,         &pplSpotA,
                                                         &pplDirectT,       &pplOmniT,
                                                         &pplSpotT,         &pplDirectTA,
                                                         &pplOmniTA,        &pplSpotTA,
                                                         &pplSpotS,         &pplSpotSA,
                                                         &pplSpotTS,        &pplSpotTSA,
                                                         &passthrough,      &passthroughA,
                                                         &passthroughZPass, &passthroughZPassA,
                                                         &bloomBright,      &bloomToneMapping,
                                                         &bloomCombine,     &bloomForceAlpha,
                                                         &bloomV,           &bloomH,
                                                         &gaussian,         &emitter,
                                                         &dofCombine,       &dof,
                                                         &skydome,          &water,
                                                         &waterS,           &terrainComplex,
                                                         &terrainSimple};
    return slots[index];
}

bool PVSHADER::cleanUp()
{
    if (!firstShader)
        return false;
    const int count = Registry::deleteAll();
    // The built-in pointers must not outlive the shaders they named.
    for (int i = 0; i < PV_SHADER_BUILTINS; i++)
        *builtIn(i) = nullptr;
    kvfLog("   %d shader(s) released\n", count);
    return true;
}

int PVSHADER::getNumberOfShaders() { return static_cast<int>(Registry::count()); }

PVSHADER* PVSHADER::findByName(const char* wanted) { return Registry::findByText(&PVSHADER::name, wanted); }

PVSHADER* PVSHADER::findById(unsigned int wanted) { return Registry::findByValue(&PVSHADER::id, wanted); }

PVSHADER* PVSHADER::getFirst() { return firstShader; }
PVSHADER* PVSHADER::getNext() { return next; }
PVSHADER* PVSHADER::getPrevious() { return previous; }

bool PVSHADER::init()
{
    for (int i = 0; i < PV_SHADER_BUILTINS; i++)
        *builtIn(i) = new PVSHADER();
    return true;
}

bool PVSHADER::free() { return true; }

bool PVSHADER::enable()
{
    enabled = true;
    return true;
}

bool PVSHADER::disable()
{
    if (enabled) {
        currentShader = nullptr;
        enabled = false;
    }
    return true;
}

void PVSHADER::reset()
{
    currentShader = nullptr;
    disable();
}

bool PVSHADER::load(char* vertexProgram, char* fragmentProgram, bool flag)
{
    if (flag)
        return true;
    if (vertexProgram && !loadVertexShader(vertexProgram, nullptr))
        return false;
    if (fragmentProgram && !loadPixelShader(fragmentProgram, nullptr))
        return false;
    return true;
}

bool PVSHADER::loadVertexShader(char*, char*) { return true; }
bool PVSHADER::loadPixelShader(char*, char*) { return true; }
bool PVSHADER::render(void*) { return true; }
bool PVSHADER::bindParam(unsigned int, char*, bool) { return false; }
bool PVSHADER::bindTexture(unsigned int) { return false; }
bool PVSHADER::bindBones(unsigned int, float*, float*, unsigned int, unsigned int) { return false; }
bool PVSHADER::unbindBones() { return false; }
bool PVSHADER::bindSizes(int, int) { return false; }
bool PVSHADER::bindLuminanceAndExposure(float, float) { return false; }
bool PVSHADER::bindFocusAndRange(float, float) { return false; }
bool PVSHADER::bindNearAndFarPlane(float, float) { return false; }

bool PVSHADER::isOperative() { return vertexReady && fragmentReady; }

void PVSHADER::forceDeactivation()
{
    vertexReady = false;
    fragmentReady = false;
}

bool PVSHADER::useSkinning() { return skinningFlag; }
bool PVSHADER::usePPL() { return pplFlag; }
bool PVSHADER::useBloom() { return bloomFlag; }
bool PVSHADER::useShadows() { return shadowsFlag; }
bool PVSHADER::usePassthrough() { return passthroughFlag; }
bool PVSHADER::useEmitter() { return emitterFlag; }
bool PVSHADER::useDOF() { return dofFlag; }
bool PVSHADER::useSkydome() { return skydomeFlag; }
bool PVSHADER::useWater() { return waterFlag; }
bool PVSHADER::useTerrain() { return terrainFlag; }
bool PVSHADER::isActive() { return active; }

void PVSHADER::setName(const char* newName) { kvfCopyIfFits(name, sizeof name, newName); }
char* PVSHADER::getName() { return name; }
char* PVSHADER::getVSFilename() { return vsFilename; }
char* PVSHADER::getPSFilename() { return psFilename; }
unsigned int PVSHADER::getId() { return id; }

unsigned int PVSHADER::getParam(unsigned int slot) { return slot < PV_SHADER_PARAMS ? params[slot] : 0; }

void PVSHADER::setPath(const char* path)
{
    if (!path)
        shaderPath[0] = '\0';
    else
        kvfCopyIfFits(shaderPath, sizeof shaderPath, path);
}

char* PVSHADER::getPath() { return shaderPath; }
