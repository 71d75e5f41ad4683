// PVSHADER bookkeeping: built-in shaders, registry, names, capability queries.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "assets/pvshader.h"
#include "support/glfixture.h"
#include "support/testaccess.h"

namespace {

std::string defaultName(unsigned int id)
{
    return "[shader " + std::to_string(id) + "]";
}

std::vector<PVSHADER*> registry()
{
    std::vector<PVSHADER*> shaders;
    for (PVSHADER* shader = PVSHADER::getFirst(); shader; shader = shader->getNext())
        shaders.push_back(shader);
    return shaders;
}

// A scratch directory and the log; no GL context is needed.
using Shaders = pvtest::RecordingTest;

TEST_F(Shaders, InitCreatesTheBuiltInsInOrder)
{
    PVSHADER* const* slots[] = {
        &PVSHADER::pplDirect, &PVSHADER::pplOmni, &PVSHADER::pplSpot, &PVSHADER::pplDirectA,
        &PVSHADER::pplOmniA, &PVSHADER::pplSpotA, &PVSHADER::pplDirectT, &PVSHADER::pplOmniT,
        &PVSHADER::pplSpotT, &PVSHADER::pplDirectTA, &PVSHADER::pplOmniTA, &PVSHADER::pplSpotTA,
        &PVSHADER::pplSpotS, &PVSHADER::pplSpotSA, &PVSHADER::pplSpotTS, &PVSHADER::pplSpotTSA,
        &PVSHADER::passthrough, &PVSHADER::passthroughA, &PVSHADER::passthroughZPass,
        &PVSHADER::passthroughZPassA, &PVSHADER::bloomBright, &PVSHADER::bloomToneMapping,
        &PVSHADER::bloomCombine, &PVSHADER::bloomForceAlpha, &PVSHADER::bloomV, &PVSHADER::bloomH,
        &PVSHADER::gaussian, &PVSHADER::emitter, &PVSHADER::dofCombine, &PVSHADER::dof, &PVSHADER::skydome,
        &PVSHADER::water, &PVSHADER::waterS, &PVSHADER::terrainComplex, &PVSHADER::terrainSimple};
    ASSERT_TRUE(PVTESTACCESS::shaderInit());
    std::vector<PVSHADER*> shaders = registry();
    ASSERT_EQ(shaders.size(), 35u);
    EXPECT_EQ(PVSHADER::getNumberOfShaders(), 35);
    const unsigned int firstId = shaders[0]->getId();
    for (size_t i = 0; i < shaders.size(); i++) {
        EXPECT_EQ(*slots[i], shaders[i]) << "built-in " << i;
        EXPECT_EQ(shaders[i]->getId(), firstId + i);
        EXPECT_EQ(shaders[i]->getName(), defaultName(firstId + i));
        EXPECT_FALSE(shaders[i]->isOperative());
    }
    EXPECT_TRUE(PVTESTACCESS::shaderFree());
    EXPECT_EQ(PVSHADER::getNumberOfShaders(), 35);

    EXPECT_TRUE(PVSHADER::cleanUp());
    EXPECT_EQ(log.text(), "   35 shader(s) released\n");
    EXPECT_EQ(PVSHADER::getFirst(), nullptr);
    EXPECT_EQ(PVSHADER::pplOmni, nullptr);
}

TEST_F(Shaders, NewShaderIsEmptyAndNeverOperative)
{
    PVSHADER shader;
    EXPECT_EQ(shader.getName(), defaultName(shader.getId()));
    EXPECT_STREQ(shader.getVSFilename(), "[none]");
    EXPECT_STREQ(shader.getPSFilename(), "[none]");
    for (unsigned int slot = 0; slot <= 28; slot++)
        EXPECT_EQ(shader.getParam(slot), 0u) << slot;

    char vertex[] = "rockVS.glsl";
    char fragment[] = "rockPS.glsl";
    EXPECT_TRUE(shader.load(vertex, fragment, false));
    EXPECT_TRUE(shader.load(nullptr, nullptr, false));
    EXPECT_TRUE(shader.load(vertex, fragment, true));
    EXPECT_FALSE(shader.isOperative());
    EXPECT_STREQ(shader.getVSFilename(), "[none]");
    EXPECT_STREQ(shader.getPSFilename(), "[none]");
    EXPECT_TRUE(shader.loadVertexShader(vertex, nullptr));
    EXPECT_TRUE(shader.loadPixelShader(fragment, nullptr));
    EXPECT_TRUE(shader.render(nullptr));
    shader.forceDeactivation();
    EXPECT_FALSE(shader.isOperative());
    EXPECT_EQ(log.text(), "");
}

// Cleaning up an empty registry is silent.
TEST_F(Shaders, RegistryAppendsAtTailAndUnlinks)
{
    EXPECT_FALSE(PVSHADER::cleanUp());
    EXPECT_EQ(PVSHADER::getNumberOfShaders(), 0);
    EXPECT_EQ(PVSHADER::findByName("[shader 1]"), nullptr);
    PVSHADER* a = new PVSHADER();
    PVSHADER* b = new PVSHADER();
    PVSHADER* c = new PVSHADER();
    EXPECT_EQ(registry(), (std::vector<PVSHADER*>{a, b, c}));
    EXPECT_EQ(c->getPrevious(), b);
    EXPECT_EQ(b->getId(), a->getId() + 1);

    delete b;
    EXPECT_EQ(registry(), (std::vector<PVSHADER*>{a, c}));
    EXPECT_EQ(c->getPrevious(), a);
    delete a;
    EXPECT_EQ(PVSHADER::getFirst(), c);
    EXPECT_EQ(c->getPrevious(), nullptr);
    // Released ids are given out again, lowest first.
    PVSHADER* d = new PVSHADER();
    EXPECT_EQ(registry(), (std::vector<PVSHADER*>{c, d}));
    EXPECT_LT(d->getId(), c->getId());
    EXPECT_TRUE(PVSHADER::cleanUp());
    EXPECT_EQ(log.text(), "   2 shader(s) released\n");
}

TEST_F(Shaders, FindByWholeNameAndById)
{
    PVSHADER* rock = new PVSHADER();
    PVSHADER* water = new PVSHADER();
    rock->setName("rock");
    water->setName("rockwater");
    EXPECT_EQ(PVSHADER::findByName("rock"), rock);
    EXPECT_EQ(PVSHADER::findByName("rockwater"), water);
    EXPECT_EQ(PVSHADER::findByName("Rock"), nullptr);
    EXPECT_EQ(PVSHADER::findByName("roc"), nullptr);
    EXPECT_EQ(PVSHADER::findByName(nullptr), nullptr);
    EXPECT_EQ(PVSHADER::findById(water->getId()), water);
    EXPECT_EQ(PVSHADER::findById(0), nullptr);

    std::string longest(255, 'n');
    water->setName(longest.c_str());
    EXPECT_EQ(water->getName(), longest);
    water->setName(std::string(256, 'x').c_str());
    water->setName(nullptr);
    EXPECT_EQ(water->getName(), longest);
    PVSHADER::cleanUp();
}

TEST_F(Shaders, EnableDisableAndReset)
{
    PVSHADER shader;
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());
    PVTESTACCESS::setCurrentShader(&shader);
    // Not enabled: disable leaves the current shader alone.
    EXPECT_TRUE(PVSHADER::disable());
    EXPECT_EQ(PVTESTACCESS::currentShader(), &shader);

