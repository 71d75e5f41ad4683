// Expected log lines of the display tests, some literal and some matched by
// a pattern (what depends on the platform: GL strings, EGL version,
// the colour bits of the surface chosen), and the engine's start/stop lines.
#ifndef PEVRANO_TESTS_CORE_DISPLAYLOG_H
#define PEVRANO_TESTS_CORE_DISPLAYLOG_H

#include <cstdlib>
#include <string>
#include <vector>

#include "support/logmatch.h"

namespace pvtest {

// True when the tests run against an X server (SDL's X11 window path).
inline bool onX11()
{
    const char* display = std::getenv("DISPLAY");
    return display && *display;
}

inline const char* engineName() { return "Pevrano 3D Graphics Engine for Axim v1.6.6a (debug)"; }

// "Init settings..." up to the paths, for the default configuration.
inline std::vector<LogLine> defaultSettingsRequestLines()
{
    return {exact("   Init settings..."),
            exact("      Configuration to set:"),
            exact("          X: 240, Y: 320"),
            exact("          depth: 16, zeta: 16, stencil: 0"),
            exact(std::string("          title: '") + engineName() + "'"),
            exact("          fullscreen: 1"),
            exact("          resizable : 0"),
            exact("          landscape : 0"),
            exact("          shaders: 0"),
            exact("          max elems: 0"),
            exact("          audio: c: 16, b: 32, e: 128"),
            exact("          shadow map size: 1024"),
            exact("          FBO map sizes  : 1024, 768"),
            exact("          Water map size : 256"),
            exact("          PVE path    : ''"),
            exact("          PVA path    : ''"),
            exact("          Texture path: ''"),
            exact("          Shader path : ''"),
            exact("          Font path   : ''")};
}

// From the EGL version to "OpenGL initialized" for the default configuration:
// the first EGL configuration is used, 5-6-5 off-screen; an X server's first
// one may be deeper.
inline std::vector<LogLine> defaultDisplayLines()
{
    const LogLine depth = onX11() ? like("          depth: (16|24|32), zeta: (16|24|32), stencil: [0-9]+")
                                  : exact("          depth: 16, zeta: 16, stencil: 0");
    return {like("      OpenGL ES [0-9]+\\.[0-9]+"),
            like("      Number of available configs: [1-9][0-9]*"),
            exact("      Configuration used:"),
            exact("          SizeX: 240, SizeY: 320"),
            depth,
            exact(std::string("          title: '") + engineName() + "'"),
            exact("          fullscreen: 1"),
            exact("          landscape : 0"),
            exact("          shaders: 0"),
            exact("          audio: c: 0, b: 0, e: 0"),
            exact("   Settings initialized"),
            exact("   Init OpenGL..."),
            like("      Vendor    : .+"),
            like("      Renderer  : .+"),
            like("      Version   : OpenGL ES-C[ML] 1\\.[01].*"),
            startingWith("      Extensions: GL_"),
            exact(""),
            exact("   OpenGL initialized")};
}

inline std::vector<LogLine> engineReadyLines()
{
    return {exact("   1024 elements allocated"), exact("   VRam detected: 16384 KB"),
            exact("   Initialization complete"), exact("")};
}

inline std::vector<LogLine> engineStartLines()
{
    return {exact("   SDL initialized"), exact("   Initialize Pevrano"), exact("")};
}

inline std::vector<LogLine> engineShutdownLines()
{
    return {exact("   Pevrano is shutting down..."),
            exact("   35 shader(s) released"),
            exact("   Release OpenGL..."),
            exact("   OpenGL released"),
            exact("   Release settings..."),
            exact("   Settings released"),
            exact("   SDL released"),
            exact("   Shutdown complete"),
            exact("")};
}

// The whole log of a successful start-up: "Standard configuration used" when
// no settings were given, then the request block, the display and the rest.
inline std::vector<LogLine> initLines(bool standard = true,
                                      const std::vector<LogLine>& request = defaultSettingsRequestLines())
{
    std::vector<LogLine> lines = engineStartLines();
    if (standard)
        lines.push_back(exact("   [!] Standard configuration used"));
    append(lines, request);
    append(lines, defaultDisplayLines());
    append(lines, engineReadyLines());
    return lines;
}

// The lines up to and including the first one expected to read last.
inline std::vector<LogLine> upTo(std::vector<LogLine> lines, const std::string& last)
{
    for (size_t i = 0; i < lines.size(); ++i)
        if (lines[i].text == last) {
            lines.resize(i + 1);
            break;
        }
    return lines;
}

}  // namespace pvtest

#endif
