// Textured materials on the real renderer, through the engine's frame: a lit
// textured quad shows the lighting equation modulated by the texel, and a
// texture squeezed far below one texel per pixel shows its last mipmap level,
// the box-filtered average of all its texels.
#include <gtest/gtest.h>

#include "scene/scenefixture.h"
#include "tgafile.h"

using namespace pvtest;

namespace {

// Squares of side 4 facing the camera, lit from above and in front.
class TexturePixels : public RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        PVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.2f, 1.0f);
        root = new PVNODE();
        camera = new PVCAMERA();
        camera->setPosition(0, 0, 12);
        pvtest::directionalLight(root, {0, -0.6, -0.8}, {0.2, 0.2, 0.2}, {1, 1, 1});
    }
    void TearDown() override { PEVRANO::free(); }

    // The square's material, its texture read from this file and repeated
    // on both axes. Unlit, it shows the texel itself: white emission alone.
    PVMATERIAL* addQuad(const char* name, const std::string& file, bool mipmapped, int repeats, bool lit)
    {
        writeFile(name, file);
        PVTEXTURE* texture = new PVTEXTURE();
        EXPECT_TRUE(texture->load(name));
        texture->setFilter(false, mipmapped, false);
        PVMESH* quad = PVMESH::createPlane(4, 4);
        quad->setRotation(90, 0, 0);
        for (int i = 0; i < 8; i++)
            quad->getUVPtr()[i] *= repeats;
        quad->getMaterial()->setTexture(0, texture);
        if (!lit) {
            quad->getMaterial()->setAmbient(0, 0, 0, 1);
            quad->getMaterial()->setDiffuse(0, 0, 0, 1);
            quad->getMaterial()->setEmission(1, 1, 1, 1);
        }
        quad->link(root);
        return quad->getMaterial();
    }

    Rgb centre() { return pixelAt(windowWidth / 2, windowHeight / 2); }

    PVNODE* root = nullptr;
    PVCAMERA* camera = nullptr;
};

TEST_F(TexturePixels, LitTextureModulatesTheLightingEquation)
{
    // Texel (1, 0.5, 0.75).
    PVMATERIAL* material =
        addQuad("t.tga", tgaFile(TGA_RAW, 2, 2, 24, 0, repeated({191, 128, 255}, 4)), false, 1, true);
    material->setAmbient(0.5f, 0.5f, 0.5f, 1.0f);
    material->setDiffuse(0.8f, 0.6f, 1.0f, 1.0f);
    drawFrame(root, camera);

    // Global and light ambient on the ambient colour, N.L = 0.8 on the
    // diffuse colour, clamped, then times the texel.
    auto lit = [](double diffuse) { return std::min(1.0, 0.2 * 0.5 + 0.2 * 0.5 + 0.8 * diffuse); };
    expectColour({lit(0.8) * 1.0, lit(0.6) * 128 / 255.0, lit(1.0) * 191 / 255.0}, centre(), "lit texel");
}

TEST_F(TexturePixels, SmallestMipmapLevelIsTheBoxFilteredAverage)
{
    // Red, green, blue and white texels: the 1x1 level is 510 >> 2 = 127 each.
    const Bytes texels = {0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255};
    addQuad("t.tga", tgaFile(TGA_RAW, 2, 2, 24, 0, texels), true, 64, false);
    drawFrame(root, camera);
    expectColour({127 / 255.0, 127 / 255.0, 127 / 255.0}, centre(), "smallest level");
}

// A PNG's top row is drawn at the top of the quad, as a TGA's is.
TEST_F(TexturePixels, PngTextureIsDrawnTopRowUp)
{
    const std::string redOverBlue = readFile(PEVRANO_TEST_DATA "/images/redoverblue.png");
    addQuad("t.png", redOverBlue, false, 1, false);
    drawFrame(root, camera);
    expectColour({1, 0, 0}, pixelAt(windowWidth / 2, windowHeight / 2 + windowHeight / 10), "top half");
    expectColour({0, 0, 1}, pixelAt(windowWidth / 2, windowHeight / 2 - windowHeight / 10), "bottom half");
}

}  // namespace
