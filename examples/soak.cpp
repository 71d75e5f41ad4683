// A long run of the demo's world and interface, off-screen, that creates and
// deletes nodes, textures and widgets as it goes and samples the process's
// resident memory:
//     pevrano_soak [frames (10000)] [frames between samples (1000)]
// Each sample prints the resident size and the engine's object counts;
// tools/soak-growth.sh judges them (warm-up first, then a leak keeps
// climbing). At shut-down the engine's log ends with its memory ratio.
#include "demointerface.h"
#include "demotile.h"
#include "demoworld.h"

#include <pevrano.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <unistd.h>

namespace {

long residentKilobytes()
{
    long pages = 0, resident = 0;
    FILE* statm = std::fopen("/proc/self/statm", "r");
    if (!statm)
        return -1;
    const bool read = std::fscanf(statm, "%ld %ld", &pages, &resident) == 2;
    std::fclose(statm);
    return read ? resident * (sysconf(_SC_PAGESIZE) / 1024) : -1;
}

// Deletes a node and everything under it.
void deleteTree(PVNODE* node)
{
    if (node->getParent())
        node->unlink();
    while (PVNODE* child = node->getNumberOfChildren() ? node->getChild(0) : nullptr)
        deleteTree(child);
    delete node;
}

// What the run creates and deletes: each kind lives for a while in a queue
// of its own and is deleted when the queue is full.
class Churn {
public:
    Churn(PVNODE* scene, PVNODE* interfaceRoot) : scene(scene), interfaceRoot(interfaceRoot) {}

    void step(int frame)
    {
        addTiles(frame);
        if (frame % 10 == 0)
            addWidgets(frame);
        if (frame % 100 == 0)
            reloadPanels();
        if (frame % 250 == 0)
            replaceEmitter();
    }

private:
    // Two small orange tiles on a node, somewhere over the floor.
    void addTiles(int frame)
    {
        PVNODE* group = new PVNODE();
        group->setPosition(float(frame % 7) - 3.0f, 2.5f, float(frame % 5) - 2.0f);
        group->setRotation(float(frame % 360), 0.0f, 0.0f);
        for (int i = 0; i < 2; ++i) {
            PVNODE* tile = new DemoTile(0.25f, K3MVECTOR4D(0.9f, 0.6f, 0.2f, 1.0f));
            tile->setPosition(0.3f * float(i), 0.0f, 0.0f);
            tile->link(group);
        }
        group->link(scene);
        keep(tiles, group, 32);
    }

    // A box showing a texture freshly read from its file, a label and a
    // button, in the bottom left corner.
    void addWidgets(int frame)
    {
        PVTEXTURE* texture = new PVTEXTURE();
        texture->load("bricks.tga");
        PVBOX* box = new PVBOX();
        box->setSizes(32, 32);
        box->setPosition(float(8 + frame / 10 % 8 * 36), 440.0f);
        box->setTexture(texture);
        box->link(interfaceRoot);
        PVFONT* font = PVFONT::findByName("dejavu");
        PVLABEL* label = new PVLABEL();
        label->setFont(font);
        label->setSizes(120, 16);
        label->setPosition(8.0f, 420.0f);
        if (font)
            label->write("frame %d", frame);
        label->link(interfaceRoot);
        PVBUTTON* button = new PVBUTTON();
        button->setFont(font);
        button->setCaption("soak");
        button->setSizes(60, 18);
        button->setPosition(140.0f, 418.0f);
        button->link(interfaceRoot);
        keep(widgets, box, 24);
        keep(widgets, label, 24);
        keep(widgets, button, 24);
        textures.push_back(texture);
        if (textures.size() > 8) {
            // Its box went with the oldest widgets already.
            delete textures.front();
            textures.pop_front();
        }
    }

    // A second copy of the panels from their scene file, replaced each time.
    void reloadPanels()
    {
        if (panels)
            deleteTree(panels);
        panels = PEVRANO::load("panels.pve");
        if (panels) {
            panels->setPosition(0.0f, 0.0f, -3.0f);
            panels->link(scene);
        }
    }

    void replaceEmitter()
    {
        if (sparks)
            deleteTree(sparks);
        sparks = new PVEMITTER();
        sparks->load(PEVRANO_EFFECTS_DIR "/sparks.xml");
        sparks->setPosition(-2.0f, 0.0f, 2.0f);
        sparks->link(scene);
    }

    static void keep(std::deque<PVNODE*>& queue, PVNODE* node, size_t size)
    {
        queue.push_back(node);
        if (queue.size() > size) {
            deleteTree(queue.front());
            queue.pop_front();
        }
    }

    PVNODE* scene;
    PVNODE* interfaceRoot;
    std::deque<PVNODE*> tiles;
    std::deque<PVNODE*> widgets;
    std::deque<PVTEXTURE*> textures;
    PVNODE* panels = nullptr;
    PVEMITTER* sparks = nullptr;
};

int positiveArgument(int argc, char** argv, int index, int fallback)
{
    const int value = argc > index ? std::atoi(argv[index]) : fallback;
    return value > 0 ? value : fallback;
}

}  // namespace

int main(int argc, char** argv)
{
    const int frames = positiveArgument(argc, argv, 1, 10000);
    const int every = positiveArgument(argc, argv, 2, 1000);
    kvfSetConsoleEcho(false);
    PVSETTINGS settings;
    settings.setWindowX(640);
    settings.setWindowY(480);
    if (!PEVRANO::init(&settings)) {
        std::fprintf(stderr, "the engine did not start; see pevrano_log.txt\n");
        return EXIT_FAILURE;
    }
    PVOPENGL::setBackgroundColor(0.25f, 0.45f, 0.75f, 1.0f);
    DemoWorld world;
    world.build();
    DemoInterface interface;
    if (!interface.build()) {
        std::fprintf(stderr, "the interface file did not load; see pevrano_log.txt\n");
        PEVRANO::free();
        return EXIT_FAILURE;
    }
    PEVRANO::setPVEPath(PEVRANO_DEMO_DATA "/");
    PVTEXTURE::setPath(PEVRANO_DEMO_DATA "/");
    Churn churn(world.getScene(), interface.getRoot());

    const auto start = std::chrono::steady_clock::now();
    for (int frame = 1; frame <= frames; ++frame) {
        churn.step(frame);
        PEVRANO::clear(true, true, false);
        world.advance(1.0f / 30.0f, interface.getAnimationSpeed());
        world.draw();
        interface.showPicked(world.pick(320, 250));
        interface.draw(33);
        PEVRANO::swap();
        if (frame % every == 0) {
            std::printf("frame %6d: resident %7ld kB, %u nodes, %u textures\n", frame, residentKilobytes(),
                        PVNODE::getNumberOfNodes(), PVTEXTURE::getNumberOfTextures());
            std::fflush(stdout);
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    PEVRANO::free();
    std::printf("%d frames in %.1f s (%.1f frames per second)\n", frames, seconds, frames / seconds);
    return EXIT_SUCCESS;
}
