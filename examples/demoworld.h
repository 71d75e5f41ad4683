// The demo's 3D world: a checkered floor, three textured panels loaded from a
// scene file, a directional and a spot light, particle effects, an animated
// skinned character and a camera that swings slowly around them.
#ifndef PEVRANO_EXAMPLES_DEMOWORLD_H
#define PEVRANO_EXAMPLES_DEMOWORLD_H

#include <pevrano.h>

class DemoWorld {
public:
    // Builds everything; the character is optional (the log tells why it is
    // missing). The nodes belong to the engine: PEVRANO::free deletes them.
    void build();
    bool hasCharacter() const { return run != nullptr; }
    PVNODE* getScene() const { return scene; }

    // Moves the clocks on: the animation by seconds times speed, the camera
    // by seconds.
    void advance(float seconds, float animationSpeed);
    // The 3D pass of a frame.
    void draw();
    // The name of the object drawn under a window point (y downwards) in the
    // last 3D pass, or null over the background. Call it between draw and
    // the 2D pass.
    const char* pick(int x, int y);

private:
    void buildFloor();
    void loadPanels();
    void addLights();
    void addEffects();
    void loadCharacter();

    PVNODE* scene = nullptr;
    PVCAMERA* camera = nullptr;
    PVANIM* run = nullptr;
    double animationClock = 0.0;
    double cameraClock = 0.0;
};

#endif
