/// \file
/// The engine's entry point: start-up and shut-down of every engine class, the
/// frame (clear, 3D pass, picking, 2D pass, swap), the frame timer and stamp,
/// the video-memory budget, the skybox and the post-effect switches.
#ifndef PEVRANO_CORE_PEVRANO_H
#define PEVRANO_CORE_PEVRANO_H

/// Size of the scene-file folder prefix, terminator included.
#define PEVRANO_PATH_SIZE 256

#include <cstddef>

#include "core/pvevent.h"
#include "core/pvframestate.h"
#include "core/pvversion.h"

class PVSETTINGS;
class PVNODE;
class PVCAMERA;
class KVFREADER;

/// The engine: start-up and shut-down, the frame, events, scene and
/// interface files, effect switches. Only static members; nodes, textures
/// and other objects created through the engine are deleted by free.
class PEVRANO {
public:
    /// Start-up; a null settings record means the default configuration.
    static bool init(PVSETTINGS* settings);
    /// Shut-down; false (and no log line) if the engine was not active.
    static bool free();
    /// True between a successful init and free.
    static bool isActive() { return active; }

    /// The frame: clear, begin3D, passes, end3D, [select], begin2D, passes, end2D, swap.
    ///@{
    static bool clear(bool color, bool depth, bool stencil);
    static bool begin3D(PVCAMERA* camera);
    static bool end3D(bool);
    static bool begin2D();
    static bool end2D();
    static bool swap();
    ///@}
    /// Colour code of the selectable object drawn under a window point (y downwards).
    static unsigned int select(int x, int y);
    /// The window's caption (the start-up leaves it empty); nothing changes
    /// off-screen, where there is no window. False for a null text.
    static bool setCaption(const char* text);
    /// Writes the frame drawn so far (the back buffer) as an RGB PNG file, top
    /// row first: call it before swap, after which the back buffer holds
    /// nothing reliable. False, with a log line, when the file cannot be
    /// written or the engine is not started.
    static bool screenshot(const char* pngFile);

    /// Events, from the window (with Unicode translation) or pushed. pollEvent
    /// gives the next one, false when none is left; it hands every pointer
    /// and key event to the interface drawn in the last 2D pass as it comes,
    /// and a resize event resizes the viewport and the next 2D projection.
    /// Poll before the frame's 3D pass. pushEvent queues an event as if it came
    /// from the window; false when the queue is full.
    ///@{
    static bool pollEvent(PVEVENT* event);
    static bool pushEvent(const PVEVENT* event);
    ///@}
    /// The state the events polled so far leave: a key (its SDL 1.2 symbol
    /// value) held down; the pointer and its buttons (bit 0 left, bit 1
    /// middle, bit 2 right); null outputs are skipped.
    ///@{
    static bool isKeyDown(int key);
    static void getPointer(int* x, int* y, int* buttons);
    ///@}

    /// Adjourns the frame timer, at most once per frame.
    static void updateTimer();
    /// Frames per second, the frame's time factor (seconds elapsed, at most a
    /// quarter of a second) and the frame stamp, as the last frame left them.
    ///@{
    static float getFPS() { return PVFRAMESTATE::getFPS(); }
    static float getFPSfactor() { return PVFRAMESTATE::getFPSfactor(); }
    static long getTimeStamp() { return PVFRAMESTATE::getTimeStamp(); }
    ///@}

    /// Video-memory budget; the counters wrap, they are never checked.
    ///@{
    static unsigned int getVideoMemory() { return PVFRAMESTATE::getVideoMemory(); }
    static unsigned int getUsedVideoMemory() { return PVFRAMESTATE::getUsedVideoMemory(); }
    static unsigned int getFreeVideoMemory() { return PVFRAMESTATE::getFreeVideoMemory(); }
    static unsigned int pushVideoMemory(unsigned int bytes) { return PVFRAMESTATE::pushVideoMemory(bytes); }
    static unsigned int popVideoMemory(unsigned int bytes) { return PVFRAMESTATE::popVideoMemory(bytes); }
    ///@}

