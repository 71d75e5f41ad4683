// The render list inside the engine's frame: begin3D starts a list and a
// view, end3D sorts and draws it, the 2D pass draws only widgets in foremost
// order and the skybox turns with the camera only.
#include <gtest/gtest.h>

#include <vector>

#include "scene/scenefixture.h"
#include "scene/scenetestnode.h"

using namespace pvtest;

namespace {

std::vector<PVNODE*> drawn;
std::vector<K3MMATRIX> drawnMatrices;

class Frame : public pvtest::RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(PEVRANO::init(nullptr)) << log.text();
        drawn.clear();
        drawnMatrices.clear();
        // Every test object remembers the order it is drawn in and the
        // matrix of its record.
        pvtest::onRender = [](PVNODE* node, void* element) {
            drawn.push_back(node);
            drawnMatrices.push_back(*static_cast<PVELEMENT*>(element)->getMatrix());
        };
    }
    void TearDown() override
    {
        pvtest::onRender = nullptr;
        PEVRANO::free();
    }
};

TEST_F(Frame, End3DDrawsTheSortedListThroughTheCamera)
{
    PVNODE* root = new PVNODE();
    PVNODE* glass = make("glass", PV_TYPE_HELPER, {}, root);
    PVNODE* mesh = make("mesh", PV_TYPE_MESH, {1, 2, -3}, root);
    PVNODE* light = make("light", PV_TYPE_LIGHT, {}, root);
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0, 0, 10);

    const long before = PEVRANO::getTimeStamp();
    PEVRANO::begin3D(camera);
    root->pass(false);
    PEVRANO::end3D(false);
    EXPECT_EQ(before + 1, mesh->getTimeStamp());
    EXPECT_EQ((std::vector<PVNODE*> {light, mesh, glass}), drawn);
    expectMatrixNear(Mat4::translation(1, 2, -13), drawnMatrices[1].m, "mesh seen from (0, 0, 10)", 1e-5);
    // The next frame starts an empty list.
    PEVRANO::begin3D(nullptr);
    EXPECT_EQ(0u, PVELEMENT::getNumberOfPassedElements());
}

TEST_F(Frame, The2DPassDrawsWidgetsOnlyInForemostOrder)
{
    // Foremost stamps follow construction order.
    PVBOX* box = new pvtest::Recorded<PVBOX>(nullptr);
    PVWINDOW* window = new pvtest::Recorded<PVWINDOW>(nullptr);
    PVBUTTON* button = new pvtest::Recorded<PVBUTTON>(nullptr);
    box->link(window);
    button->link(window);
    make("mesh", PV_TYPE_MESH, {}, window);
    make("light", PV_TYPE_LIGHT, {}, window);
    window->getTitleBar()->setDisplayStatus(false);
    window->getScrollBar()->setDisplayStatus(false);

    PEVRANO::begin3D(nullptr);
    window->pass(false);  // left over from the 3D list: begin2D starts afresh
    PEVRANO::begin2D();
    EXPECT_FALSE(PVLIGHT::getLighting());
    window->pass(false);
    PEVRANO::end2D();
    EXPECT_EQ((std::vector<PVNODE*> {box, window, button}), drawn);
}

TEST_F(Frame, TheSkyboxTurnsWithTheCameraButDoesNotMove)
{
    PVNODE* sky = new PVNODE();
    sky->setRotation(0, 0, 90);
    PVNODE* dome = make("dome", PV_TYPE_MESH, {}, sky);
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(5, 6, 7);
    camera->setRotation(0, 30, 0);
    PEVRANO::setSkybox(sky);

    PEVRANO::begin3D(camera);
    PEVRANO::end3D(false);
    ASSERT_EQ((std::vector<PVNODE*> {dome}), drawn);
    // The camera's inverse rotation, then the sky's own; no translation.
    expectMatrixNear(Mat4::rotationY(-30) * Mat4::rotationZ(90), drawnMatrices[0].m, "skybox", 1e-5);
    PEVRANO::setSkybox(nullptr);
}

}  // namespace
