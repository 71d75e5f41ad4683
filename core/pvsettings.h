/// \file
/// Display configuration: as an object, the settings an application fills (by
/// setters or from a PEVRANO_* key/value file) and hands to PEVRANO::init; as
/// class-wide state, the configuration in force once the display exists, with
/// the native window and the EGL display, surface and context.
#ifndef PEVRANO_CORE_PVSETTINGS_H
#define PEVRANO_CORE_PVSETTINGS_H

#include <EGL/egl.h>

#include <memory>

/// Size of every string setting, terminator included.
#define PV_SETTINGS_STRING_SIZE 256

class PVDISPLAY;
struct PVEVENT;

/// Display settings handed to PEVRANO::init, and the configuration in force.
class PVSETTINGS {
    friend class PEVRANO;

public:
    /// 240 x 320, 16-bit colour, 16-bit depth, full screen, portrait.
    PVSETTINGS();

    /// Reads a PEVRANO_* configuration file; keys that are missing keep their values.
    bool load(const char* fileName);
    /// True if SDL accepts the video mode these settings describe, the display
    /// can open a window of that size, and no buffer size is negative.
    bool isOk();

    /// Setters of the configuration PEVRANO::init asks for. They cover the
    /// window size in pixels, colour, depth and stencil bits, window flags,
    /// engine pools and the search folders for scene, animation, video,
    /// texture, shader and font files; nothing is checked until isOk or init.
    ///@{
    /// String setters copy only a non-null value shorter than 256 characters.
    void setTitle(const char* value);
    void setWindowX(int value) { windowX = value; }
    void setWindowY(int value) { windowY = value; }
    void setColorDepth(int value) { colorDepth = value; }
    void setZetaDepth(int value) { zetaDepth = value; }
    void setStencilDepth(int value) { stencilDepth = value; }
    void setFullScreen(bool value) { fullScreen = value; }
    void setResizable(bool value) { resizable = value; }
    void setLandscape(bool value) { landscape = value; }
    void setCAVESplashScreen(bool value) { CAVESplashScreen = value; }
    void setAudioChannels(int value) { audioChannels = value; }
    void setAudioBuffers(int value) { audioBuffers = value; }
    void setAudioElements(int value) { audioElements = value; }
    void setRenderingElements(int value) { renderingElements = value; }
    void setParticles(int value) { particles = value; }
    void setShaders(bool value) { useShaders = value; }
    void setShadowMapSize(int value) { shadowMapSize = value; }
    void setFBOSizeX(int value) { FBOSizeX = value; }
    void setFBOSizeY(int value) { FBOSizeY = value; }
    void setWaterSize(int value) { waterSize = value; }
    void setForceFBO(bool value) { forceFBO = value; }
    void setPVEPath(const char* value);
    void setPVAPath(const char* value);
    void setMPGPath(const char* value);
    void setTexturePath(const char* value);
    void setShaderPath(const char* value);
    void setFontPath(const char* value);
    ///@}

    /// Getters of the values the setters or load stored; the strings belong
    /// to this object.
    ///@{
    char* getTitle() { return title; }
    int getWindowX() const { return windowX; }
    int getWindowY() const { return windowY; }
    int getColorDepth() const { return colorDepth; }
    int getZetaDepth() const { return zetaDepth; }
    int getStencilDepth() const { return stencilDepth; }
    bool isFullScreen() const { return fullScreen; }
    bool isResizable() const { return resizable; }
    bool isLandscape() const { return landscape; }
    bool isCAVESplashScreen() const { return CAVESplashScreen; }
    int getAudioChannels() const { return audioChannels; }
    int getAudioBuffers() const { return audioBuffers; }
    int getAudioElements() const { return audioElements; }
    int getRenderingElements() const { return renderingElements; }
    int getParticles() const { return particles; }
    bool getShaders() const { return useShaders; }
    int getShadowMapSize() const { return shadowMapSize; }
    int getFBOSizeX() const { return FBOSizeX; }
    int getFBOSizeY() const { return FBOSizeY; }
    int getWaterSize() const { return waterSize; }
    bool getForceFBO() const { return forceFBO; }
    char* getPVEPath() { return pvePath; }
    char* getPVAPath() { return pvaPath; }
    char* getMPGPath() { return mpgPath; }
    char* getTexturePath() { return texturePath; }
    char* getShaderPath() { return shaderPath; }
    char* getFontPath() { return fontPath; }
    ///@}

