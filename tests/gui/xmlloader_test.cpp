// Interfaces from XML files: the widget tree built, the log of the load line
// by line, refused files, and the properties that fall through to the
// enclosing node.
#include <cstdio>

#include "assets/tgafile.h"
#include "gui/guifixture.h"

using namespace pvtest;

namespace {

class XmlLoader : public GuiTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GuiTest::SetUp());
        PVTEXTURE::setPath("");
        PVFONT::setPath("");
        // A 2 x 2 pure red texture.
        writeFile("red.tga", tgaFile(TGA_RAW, 2, 2, 24, 0, repeated({0, 0, 255}, 4)));
    }
    PVNODE* load(const std::string& xml)
    {
        writeFile("menu.xml", xml);
        return PEVRANO::loadXML("menu.xml");
    }
    template <typename Widget> static Widget* child(PVNODE* parent, unsigned int index)
    {
        Widget* widget = dynamic_cast<Widget*>(parent->getChild(index));
        EXPECT_NE(nullptr, widget) << "child " << index << " of " << parent->getName();
        return widget;
    }
};

// The interface of data/xml/menu.xml, with the font sheet beside it; its
// whole load log is data/expected/menu.log.
TEST_F(XmlLoader, BuildsTheWholeTreeAndLogsEachWidget)
{
    writeFile("dejavu.tga", readFile(PEVRANO_FONT_DIR "/dejavu.tga"));
    PVNODE* root = load(readFile(PEVRANO_TEST_DATA "/xml/menu.xml"));
    EXPECT_EQ(readFile(PEVRANO_TEST_DATA "/expected/menu.log"), logged());

    EXPECT_STREQ("menu.xml", root->getName());
    PVFONT* sans = PVFONT::findByName("sans");
    EXPECT_STREQ("dejavu.tga", sans->getTexture()->getFilename());
    EXPECT_FALSE(sans->getTexture()->isMipmapped());

    PVWINDOW* window = child<PVWINDOW>(root, 0);
    EXPECT_STREQ("main", window->getName());
    EXPECT_STREQ("Menu", window->getTitleBar()->getCaption());
    EXPECT_EQ(K3MVECTOR2D(200, 150), window->getSizes());
    EXPECT_EQ(K3MVECTOR3D(20, 30, 0), window->getPosition());
    EXPECT_STREQ("Hello %s", window->getText());

    // Children 0 and 1 are the title bar and the scroll bar.
    PVBUTTON* ok = child<PVBUTTON>(window, 2);
    EXPECT_STREQ("OK", ok->getCaption());
    EXPECT_EQ(sans, ok->getFont());
    EXPECT_EQ(PV_BUTTON_TOGGLE, ok->getEventType());

    PVLABEL* label = child<PVLABEL>(root, 1);
    EXPECT_EQ(sans, label->getFont());
    EXPECT_STREQ("score", label->getText());
    EXPECT_STREQ("type here", child<PVTEXTFIELD>(root, 2)->getCaption());

    PVBOX* red = child<PVBOX>(root, 3);
    EXPECT_EQ(red->getTexture(), child<PVBOX>(root, 4)->getTexture()) << "one texture per file";
    EXPECT_EQ(2, red->getTexture()->getReferences());
    EXPECT_EQ(K3MVECTOR4D(0.5f, 0.25f, 1.0f, 0.75f), red->getColor());
    child<PVVSCROLLBAR>(root, 5);
    child<PVHSCROLLBAR>(root, 6);
}

TEST_F(XmlLoader, RefusedFilesLogWhyAndGiveNull)
{
    const std::string unable = "   [!] Unable to open file menu.xml @ PEVRANO::loadXML\n";
    const std::string noRoot = "\n   Loading XML file 'menu.xml'...\n"
                               "   [!] Root not found in file menu.xml @ PEVRANO::loadXML\n";
    // Each case: what, the file (empty: no file at all), the log.
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"no file", "", unable},
        {"not well formed", "<root><window></root>", unable},
        {"declaration hiding markup", "<?xml version=\"1<\"?><root/>", unable},
        {"other document element", "<menu><window/></menu>", noRoot},
        {"root in another case", "<Root/>", noRoot}};
    for (const auto& [what, contents, expected] : cases) {
        std::remove("menu.xml");
        if (!contents.empty())
            writeFile("menu.xml", contents);
        EXPECT_EQ(nullptr, PEVRANO::loadXML("menu.xml")) << what;
        EXPECT_EQ(expected, logged()) << what;
    }
}

// data/xml/fallthrough.xml: a font used before it is defined, properties
// inside a font or group element, and ones the widget's type ignores.
TEST_F(XmlLoader, PropertiesFallThroughOrAreIgnoredByType)
{
    PVNODE* root = load(readFile(PEVRANO_TEST_DATA "/xml/fallthrough.xml"));
    PVWINDOW* window = child<PVWINDOW>(root, 0);
    const PVWINDOW fresh;
    EXPECT_EQ(nullptr, window->getFont()) << "used before it was defined";
    EXPECT_EQ(fresh.getEventType(), window->getEventType());
    EXPECT_STREQ("from the font", window->getTitleBar()->getCaption());
    EXPECT_EQ(K3MVECTOR3D(7, 8, 0), window->getPosition());
    EXPECT_STREQ("renamed", window->getName());
    EXPECT_EQ(fresh.getSizes(), window->getSizes());
    EXPECT_EQ(fresh.getColor(), window->getColor());
    EXPECT_EQ(nullptr, window->getChild(2)) << "nothing created besides the title bar and scroll bar";

    EXPECT_EQ(PVFONT::findByName("late"), child<PVLABEL>(root, 1)->getFont());
    EXPECT_EQ(nullptr, child<PVBOX>(root, 2)->getChild(0));
}

}  // namespace

// The scene loader hands interface files on, with its path prefix.
TEST_F(XmlLoader, SceneLoaderHandsXmlNamesOn)
{
    writeFile("menu.xml", "<root><box/></root>");
    PEVRANO::setPVEPath("./");
    PVNODE* root = PEVRANO::load("menu.xml");
    EXPECT_STREQ("./menu.xml", root->getName());
    EXPECT_EQ(PV_TYPE_BOX, root->getChild(0)->getType());
}
