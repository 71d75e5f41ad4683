// Materials: defaults, texture slots with their references, clone, and the
// GL calls of render with the per-frame current-material cache.
#include <gtest/gtest.h>

#include <string>

#include "assets/pvmaterial.h"
#include "assets/pvtexture.h"
#include "core/pvsettings.h"
#include "scene/pvlight.h"
#include "support/glfixture.h"
#include "support/testaccess.h"

using namespace pvtest;

namespace {

using Materials = GlContextTest;

void expectColour(K3MVECTOR4D got, float r, float g, float b, float a)
{
    EXPECT_FLOAT_EQ(got.x, r);
    EXPECT_FLOAT_EQ(got.y, g);
    EXPECT_FLOAT_EQ(got.z, b);
    EXPECT_FLOAT_EQ(got.w, a);
}

// The material calls of render: colours as 16.16 values, alpha included.
Calls materialCalls(const std::string& alpha)
{
    return {"glMaterialxv(GL_FRONT_AND_BACK,GL_EMISSION,{0,0,0," + alpha + "})",
            "glMaterialxv(GL_FRONT_AND_BACK,GL_AMBIENT,{13107,13107,13107," + alpha + "})",
            "glMaterialxv(GL_FRONT_AND_BACK,GL_DIFFUSE,{39321,39321,39321," + alpha + "})",
            "glMaterialxv(GL_FRONT_AND_BACK,GL_SPECULAR,{13107,13107,13107," + alpha + "})",
            "glMaterialx(GL_FRONT_AND_BACK,GL_SHININESS,0)"};
}

TEST_F(Materials, DefaultsSlotsAndClone)
{
    PVMATERIAL* rock = new PVMATERIAL();
    EXPECT_FALSE(rock->isTransparent());
    EXPECT_FALSE(rock->isTextured());
    expectColour(rock->getDiffuse(), 0.6f, 0.6f, 0.6f, 1.0f);
    expectColour(rock->getEmission(), 0.0f, 0.0f, 0.0f, 1.0f);
    EXPECT_EQ(rock->getName(), "[material " + std::to_string(rock->getId()) + "]");

    PVTEXTURE texture;
    EXPECT_FALSE(rock->setTexture(16, &texture));
    EXPECT_EQ(rock->getTexture(16), nullptr);
    EXPECT_TRUE(rock->setTexture(3, &texture));
    EXPECT_TRUE(rock->setTexture(4, &texture));
    EXPECT_TRUE(rock->setTexture(4, nullptr));
    EXPECT_EQ(texture.getReferences(), 1);
    EXPECT_FALSE(rock->isTextured());  // only slot 0 counts

    rock->setName("rock");
    rock->setAmbient(0.1f, 0.2f, 0.3f, 0.4f);
    rock->setSkinning(true);
    PVMATERIAL* copy = new PVMATERIAL();
    copy->clone(rock);
    EXPECT_EQ(copy->getName(), "rock" + std::to_string(copy->getId()));
    expectColour(copy->getAmbient(), 0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(copy->getTexture(3), &texture);
    EXPECT_EQ(texture.getReferences(), 1);
    EXPECT_FALSE(copy->isSkinned());
    copy->setName(std::string(256, 'x').c_str());  // too long: kept
    EXPECT_EQ(PVMATERIAL::findByName(copy->getName()), copy);

    EXPECT_TRUE(PVMATERIAL::cleanUp());
    EXPECT_FALSE(PVMATERIAL::cleanUp());
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVMATERIAL::setTexture\n   2 material(s) released\n");
}

TEST_F(Materials, StateIsSetOncePerFrame)
{
    PVTESTACCESS::setVideoMemory(1 << 20);
    PVTEXTURE texture;
    ASSERT_TRUE(texture.create(2, 2, 3));
    PVMATERIAL material;
    material.setTexture(3, &texture);
    PVTEXTURE::texturingOff(16);
    const Calls calls = record([&] {
        material.render(nullptr);
        material.render(nullptr);
        PVMATERIAL::reset();
        material.render(nullptr);
    });
    Calls expected = materialCalls("65536");
    expected.push_back("glEnable(GL_TEXTURE_2D)");
    expected.push_back("glBindTexture(GL_TEXTURE_2D," + std::to_string(texture.getGLId()) + ")");
    for (const std::string& call : materialCalls("65536"))
        expected.push_back(call);
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(PVMATERIAL::getCurrent(), &material);
}

TEST_F(Materials, TransparencyBlendsAndBecomesEveryAlpha)
{
    PVMATERIAL material;
    material.setTransparency(0.5f);
    PVSETTINGS::forceShadersOn();
    PVSHADER::enable();
    unsigned int spot = PV_LIGHT_SPOT;
    Calls expected = materialCalls("32768");
    expected.push_back("glBlendFunc(GL_SRC_ALPHA,GL_ONE_MINUS_SRC_ALPHA)");
    expected.push_back("glEnable(GL_BLEND)");
    EXPECT_EQ(record([&] { material.render(&spot); }), expected);
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());  // no shader is operative
    expectColour(material.getAmbient(), 0.2f, 0.2f, 0.2f, 0.5f);
    expectColour(material.getSpecular(), 0.2f, 0.2f, 0.2f, 0.5f);
    EXPECT_TRUE(material.isTransparent());
}

}  // namespace
