// Fuzz targets whose code under test reads a file: the input is written to a
// file of the working directory first.
#ifndef PEVRANO_FUZZ_FUZZINPUT_H
#define PEVRANO_FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Creates or truncates path with the input bytes; false when it cannot.
inline bool writeFuzzInput(const char* path, const uint8_t* data, size_t size)
{
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr)
        return false;
    const bool written = std::fwrite(data, 1, size, file) == size;
    return std::fclose(file) == 0 && written;
}

#endif
