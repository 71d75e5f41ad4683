// The scene-file loader on arbitrary bytes: header, materials table and node
// tree read from memory; whatever loads is released again.
#include <cstddef>
#include <cstdint>

#include "assets/pvmaterial.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "scene/pvnode.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    PEVRANO::loadBuffer(reinterpret_cast<const char*>(data), size, "fuzz.pve");
    PVNODE::cleanUp();
    PVMATERIAL::cleanUp();
    PVTEXTURE::cleanUp();
    PVSHADER::cleanUp();
    return 0;
}
