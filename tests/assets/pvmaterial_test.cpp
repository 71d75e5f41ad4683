// Materials: texture slots with their references, clone, and the GL calls of
// render (default colours included) with the per-frame current-material cache.
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

// The first calls of render with default colours (as 16.16 values) in two
// frames, the material's texture the context's first.
Calls frameCalls(size_t count)
{
    Calls calls = readCalls(PEVRANO_TEST_DATA "/expected/material-frames.calls");
    calls.resize(count);
    return calls;
}

TEST_F(Materials, SlotsReferencesAndClone)
{
    PVTEXTURE texture;
    PVMATERIAL* rock = new PVMATERIAL();
    EXPECT_FALSE(rock->setTexture(16, &texture));
    EXPECT_EQ(rock->getTexture(16), nullptr);
    EXPECT_TRUE(rock->setTexture(3, &texture) && rock->setTexture(4, &texture) &&
                rock->setTexture(4, nullptr));
    EXPECT_EQ(texture.getReferences(), 1);
    EXPECT_FALSE(rock->isTextured());  // only slot 0 counts
    rock->setName("rock");
    rock->setSkinning(true);
    PVMATERIAL* copy = new PVMATERIAL();
    copy->clone(rock);
    EXPECT_EQ(copy->getName(), "rock" + std::to_string(copy->getId()));
    EXPECT_EQ(copy->getTexture(3), &texture);
    EXPECT_EQ(texture.getReferences(), 1);  // clone takes no reference
    EXPECT_FALSE(copy->isSkinned());
    EXPECT_TRUE(PVMATERIAL::cleanUp());
    EXPECT_FALSE(PVMATERIAL::cleanUp());
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVMATERIAL::setTexture\n   2 material(s) released\n");
}

// A deleted material stops being current: the next one (often at the same
// address) sets its state in full.
TEST_F(Materials, StateIsSetOncePerFrameAndByTheNextMaterialAfterADelete)
{
    PVTESTACCESS::setVideoMemory(1 << 20);
    PVTEXTURE texture;
    ASSERT_TRUE(texture.create(2, 2, 3));
    PVMATERIAL* material = new PVMATERIAL();
    material->setTexture(3, &texture);
    PVTEXTURE::texturingOff(16);
    const Calls calls = record([&] {
        material->render(nullptr);
        material->render(nullptr);
        PVMATERIAL::reset();
        material->render(nullptr);
    });
    EXPECT_EQ(calls, frameCalls(12));
    EXPECT_EQ(PVMATERIAL::getCurrent(), material);
    delete material;
    EXPECT_EQ(PVMATERIAL::getCurrent(), nullptr);
    PVTEXTURE::texturingOff(16);
    PVMATERIAL* second = new PVMATERIAL();
    EXPECT_EQ(record([&] { second->render(nullptr); }), frameCalls(5));
}

TEST_F(Materials, TransparencyBlendsAndBecomesEveryAlpha)
{
    PVMATERIAL material;
    material.setTransparency(0.5f);
    PVSETTINGS::forceShadersOn();
    PVSHADER::enable();
    unsigned int spot = PV_LIGHT_SPOT;
    EXPECT_EQ(record([&] { material.render(&spot); }),
              readCalls(PEVRANO_TEST_DATA "/expected/material-transparent.calls"));
    EXPECT_FALSE(PVTESTACCESS::shaderEnabled());  // no shader is operative
    EXPECT_EQ(material.getAmbient().w, 0.5f);  // the stored colours keep it
    EXPECT_EQ(material.getEmission().w, 0.5f);
}

}  // namespace
