// Fonts on arbitrary bytes: the kerning file reader on the bytes as a file,
// then the escape-aware width and word wrap on the same bytes as text, with
// the kerning just read.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "gui/pvfont.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const char* path = "fuzz-kerning.txt";
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    PVFONT font;
    font.setCharSizeX(size > 0 ? data[0] % 32 : 16);
    font.loadKerning(path);

    std::vector<char> text(data, data + size);
    text.push_back('\0');
    std::vector<char> wrapped(2 * size + 1);
    font.stringLength(text.data());
    font.format(text.data(), wrapped.data(), size > 1 ? data[1] : 0, 0);
    return 0;
}
