// The animation loader on arbitrary file contents: load, then interpolate the
// whole range, pose a small skeleton and save what was loaded.
#include <cstdint>
#include <cstdio>

#include "assets/pvanim.h"
#include "scene/pvnode.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    char path[] = "fuzz-input.pva";
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    PVANIM anim;
    if (!anim.load(path))
        return 0;
    if (anim.getNumberOfFrames() > 0) {
        anim.createKeyframes(0, anim.getNumberOfFrames());
        PVNODE root;
        PVNODE bone;
        if (anim.getNumberOfBones() > 0)
            bone.setName(anim.getBoneName(0));
        bone.link(&root);
        anim.setTranslating(true);
        anim.apply(anim.getNumberOfFrames() - 1, &root);
        bone.unlink();
    }
    char output[] = "fuzz-output.pva";
    anim.save(output);
    return 0;
}
