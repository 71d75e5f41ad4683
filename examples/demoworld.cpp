#include "demoworld.h"

#include "demotile.h"

#include <cmath>
#include <string>

namespace {

// The converter writes animation files at 30 frames per second.
const double animationFramesPerSecond = 30.0;

}  // namespace

void DemoWorld::build()
{
    scene = new PVNODE();
    scene->setName("scene");
    buildFloor();
    loadPanels();
    addLights();
    addEffects();
    loadCharacter();
    camera = new PVCAMERA();
    camera->setTargetNode(camera);
    camera->setTarget(0.0f, 0.5f, 0.0f);
    advance(0.0f, 0.0f);
}

// Six by six tiles in two shades; the tiles' +z becomes world up.
void DemoWorld::buildFloor()
{
    PVNODE* floor = new PVNODE();
    floor->setName("floor");
    floor->setRotation(-90, 0, 0);
    floor->link(scene);
    for (int row = 0; row < 6; ++row)
        for (int column = 0; column < 6; ++column) {
            const float shade = (row + column) % 2 ? 0.35f : 0.8f;
            DemoTile* tile = new DemoTile(1.0f, K3MVECTOR4D(shade, shade, shade, 1.0f));
            tile->setPosition(column - 2.5f, row - 2.5f, 0.0f);
            tile->link(floor);
        }
}

// Three coloured boxes with a brick texture, from data/panels.pve (made by
// tools/make-demo-scene.py).
void DemoWorld::loadPanels()
{
    PEVRANO::setPVEPath(PEVRANO_DEMO_DATA "/");
    PVTEXTURE::setPath(PEVRANO_DEMO_DATA "/");
    PVNODE* panels = PEVRANO::load("panels.pve");
    if (panels)
        panels->link(scene);
}

// A white directional light from above and a warm spot light.
void DemoWorld::addLights()
{
    PVLIGHT* sun = new PVLIGHT();
    sun->setName("sun");
    sun->setLightType(PV_LIGHT_DIRECTIONAL);
    K3MVECTOR3D sunDirection(-0.3f, -0.8f, -0.5f);
    sun->setDirection(sunDirection.normalize());
    sun->setDiffuse(0.45f, 0.45f, 0.5f, 1.0f);
    sun->link(scene);

    PVLIGHT* spot = new PVLIGHT();
    spot->setName("spot");
    spot->setLightType(PV_LIGHT_SPOT);
    spot->setPosition(0.5f, 4.0f, 1.5f);
    spot->setTargetNode(spot);  // aims at its own target vector
    spot->setTarget(0.0f, 0.0f, 0.0f);
    spot->setCutOff(30.0f);
    spot->setExponent(2.0f);
    spot->setDiffuse(1.0f, 0.8f, 0.5f, 1.0f);
    spot->setAmbient(0.0f, 0.0f, 0.0f, 1.0f);
    spot->link(scene);
}

// The effects of examples/effects/: a fire with its smoke in front of the
// middle panel and sparks beside it, warmed up for two seconds so that the
// first frames show them fully grown. They then move on with the engine's
// frame time.
void DemoWorld::addEffects()
{
    PVTEXTURE::setPath(PEVRANO_EFFECTS_DIR "/");
    const struct {
        const char* file;
        float x, y, z;
    } effects[] = {
        {"fire.xml", -1.6f, 0.0f, 0.6f}, {"smoke.xml", -1.6f, 0.9f, 0.6f}, {"sparks.xml", 2.0f, 0.0f, 1.5f}};
    for (const auto& effect : effects) {
        PVEMITTER* emitter = new PVEMITTER();
        emitter->setName(effect.file);
        if (!emitter->load((std::string(PEVRANO_EFFECTS_DIR "/") + effect.file).c_str()))
            continue;  // the log tells why; the node is released with the others
        emitter->setPosition(effect.x, effect.y, effect.z);
        emitter->link(scene);
        for (int step = 0; step < 60; ++step)
            emitter->update(1.0f / 30.0f);
    }
}

// The character converted from a public test model: tools/run-example.sh
// converts Assimp's Testwuson.X into the working directory as character.pve
// with its run as character_0_Wuson_Run.pva. Without the files the demo goes on.
void DemoWorld::loadCharacter()
{
    PEVRANO::setPVEPath("");
    PVTEXTURE::setPath("");
    PVNODE* character = PEVRANO::load("character.pve");
    if (!character)
        return;
    PVNODE* place = new PVNODE();
    place->setName("character");
    place->setPosition(0.0f, 0.55f, 1.0f);
    place->setRotation(0.0f, 60.0f, 0.0f);  // its side towards the camera
    place->link(scene);
    character->link(place);
    run = new PVANIM();
    if (!run->load(const_cast<char*>("character_0_Wuson_Run.pva")) || !run->getNumberOfFrames())
        run = nullptr;  // the animation registry releases it
    else
        run->setTranslating(true);
}

void DemoWorld::advance(float seconds, float animationSpeed)
{
    animationClock += double(seconds) * double(animationSpeed);
    cameraClock += double(seconds);
    if (run) {
        const double frame =
            std::fmod(animationClock * animationFramesPerSecond, double(run->getNumberOfFrames()));
        run->apply(static_cast<unsigned int>(frame), scene);
    }
    // The camera swings 20 degrees either side of the scene's front.
    const double angle = 20.0 * std::sin(cameraClock * 0.4) * 3.14159265358979 / 180.0;
    camera->setPosition(float(10.0 * std::sin(angle)), 7.0f, float(10.0 * std::cos(angle)));
}

void DemoWorld::draw()
{
    PEVRANO::begin3D(camera);
    scene->pass(false);
    PEVRANO::end3D(false);
}

const char* DemoWorld::pick(int x, int y)
{
    const unsigned int code = PEVRANO::select(x, y);
    PVNODE* node = code ? PVNODE::findById(code) : nullptr;
    return node ? node->getName() : nullptr;
}
