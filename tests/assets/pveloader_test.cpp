// Scene files: whole loads compared with their log and with the nodes,
// lights and meshes read back; refused headers; every truncation of a valid
// file and the hostile files under tests/data/pve/ refused without leaving
// nodes behind. The valid files are under tests/data/scenes/ (its README
// lists what each holds).
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include <pevrano.h>

#include "support/glfixture.h"

using namespace pvtest;

namespace {

class PveLoad : public GlContextTest {
protected:
    void TearDown() override
    {
        PVNODE::cleanUp();
        PVMATERIAL::cleanUp();
        PVTEXTURE::cleanUp();
    }
    // "   + name [id: N]\n" at the given indent.
    static std::string treeLine(PVNODE* node, int indent)
    {
        return std::string(size_t(indent), ' ') + "+ " + node->getName() +
               " [id: " + std::to_string(node->getId()) + "]\n";
    }
};

// A file of tests/data/scenes.
std::string scene(const std::string& name) { return PEVRANO_TEST_DATA "/scenes/" + name; }

TEST_F(PveLoad, ASceneLoadsWholeInEitherLayout)
{
    for (bool obsolete : {false, true}) {
        log.fresh();
        writeFile("scene.pve", readFile(scene(obsolete ? "sample-obsolete.pve" : "sample.pve")));
        PVNODE* root = PEVRANO::load("scene.pve");
        const std::string logged = log.fresh();
        ASSERT_NE(nullptr, root) << logged;
        PVLIGHT* lamp = static_cast<PVLIGHT*>(root->getChild(0));
        PVMESH* quad = static_cast<PVMESH*>(root->getChild(1));
        EXPECT_EQ((obsolete ? "\n   Loading PVE file 'scene.pve'...\n"
                              "   [!] Obsolete PVE file format detected: re-export your model with 1.6a\n"
                              "   Header: PVE file v1.5a\n"
                            : "\n   Loading PVE file 'scene.pve'...\n"
                              "   Header: PVE file v1.6a\n") +
                      std::string("   File .PVE loaded (3 nodes)\n"
                                  "   Tree for root:\n") +
                      treeLine(root, 3) + treeLine(lamp, 5) + treeLine(quad, 5) + "\n",
                  logged);

        // Positions and normals are drawn by the mesh pixel tests.
        PVMATERIAL* material = PVMATERIAL::findByName("red");
        EXPECT_EQ(material, quad->getMaterial());
        EXPECT_STREQ("lamp", lamp->getName());
        EXPECT_TRUE(quad->isHidden());
        // Root position and origin, lamp target, quad rotation and minimum.
        EXPECT_EQ(
            (std::vector<K3MVECTOR3D> {{4, 5, 6}, {0.5f, 0, 0}, {0, 9, 0}, {10, 20, 30}, {-1.5f, -1.5f, 0}}),
            (std::vector<K3MVECTOR3D> {root->getPosition(), root->getOrigin(), lamp->getTarget(),
                                       quad->getRotation(), quad->getMinimum()}));
        // Lamp ambient, diffuse and specular, material diffuse.
        EXPECT_EQ((std::vector<K3MVECTOR4D> {
                      {0.2f, 0.1f, 0.05f, 1}, {1, 0.5f, 0.25f, 1}, {0.1f, 0.05f, 0.025f, 1}, {1, 0, 0, 1}}),
                  (std::vector<K3MVECTOR4D> {lamp->getAmbient(), lamp->getDiffuse(), lamp->getSpecular(),
                                             material->getDiffuse()}));
        // Lamp cut-off, quad radius and a face normal's z, material transparency and shininess.
        EXPECT_EQ((std::vector<float> {30, 2.25f, 1, 0.25f, 12}),
                  (std::vector<float> {lamp->getCutOff(), quad->getRadius(), quad->getFaceNormalPtr()[5],
                                       material->getTransparency(), material->getShininess()}));
        // Root aux id, lamp and quad types, UV count, materials, the material's references.
        EXPECT_EQ((std::vector<int> {77, PV_LIGHT_SPOT, PV_TYPE_MESH, 4, 1, 1}),
                  (std::vector<int> {int(root->getAuxId()), lamp->getLightType(), quad->getType(),
                                     int(quad->getNumberOfUVs()), PVMATERIAL::getNumberOfMaterials(),
                                     material->getReferences()}));
        EXPECT_EQ((std::vector<GLfixed> {0, 0, 65536, 0}),
                  std::vector<GLfixed>(quad->getUVPtr(), quad->getUVPtr() + 4));
        PVNODE::cleanUp();
    }
}

TEST_F(PveLoad, HeadersOtherThanTheTwoLayoutsAreRefused)
{
    const std::string invalid = "   [!] Invalid header in file f.pve @ PEVRANO::load\n";
    const struct {
        const char* what;
        std::string bytes, logged;  // the log after the loading line
    } cases[] = {
        {"last character differs", readFile(scene("header-1.6b.pve")), invalid},
        {"shorter than a header", "PVE f", invalid},
        {"empty file", "", invalid},
        {"header only", readFile(scene("header-only.pve")),
         "   Header: PVE file v1.6a\n   [!] Corrupted file f.pve @ PEVRANO::load\n"},
    };
    for (const auto& c : cases) {
        writeFile("f.pve", c.bytes);
        EXPECT_EQ(nullptr, PEVRANO::load("f.pve")) << c.what;
        EXPECT_EQ("\n   Loading PVE file 'f.pve'...\n" + c.logged, log.fresh()) << c.what;
    }
    EXPECT_EQ(nullptr, PEVRANO::load("missing.pve"));
    EXPECT_EQ(nullptr, PEVRANO::load(nullptr));
    const std::string notFound = "   [!] Invalid params or file not found @ PEVRANO::load\n";
    EXPECT_EQ(notFound + notFound, log.fresh());
}

TEST_F(PveLoad, MeshMaterialsAreReportedUnlessNamedRoot)
{
    struct Case {
        const char* file;
        std::string logged;
    } cases[] = {
        {"material-none.pve", "   [!] no material assigned to mesh 'm'\n"},
        {"material-none-root.pve", ""},
        {"material-gone.pve", "   [!] material 'gone' not found for mesh 'm'\n"},
        {"material-gone-root.pve", ""},
        {"material-empty.pve", ""},
    };
    for (const Case& c : cases) {
        writeFile("m.pve", readFile(scene(c.file)));
        PVNODE* loaded = PEVRANO::load("m.pve");
        ASSERT_NE(nullptr, loaded) << c.file;
        EXPECT_EQ(nullptr, static_cast<PVMESH*>(loaded)->getMaterial());
        const std::string text = log.fresh();
        const size_t from = text.find("'...\n") + 5;
        EXPECT_EQ("   Header: PVE file v1.6a\n   [!] Warning: no material found in file m.pve\n" + c.logged +
                      "   File .PVE loaded (1 nodes)\n",
                  text.substr(from, text.find("   Tree for") - from))
            << c.file;
    }
}

// A texture rock_d.tga has the normal map rock_n.tga, looked for without the
// texture path; ab.tga has "_n.tga".
TEST_F(PveLoad, NormalMapsAreNamedAfterTheTexture)
{
    writeFile("rock_n.tga", "not really a picture");
    writeFile("t.pve", readFile(scene("normal-maps.pve")));
    ASSERT_NE(nullptr, PEVRANO::load("t.pve"));
    EXPECT_NE(std::string::npos, log.text().find("\n   normal map: rock_n.tga\n"));
    EXPECT_NE(std::string::npos, log.text().find("\n   [!] normal map not found for ab.tga\n"));
    PVMATERIAL* material = PVMATERIAL::findByName("red");
    ASSERT_NE(nullptr, material->getTexture(1));
    EXPECT_NE(material->getTexture(0), material->getTexture(1));
    EXPECT_EQ(nullptr, PVMATERIAL::findByName("ab")->getTexture(1));
}

// Every proper prefix of a valid file is refused, and the nodes it had
// created are gone again; the materials stay registered.
TEST_F(PveLoad, EveryTruncationIsRefusedAndCleanedUp)
{
    const std::string whole = readFile(scene("sample-skinned.pve"));
    new PVNODE();  // a node that was there before
    for (size_t cut = 15; cut < whole.size(); cut++) {
        writeFile("cut.pve", whole.substr(0, cut));
        ASSERT_EQ(nullptr, PEVRANO::load("cut.pve")) << "cut at " << cut;
        const std::string text = log.fresh();
        EXPECT_EQ("   [!] Corrupted file cut.pve @ PEVRANO::load\n", text.substr(text.rfind("   [!] ")))
            << "cut at " << cut;
        ASSERT_EQ(1u, PVNODE::getNumberOfNodes()) << "cut at " << cut;
    }
    writeFile("whole.pve", whole);
    PVNODE* root = PEVRANO::load("whole.pve");
    EXPECT_EQ(5u, PVNODE::getNumberOfNodes());
    EXPECT_TRUE(static_cast<PVMESH*>(root->getChild(2))->isSkinned());
}

// Hostile files: counts past the data, faces and bones out of range, more
// bones than a skeleton holds, unknown node types. Files named unknown-*
// end on the unknown-type line, the others on the corruption line.
TEST_F(PveLoad, HostileFilesAreRefusedWithoutLeavingNodes)
{
    const std::string folder = PEVRANO_TEST_DATA "/pve";
    PEVRANO::setPVEPath((folder + "/").c_str());
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        files++;
        EXPECT_EQ(nullptr, PEVRANO::load(name.c_str())) << name;
        const std::string text = log.fresh();
        const std::string expected = name.rfind("unknown-", 0) == 0
                                         ? "   [!] Unknow type @ PEVRANO::recursiveLoad\n"
                                         : "   [!] Corrupted file " + name + " @ PEVRANO::load\n";
        EXPECT_EQ(expected, text.substr(text.rfind("   [!] "))) << name;
        EXPECT_EQ(0u, PVNODE::getNumberOfNodes()) << name;
    }
    EXPECT_GE(files, 6u);
    PEVRANO::setPVEPath(nullptr);
    EXPECT_STREQ("", PEVRANO::getPVEPath());
}

}  // namespace
