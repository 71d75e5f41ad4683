// PVSHADER bookkeeping: built-in shaders, registry, names, capability queries.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "assets/pvshader.h"
#include "support/glfixture.h"
#include "support/testaccess.h"

namespace {

// A scratch directory and the log; no GL context is needed.
using Shaders = pvtest::RecordingTest;

// The 35 built-ins fill their slots in order (the first and last checked), named by their ids, none
// operative without a shader compiler; free leaves them for cleanUp.
TEST_F(Shaders, InitCreatesTheBuiltInsInOrder)
{
    ASSERT_TRUE(PVTESTACCESS::shaderInit());
    std::vector<PVSHADER*> shaders;
    for (PVSHADER* shader = PVSHADER::getFirst(); shader; shader = shader->getNext())
        shaders.push_back(shader);
    ASSERT_EQ(shaders.size(), 35u);
    EXPECT_EQ(PVSHADER::pplDirect, shaders[0]);
    EXPECT_EQ(PVSHADER::terrainSimple, shaders[34]);
    const unsigned int firstId = shaders[0]->getId();
    for (size_t i = 0; i < shaders.size(); i++) {
        EXPECT_EQ(shaders[i]->getName(), "[shader " + std::to_string(firstId + i) + "]");
        EXPECT_FALSE(shaders[i]->isOperative());
    }
    EXPECT_TRUE(PVTESTACCESS::shaderFree());
    EXPECT_EQ(PVSHADER::getNumberOfShaders(), 35);

    EXPECT_TRUE(PVSHADER::cleanUp());
    EXPECT_EQ(PVSHADER::getFirst(), nullptr);
    EXPECT_EQ(PVSHADER::pplOmni, nullptr);
    PVSHADER::setPath("data/shaders/");
    PVSHADER::setPath(nullptr);  // a null path clears
    EXPECT_STREQ(PVSHADER::getPath(), "");
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

    // reset forgets the current shader even when not enabled.
    PVTESTACCESS::setCurrentShader(&shader);
    PVSHADER::reset();
    EXPECT_EQ(PVTESTACCESS::currentShader(), nullptr);
    PVSHADER::enable();
    PVSHADER::reset();
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());
}

}  // namespace
