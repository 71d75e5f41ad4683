#include "modelviewer.h"

#include <GLES/gl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace {

const float degrees = 3.14159265f / 180.0f;
// GL receives 16.16 fixed point: the camera's position, the far plane and
// every eye-space coordinate stay within this, a margin below 32767.
const float fixedBudget = 30000.0f;
// Zooming out goes at most this many times the framing distance away.
const float farthestZoom = 2.0f;

// Grows the box by a mesh's vertices placed in the world: a skinned mesh's
// as the last frame posed them.
void includeMesh(PVMESH* mesh, K3MVECTOR3D& low, K3MVECTOR3D& high, bool& empty)
{
    const GLfixed* p = mesh->isSkinned() ? mesh->getSkinnedVertexPtr() : mesh->getVertexPtr();
    if (!p)
        return;
    const K3MMATRIX world = mesh->getFinalMatrix(nullptr);
    const float* m = world.m;
    for (unsigned int v = 0; v < mesh->getNumberOfVertices(); v++, p += 3) {
        const float x = p[0] / 65536.0f, y = p[1] / 65536.0f, z = p[2] / 65536.0f;
        const K3MVECTOR3D w(m[0] * x + m[4] * y + m[8] * z + m[12], m[1] * x + m[5] * y + m[9] * z + m[13],
                            m[2] * x + m[6] * y + m[10] * z + m[14]);
        low = empty ? w : K3MVECTOR3D(std::min(low.x, w.x), std::min(low.y, w.y), std::min(low.z, w.z));
        high = empty ? w : K3MVECTOR3D(std::max(high.x, w.x), std::max(high.y, w.y), std::max(high.z, w.z));
        empty = false;
    }
}

void collectBounds(PVNODE* node, K3MVECTOR3D& low, K3MVECTOR3D& high, bool& empty)
{
    if (node->getType() == PV_TYPE_MESH)
        includeMesh(static_cast<PVMESH*>(node), low, high, empty);
    for (unsigned int c = 0; c < node->getNumberOfChildren(); c++)
        collectBounds(node->getChild(c), low, high, empty);
}

PVLIGHT* directionalLight(const K3MVECTOR3D& direction, float strength)
{
    PVLIGHT* light = new PVLIGHT();
    light->setLightType(PV_LIGHT_DIRECTIONAL);
    K3MVECTOR3D unit = direction;
    light->setDirection(unit.normalize());
    light->setDiffuse(strength, strength, strength, 1.0f);
    light->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    return light;
}

}  // namespace

ModelViewer::ModelViewer(const ViewOptions& options) : options(options) {}

bool ModelViewer::load(std::string& error)
{
    // The converter writes textures beside the scene file.
    const size_t slash = options.model.find_last_of('/');
    PVTEXTURE::setPath(slash == std::string::npos ? "" : options.model.substr(0, slash + 1).c_str());
    std::string name = options.model;
    model = PEVRANO::load(&name[0]);
    if (!model) {
        error = "cannot load the scene file " + options.model;
        return false;
    }
    if (!options.animation.empty()) {
        animation = new PVANIM();
        std::string file = options.animation;
        if (!animation->load(&file[0]) || animation->getNumberOfFrames() == 0) {
            error = "cannot load the animation file " + options.animation;
            return false;
        }
        animation->setTranslating(true);
    }
    frameModel();
    return true;
}

// Centre and size of the model at rest set the camera distance, the depth
// range and the lights (two directional lights, from the front and above).
void ModelViewer::frameModel()
{
    lights = new PVNODE();
    directionalLight(K3MVECTOR3D(-0.3f, -0.4f, -1.0f), 0.7f)->link(lights);
    directionalLight(K3MVECTOR3D(0.5f, -1.0f, 0.2f), 0.4f)->link(lights);
    camera = new PVCAMERA();
    camera->setTargetNode(camera);
    // A first frame poses the model (and skins it) as it will be shown.
    placeCamera();
    drawFrame();
    K3MVECTOR3D low, high;
    bool empty = true;
    collectBounds(model, low, high, empty);
    if (!empty) {
        centre = K3MVECTOR3D((low.x + high.x) / 2, (low.y + high.y) / 2, (low.z + high.z) / 2);
        const K3MVECTOR3D half((high.x - low.x) / 2, (high.y - low.y) / 2, (high.z - low.z) / 2);
        radius = std::max(1e-3f, std::sqrt(half.x * half.x + half.y * half.y + half.z * half.z));
    }
    distance = framingDistance();
    fitInFixedRange();
    PVOPENGL::setNearPlane(radius * 0.02f);
    PVOPENGL::setFarPlane(farthestZoom * distance + radius);
    PVOPENGL::resize(0, 0, PVSETTINGS::getSDLWindowX(), PVSETTINGS::getSDLWindowY());
    PVOPENGL::setGlobalAmbientLight(0.3f, 0.3f, 0.3f, 1.0f);
    PVOPENGL::setBackgroundColor(0.2f, 0.25f, 0.3f, 1.0f);
    placeCamera();
}

