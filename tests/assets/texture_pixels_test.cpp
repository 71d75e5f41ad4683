// Textured materials on the real renderer, through the engine's frame: a lit
// textured quad shows the lighting equation modulated by the texel, and a
// texture squeezed far below one texel per pixel shows its last mipmap level,
// the box-filtered average of all its texels.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <pevrano.h>

#include "scene/scenefixture.h"
#include "tgafile.h"

using namespace pvtest;

namespace {

// A square of side 4 facing +z, drawn through its material with texture
// coordinates from 0 to repeats on both axes.
class TexturedQuad : public PVNODE {
public:
    TexturedQuad(PVMATERIAL* material, float repeats, bool lit) : material(material), lit(lit)
    {
        type = PV_TYPE_CUSTOM;
        const GLfixed h = PV_floatToFixed(2.0f), r = PV_floatToFixed(repeats);
        const GLfixed corners[12] = {-h, -h, 0, h, -h, 0, -h, h, 0, h, h, 0};
        const GLfixed uv[8] = {0, 0, r, 0, 0, r, r, r};
        for (int i = 0; i < 12; i++) {
            vertices[i] = corners[i];
            normals[i] = (i % 3 == 2) ? 65536 : 0;
        }
        std::copy(uv, uv + 8, texCoords);
    }

    bool render(void* element) override
    {
        PVELEMENT* record = static_cast<PVELEMENT*>(element);
        if (lit) {
            PVLIGHT::lightingOn();
            PVLIGHT::activateNearest(record);
        } else {
            PVLIGHT::lightingOff();
            PV_glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        }
        material->render(nullptr);
        PV_glLoadMatrixf(record->getMatrix()->m);
        PVOPENGL::vertexArrayOn();
        PVOPENGL::normalArrayOn();
        PVOPENGL::colorArrayOff();
        PVOPENGL::textureArrayOn();
        glVertexPointer(3, GL_FIXED, 0, vertices);
        glNormalPointer(GL_FIXED, 0, normals);
        glTexCoordPointer(2, GL_FIXED, 0, texCoords);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        return true;
    }

private:
    PVMATERIAL* material;
    bool lit;
    GLfixed vertices[12], normals[12], texCoords[8];
};

class TexturePixels : public RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 0.0f, 1.0f);
        root = new PVNODE();
        camera = new PVCAMERA();
        camera->setPosition(0, 0, 12);
    }
    void TearDown() override { PEVRANO::free(); }

    // A material whose slot 0 holds a 2x2 texture of these B,G,R texels.
    static PVMATERIAL* texturedMaterial(const Bytes& texels, bool mipmapped)
    {
        return texturedMaterial("t.tga", tgaFile(TGA_RAW, 2, 2, 24, 0, texels), mipmapped);
    }
    // A material whose slot 0 holds the texture read from this file.
    static PVMATERIAL* texturedMaterial(const char* name, const std::string& file, bool mipmapped)
    {
        writeFile(name, file);
        PVTEXTURE* texture = new PVTEXTURE();
        EXPECT_TRUE(texture->load(name));
        texture->setFilter(false, mipmapped, false);
        PVMATERIAL* material = new PVMATERIAL();
        material->setTexture(0, texture);
        return material;
    }

    Rgb centre() { return pixelAt(windowWidth / 2, windowHeight / 2); }

    PVNODE* root = nullptr;
    PVCAMERA* camera = nullptr;
};

TEST_F(TexturePixels, LitTextureModulatesTheLightingEquation)
{
    PVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.2f, 1.0f);
    PVLIGHT* light = new PVLIGHT();
    light->setLightType(PV_LIGHT_DIRECTIONAL);
    light->setDirection(0, -0.6f, -0.8f);
    light->setAmbient(0.2f, 0.2f, 0.2f, 1.0f);
    light->setDiffuse(1.0f, 1.0f, 1.0f, 1.0f);
    light->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    light->link(root);
    PVMATERIAL* material = texturedMaterial(repeated({191, 128, 255}, 4), false);  // texel (1, 0.5, 0.75)
    material->setAmbient(0.5f, 0.5f, 0.5f, 1.0f);
    material->setDiffuse(0.8f, 0.6f, 1.0f, 1.0f);
    material->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    (new TexturedQuad(material, 1.0f, true))->link(root);
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
    (new TexturedQuad(texturedMaterial(texels, true), 64.0f, false))->link(root);
    drawFrame(root, camera);
    expectColour({127 / 255.0, 127 / 255.0, 127 / 255.0}, centre(), "smallest level");
}

// A PNG's top row is drawn at the top of the quad, as a TGA's is.
TEST_F(TexturePixels, PngTextureIsDrawnTopRowUp)
{
    const std::string redOverBlue = readFile(PEVRANO_TEST_DATA "/images/redoverblue.png");
    (new TexturedQuad(texturedMaterial("t.png", redOverBlue, false), 1.0f, false))->link(root);
    drawFrame(root, camera);
    expectColour({1, 0, 0}, pixelAt(windowWidth / 2, windowHeight / 2 + windowHeight / 10), "top half");
    expectColour({0, 0, 1}, pixelAt(windowWidth / 2, windowHeight / 2 - windowHeight / 10), "bottom half");
}

}  // namespace