    /// The configuration in force (zero, false or null until init succeeds).
    ///@{
    static bool isActive() { return active; }
    static char* getSDLTitle() { return SDLTitle; }
    static int getSDLWindowX() { return SDLWindowX; }
    static int getSDLWindowY() { return SDLWindowY; }
    static int getSDLColorDepth() { return SDLColorDepth; }
    static int getSDLZetaDepth() { return SDLZetaDepth; }
    static int getSDLStencilDepth() { return SDLStencilDepth; }
    static bool isSDLFullScreen() { return SDLFullScreen; }
    static bool isSDLResizable() { return SDLResizable; }
    static bool isSDLLandscape() { return SDLLandscape; }
    static bool getSDLShaders() { return SDLUseShaders; }
    static int getSDLShadowMapSize() { return SDLShadowMapSize; }
    static int getSDLFBOSizeX() { return SDLFBOSizeX; }
    static int getSDLFBOSizeY() { return SDLFBOSizeY; }
    static int getSDLWaterSize() { return SDLWaterSize; }
    static bool getSDLForceFBO() { return SDLForceFBO; }
    /// The native window of the display in use, 0 without one.
    static EGLNativeWindowType getSDLWindow();
    /// Who receives the scene-file folder when the settings start: the class
    /// that loads scene files registers its path setter here.
    static void setPVEPathReceiver(void (*receiver)(const char* path)) { pvePathReceiver = receiver; }
    static int getKVAAudioChannels() { return KVAAudioChannels; }
    static int getKVAAudioBuffers() { return KVAAudioBuffers; }
    static int getKVAAudioElements() { return KVAAudioElements; }
    /// Switches shader use off or on in the configuration in force.
    static void forceShadersOff() { SDLUseShaders = false; }
    static void forceShadersOn() { SDLUseShaders = true; }
    ///@}
    /// Sets the window size in force and the GL viewport; the old size stays if GL refuses.
    static bool resize(int x, int y, int width, int height);

private:
    /// Creates the window and the GL context from this object's configuration.
    bool init();
    /// Releases the EGL context, surface and display.
    static bool free();
    /// Presents the frame drawn; false while no display is open.
    static bool swapBuffers();
    /// The next event from the display in use; false when none is waiting.
    static bool readDisplayEvent(PVEVENT* event);

    void logRequestedConfiguration();
    void handPathsOn();
    bool openWindow();
    static void readBackBitDepths();
    void logConfigurationInUse();

    char title[PV_SETTINGS_STRING_SIZE];
    int windowX;
    int windowY;
    int colorDepth;
    int zetaDepth;
    int stencilDepth;
    bool fullScreen;
    bool resizable;
    bool landscape;
    bool CAVESplashScreen;
    int audioChannels;
    int audioBuffers;
    int audioElements;
    int renderingElements;
    bool useShaders;
    int shadowMapSize;
    int FBOSizeX;
    int FBOSizeY;
    int waterSize;
    bool forceFBO;
    char pvePath[PV_SETTINGS_STRING_SIZE];
    char pvaPath[PV_SETTINGS_STRING_SIZE];
    char mpgPath[PV_SETTINGS_STRING_SIZE];
    char texturePath[PV_SETTINGS_STRING_SIZE];
    char shaderPath[PV_SETTINGS_STRING_SIZE];
    char fontPath[PV_SETTINGS_STRING_SIZE];
    /// Particles in the emitters' shared pool; 0 takes the emitter default.
    int particles = 0;

    static bool active;
    static char SDLTitle[PV_SETTINGS_STRING_SIZE];
    static void (*pvePathReceiver)(const char* path);
    static int SDLWindowX;
    static int SDLWindowY;
    static int SDLColorDepth;
    static int SDLZetaDepth;
    static int SDLStencilDepth;
    static bool SDLFullScreen;
    static bool SDLResizable;
    static bool SDLLandscape;
    static bool SDLUseShaders;
    /// Never set by init: these report 0 / false on this target.
    static int SDLRenderingElements;
    static int SDLShadowMapSize;
    static int SDLFBOSizeX;
    static int SDLFBOSizeY;
    static int SDLWaterSize;
    static bool SDLForceFBO;
    static int KVAAudioChannels;
    static int KVAAudioBuffers;
    static int KVAAudioElements;

    /// The back-end in use: it holds the native window and the EGL display,
    /// surface and context. Kept closed after free, until the next init.
    static std::unique_ptr<PVDISPLAY> display;
};

#endif
