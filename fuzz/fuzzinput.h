// Fuzz targets whose code under test reads files get their input as a file.
#ifndef PEVRANO_FUZZ_FUZZINPUT_H
#define PEVRANO_FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Writes the input to path in the working directory; false if it cannot.
inline bool writeFuzzInput(const char* path, const uint8_t* data, size_t size)
{
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr)
        return false;
    std::fwrite(data, 1, size, file);
    return std::fclose(file) == 0;
}

#endif
