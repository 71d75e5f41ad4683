// pevrano-view: shows a PVE scene file, optionally animated by a PVA file,
// in a window (with an X display) or off-screen into a PNG screenshot.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "engineconsole.h"
#include "modelviewer.h"

namespace {

const char usage[] = "usage: pevrano-view [options] <scene.pve>\n"
                     "\n"
                     "With an X display and no --screenshot, opens a window: drag with the left\n"
                     "button to orbit, wheel or +/- to zoom, space to pause or play, Esc to quit.\n"
                     "Otherwise renders off-screen and writes a PNG screenshot.\n"
                     "\n"
                     "options:\n"
                     "  --anim <file.pva>     animation played on the model's bones\n"
                     "  --screenshot <file>   render off-screen and write this PNG (default view.png\n"
                     "                        when there is no display)\n"
                     "  --frames <n>          frames rendered before the screenshot (default 30)\n"
                     "  --size <w>x<h>        window size (default 640x480)\n"
                     "  --help                show this text\n";

bool readCount(const char* text, int& value)
{
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (!*text || *end || number < 1 || number > 100000)
        return false;
    value = static_cast<int>(number);
    return true;
}

bool readSize(const std::string& text, int& width, int& height)
{
    const size_t cross = text.find('x');
    return cross != std::string::npos && readCount(text.substr(0, cross).c_str(), width) &&
           readCount(text.substr(cross + 1).c_str(), height) && width <= 4096 && height <= 4096;
}

// 0 when the options are understood, else the exit status to return.
int parseOptions(int argc, char** argv, ViewOptions& options)
{
    for (int i = 1; i < argc; i++) {
        const std::string argument = argv[i];
        const bool hasValue = i + 1 < argc;
        if (argument == "--help") {
            std::fputs(usage, stdout);
            std::exit(0);
        } else if (argument == "--anim" && hasValue) {
            options.animation = argv[++i];
        } else if (argument == "--screenshot" && hasValue) {
            options.screenshot = argv[++i];
        } else if (argument == "--frames" && hasValue && readCount(argv[i + 1], options.frames)) {
            i++;
        } else if (argument == "--size" && hasValue && readSize(argv[i + 1], options.width, options.height)) {
            i++;
        } else if (argument.compare(0, 2, "--") != 0 && options.model.empty()) {
            options.model = argument;
        } else {
            std::fprintf(stderr, "pevrano-view: bad argument '%s'\n%s", argv[i], usage);
            return 2;
        }
    }
    if (options.model.empty()) {
        std::fputs(usage, stderr);
        return 2;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    // The engine's log stays in its file; the console is for the tool's own messages.
    EngineConsole::silence();
    ViewOptions options;
    if (const int status = parseOptions(argc, argv, options))
        return status;
    PVSETTINGS settings;
    settings.setWindowX(options.width);
    settings.setWindowY(options.height);
    settings.setTitle("pevrano-view");
    if (!PEVRANO::init(&settings)) {
        std::fprintf(stderr, "pevrano-view: the engine did not start; see pevrano_log.txt\n");
        return 1;
    }
    if (options.screenshot.empty() && !PVSETTINGS::getSDLWindow())
        options.screenshot = "view.png";
    ModelViewer viewer(options);
    std::string error;
    bool done = viewer.load(error);
    if (done && !options.screenshot.empty())
        done = viewer.renderToFile(error);
    else if (done)
        viewer.runInteractive();
    PEVRANO::free();
    if (!done) {
        std::fprintf(stderr, "pevrano-view: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
