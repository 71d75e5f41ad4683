// Shows a scene file: frames the model with a camera orbiting its centre,
// lights it, plays an optional animation, and either runs interactively in a
// window or renders a number of frames off-screen into a PNG screenshot.
#ifndef PEVRANO_TOOLS_VIEW_MODELVIEWER_H
#define PEVRANO_TOOLS_VIEW_MODELVIEWER_H

#include <string>

#include <pevrano.h>

struct ViewOptions {
    std::string model;
    std::string animation;  // empty: none
    std::string screenshot;  // empty: interactive when a display is open
    int frames = 30;  // rendered before the screenshot
    int width = 640;
    int height = 480;
};

class ModelViewer {
public:
    explicit ModelViewer(const ViewOptions& options);

    // Loads the model (and animation) into the started engine; false with
    // error set when either cannot be read.
    bool load(std::string& error);
    // Renders the frames and saves the screenshot; false when it cannot be written.
    bool renderToFile(std::string& error);
    // Window loop: drag to orbit, wheel or +/- to zoom, space to pause, Esc to quit.
    void runInteractive();

    // Centre and radius of the model as drawn, scaled by getScale.
    K3MVECTOR3D getCentre() const { return centre; }
    float getRadius() const { return radius; }

private:
    void frameModel();
    float framingDistance() const;
    void fitInFixedRange();
    void zoom(float factor);
    void placeCamera();
    void drawFrame();
    void advanceAnimation();
    bool saveScreenshot(const std::string& path) const;

    ViewOptions options;
    PVNODE* model = nullptr;
    PVANIM* animation = nullptr;
    PVCAMERA* camera = nullptr;
    PVNODE* lights = nullptr;
    K3MVECTOR3D centre;
    float radius = 1.0f;
    float scale = 1.0f;  // of the model as drawn
    K3MMATRIX scaling;  // by scale, applied before the model is drawn
    float yaw = 30.0f;
    float pitch = 20.0f;
    float distance = 3.0f;
    unsigned int frame = 0;
    bool playing = true;
};

#endif
