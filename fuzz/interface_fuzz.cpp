// Interface files on arbitrary bytes: the engine is started off-screen once,
// then each input is written as an XML file, loaded, and everything it built
// (widgets, fonts, textures) is released again.
#include <cstdint>
#include <cstdio>

#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "foundation/kvflog.h"
#include "gui/pvfont.h"
#include "scene/pvnode.h"

namespace {

bool startEngine()
{
    kvfSetConsoleEcho(false);
    const bool started = PEVRANO::init(nullptr);
    // Millions of inputs would fill the disk with their log lines.
    kvfCloseLog();
    return started;
}

void deleteTree(PVNODE* node)
{
    for (PVNODE* child; (child = node->getChild(0)) != nullptr;) {
        child->unlink();
        deleteTree(child);
    }
    delete node;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool started = startEngine();
    if (!started)
        return 0;
    const char* path = "fuzz-interface.xml";
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    // A font the inputs can name before they define their own.
    PVFONT* font = new PVFONT();
    font->setName("sans");
    PVNODE* root = PEVRANO::loadXML(path);
    if (root)
        deleteTree(root);
    PVFONT::cleanUp();
    PVTEXTURE::cleanUp();
    return 0;
}
