// TGA files built byte by byte for the texture tests: the 18-byte header
// (image-ID length, colour-map type, image type, colour-map description, origin,
// size, depth, descriptor) followed by the body as given.
#ifndef PEVRANO_TESTS_ASSETS_TGAFILE_H
#define PEVRANO_TESTS_ASSETS_TGAFILE_H

#include <initializer_list>
#include <string>
#include <vector>

namespace pvtest {

using Bytes = std::vector<unsigned char>;

enum TgaType : unsigned char { TGA_RAW = 2, TGA_RLE = 10 };

inline std::string tgaFile(unsigned char type, unsigned width, unsigned height, unsigned char depth,
                           unsigned char descriptor, const Bytes& body, unsigned char idLength = 0)
{
    const unsigned char header[18] = {idLength, 0, type, 0, 0, 0, 0, 0,     0,
                                      0,        0, 0,    0, 0, 0, 0, depth, descriptor};
    std::string file(reinterpret_cast<const char*>(header), sizeof(header));
    for (int i = 0; i < 2; i++) {
        file[size_t(12 + i)] = char((width >> (8 * i)) & 255);
        file[size_t(14 + i)] = char((height >> (8 * i)) & 255);
    }
    return file.append(body.begin(), body.end());
}

// count copies of pixel, one after the other.
inline Bytes repeated(const Bytes& pixel, unsigned count)
{
    Bytes all;
    for (unsigned i = 0; i < count; i++)
        all.insert(all.end(), pixel.begin(), pixel.end());
    return all;
}

// The parts, one after the other.
inline Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

}  // namespace pvtest

#endif