    /// Folder prefix of scene files; callers keep paths below 256 characters.
    ///@{
    static void setPVEPath(const char* path);
    static char* getPVEPath() { return pvePath; }
    ///@}
    /// Scene files: the root of the tree read from the file (the PVE path
    /// prefix followed by fileName), or null.
    static PVNODE* load(const char* fileName);
    /// The same from a file already in memory; fileName is only logged.
    static PVNODE* loadBuffer(const char* buffer, size_t size, const char* fileName);
    /// Reads one node record and its children below parent.
    static PVNODE* recursiveLoad(KVFREADER& reader, PVNODE* parent, unsigned int depth);
    /// Binds the bones of every skinned mesh under node to nodes under root.
    static bool recursiveInitBones(PVNODE* root, PVNODE* node);

    /// Interface description files: a new node holding the widget tree of the
    /// XML file (the name is used as given), or null.
    static PVNODE* loadXML(const char* file);
    /// Builds the widget, font or properties of one XML node under parent;
    /// always returns null.
    static PVNODE* recursiveLoadXML(PVNODE* parent, void* xmlNode);
    /// The node end3D draws first, turning with the camera, null for
    /// none; not owned (nodes belong to the engine).
    ///@{
    static void setSkybox(PVNODE* node) { skybox = node; }
    static PVNODE* getSkybox() { return skybox; }
    ///@}

    /// Effect switches. Bloom, depth of field and shadowing only take effect
    /// when the shader class reports the capability.
    ///@{
    static void wireframeOn() { wireframe = true; }
    static void wireframeOff() { wireframe = false; }
    static bool isWireframed() { return wireframe; }
    static void shadowingOn();
    static void shadowingOff() { PVFRAMESTATE::shadowing = false; }
    static bool isShadowed() { return PVFRAMESTATE::isShadowed(); }
    static void bloomingOn() { blooming = true; }
    static void bloomingOff() { blooming = false; }
    static bool isBlooming() { return blooming; }
    static void setBloomingIntensity(float value) { bloomingIntensity = value; }
    static float getBloomingIntensity() { return bloomingIntensity; }
    static void HDROn() { HDR = true; }
    static void HDROff() { HDR = false; }
    static bool isHDR() { return HDR; }
    static void setHDRExposure(float value) { HDRExposure = value; }
    static float getHDRExposure() { return HDRExposure; }
    static void DOFOn() { DOF = true; }
    static void DOFOff() { DOF = false; }
    static void setDOFFocus(float value) { DOFFocus = value; }
    static void setDOFRange(float value) { DOFRange = value; }
    static float getDOFFocus() { return DOFFocus; }
    static float getDOFRange() { return DOFRange; }
    ///@}
    /// Sets a flag nothing reads: no shadow pass runs in this profile.
    static void skipShadowsGeneration() { skipShadows = true; }
    /// Does nothing: videos advance through PVVIDEO::update.
    static void updateVideo() {}

private:
    // Test suites reach the private helpers here.
    friend struct PVTESTACCESS;

    static bool initClasses(PVSETTINGS* settings);
    static bool failStartUp(const char* message, int succeeded);
    static void releaseStartUpSteps(int succeeded);
    static void initVideoMemory();
    static void adjournTimerOncePerFrame();
    static void renderSkybox();
    static void renderPassedElements();
    static void renderPassedElementsForSelection();
    static unsigned int readPixelCode(int x, int y);
    static bool readHeader(KVFREADER& reader, const char* fileName);

    static bool active;
    static bool wireframe;
    static bool blooming;
    static float bloomingIntensity;
    static bool HDR;
    static float HDRExposure;
    static float HDRCurrentLuminance;
    static bool DOF;
    static float DOFFocus;
    static float DOFRange;
    static bool skipShadows;
    static bool renderingOnFbo;
    static char pvePath[PEVRANO_PATH_SIZE];
    static PVNODE* skybox;
    static bool timerAdjourned;
    /// Per scene file: the obsolete layout flag and the nodes read.
    ///@{
    static bool obsoleteFile;
    static unsigned int loadedNodes;
    ///@}
};

#endif