    EXPECT_TRUE(PVSHADER::enable());
    EXPECT_TRUE(PVTESTACCESS::shaderEnabled());
    EXPECT_TRUE(PVSHADER::disable());
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());
    EXPECT_EQ(PVTESTACCESS::currentShader(), nullptr);
    EXPECT_TRUE(PVSHADER::disable());
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());

    // reset forgets the current shader even when not enabled.
    PVTESTACCESS::setCurrentShader(&shader);
    PVSHADER::reset();
    EXPECT_EQ(PVTESTACCESS::currentShader(), nullptr);
    PVSHADER::enable();
    PVSHADER::reset();
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());
}

TEST_F(Shaders, NoProgrammablePipelineOnThisTarget)
{
    int capability = 0;
    for (bool (*use)() : {PVSHADER::useSkinning, PVSHADER::usePPL, PVSHADER::useBloom, PVSHADER::useShadows,
                          PVSHADER::usePassthrough, PVSHADER::useEmitter, PVSHADER::useDOF, PVSHADER::useSkydome,
                          PVSHADER::useWater, PVSHADER::useTerrain})
        EXPECT_FALSE(use()) << "capability " << capability++;
    EXPECT_FALSE(PVTESTACCESS::shaderIsActive());

    PVSHADER shader;
    char param[] = "lightPos";
    float values[16] = {};
    EXPECT_FALSE(shader.bindParam(0, param, false));
    EXPECT_FALSE(PVSHADER::bindTexture(1));
    EXPECT_FALSE(PVSHADER::bindBones(4, values, values, 4, 0));
    EXPECT_FALSE(PVSHADER::unbindBones());
    EXPECT_FALSE(PVSHADER::bindSizes(1024, 1024));
    EXPECT_FALSE(PVSHADER::bindLuminanceAndExposure(1.0f, 1.0f));
    EXPECT_FALSE(PVSHADER::bindFocusAndRange(1.0f, 2.0f));
    EXPECT_FALSE(PVSHADER::bindNearAndFarPlane(1.0f, 1024.0f));
    EXPECT_EQ(log.text(), "");
}

TEST_F(Shaders, PathDefaultsEmptyAndNullClearsIt)
{
    EXPECT_STREQ(PVSHADER::getPath(), "");
    PVSHADER::setPath("data/shaders/");
    EXPECT_STREQ(PVSHADER::getPath(), "data/shaders/");
    PVSHADER::setPath(nullptr);
    EXPECT_STREQ(PVSHADER::getPath(), "");
}

}  // namespace