// A model too large to be framed within the fixed-point range is drawn
// uniformly scaled down; GL then renormalises its normals.
void ModelViewer::fitInFixedRange()
{
    const float offCentre = std::max({std::fabs(centre.x), std::fabs(centre.y), std::fabs(centre.z), radius});
    const float needed = offCentre + farthestZoom * distance;
    if (needed <= fixedBudget)
        return;
    scale = fixedBudget / needed;
    scaling.setScaling(K3MVECTOR3D(scale, scale, scale));
    centre *= scale;
    radius *= scale;
    distance *= scale;
    glEnable(GL_NORMALIZE);
}

// The model's sphere fills the view, with a margin.
float ModelViewer::framingDistance() const
{
    return radius / std::tan(PVOPENGL::getAngleOfView() / 2 * degrees) * 1.2f;
}

void ModelViewer::zoom(float factor)
{
    distance = std::min(distance * factor, farthestZoom * framingDistance());
}

void ModelViewer::placeCamera()
{
    const float cosPitch = std::cos(pitch * degrees);
    camera->setPosition(centre.x + distance * cosPitch * std::sin(yaw * degrees),
                        centre.y + distance * std::sin(pitch * degrees),
                        centre.z + distance * cosPitch * std::cos(yaw * degrees));
    camera->setTarget(centre);
}

void ModelViewer::advanceAnimation()
{
    if (!animation)
        return;
    animation->apply(frame % animation->getNumberOfFrames(), model);
    if (playing)
        frame++;
}

void ModelViewer::drawFrame()
{
    advanceAnimation();
    PEVRANO::clear(true, true, false);
    PEVRANO::begin3D(camera);
    lights->pass(false);
    if (scale != 1.0f)
        PV_glMultMatrixf(scaling.m);
    model->pass(false);
    PEVRANO::end3D(false);
}

bool ModelViewer::renderToFile(std::string& error)
{
    for (int f = 0; f < options.frames; f++) {
        drawFrame();
        // The last frame is read before the swap, while its buffer is defined.
        if (f + 1 == options.frames && !saveScreenshot(options.screenshot)) {
            error = "cannot write " + options.screenshot;
            return false;
        }
        PEVRANO::swap();
    }
    return true;
}

// Keys as the engine's events report them (SDL 1.2 key symbols).
enum ViewerKey { KEY_ESCAPE = 27, KEY_SPACE = 32, KEY_PLUS = 43, KEY_MINUS = 45, KEY_EQUALS = 61 };

void ModelViewer::runInteractive()
{
    bool running = true, dragging = false;
    int lastX = 0, lastY = 0;
    while (running) {
        PVEVENT event;
        while (PEVRANO::pollEvent(&event)) {
            if (event.type == PV_EVENT_QUIT || (event.type == PV_EVENT_KEY_DOWN && event.key == KEY_ESCAPE))
                running = false;
            else if (event.type == PV_EVENT_KEY_DOWN && event.key == KEY_SPACE)
                playing = !playing;
            else if (event.type == PV_EVENT_KEY_DOWN && (event.key == KEY_PLUS || event.key == KEY_EQUALS))
                zoom(0.9f);
            else if (event.type == PV_EVENT_KEY_DOWN && event.key == KEY_MINUS)
                zoom(1.1f);
            else if (event.type == PV_EVENT_WHEEL)
                zoom(event.wheel > 0 ? 0.9f : 1.1f);
            else if (event.type == PV_EVENT_POINTER_DOWN || event.type == PV_EVENT_POINTER_UP)
                dragging = event.type == PV_EVENT_POINTER_DOWN && event.button == PV_POINTER_LEFT;
            else if (event.type == PV_EVENT_POINTER_MOVE && dragging) {
                yaw -= float(event.x - lastX) * 0.5f;
                pitch = std::max(-89.0f, std::min(89.0f, pitch + float(event.y - lastY) * 0.5f));
            }
            lastX = event.x;
            lastY = event.y;
        }
        placeCamera();
        drawFrame();
        PEVRANO::swap();
        std::this_thread::sleep_for(std::chrono::milliseconds(16));
    }
}

bool ModelViewer::saveScreenshot(const std::string& path) const { return PEVRANO::screenshot(path.c_str()); }
