#include "textureexport.h"

#include <assimp/material.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <stb/stb_image.h>
#include <stb/stb_image_resize.h>
#include <stb/stb_image_write.h>

TextureExport::TextureExport(const aiScene* scene, const std::string& modelFolder,
                             const std::string& outputFolder, const std::string& prefix, int largestSide) :
    scene(scene),
    modelFolder(modelFolder),
    outputFolder(outputFolder),
    prefix(prefix),
    largestSide(largestSide)
{
}

std::string TextureExport::convert(const aiMaterial* material)
{
    aiString path;
    const aiTextureType types[] = {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR};
    for (aiTextureType type : types)
        if (material->GetTexture(type, 0, &path) == AI_SUCCESS && path.length > 0)
            return convertReference(path.C_Str());
    return "[none]";
}

std::string TextureExport::convertReference(const std::string& reference)
{
    auto done = converted.find(reference);
    if (done != converted.end())
        return done->second;

    int width = 0, height = 0, channels = 0;
    stbi_uc* pixels = nullptr;
    const aiTexture* embedded = scene->GetEmbeddedTexture(reference.c_str());
    if (embedded && embedded->mHeight == 0) {
        pixels = stbi_load_from_memory(reinterpret_cast<const stbi_uc*>(embedded->pcData),
                                       static_cast<int>(embedded->mWidth), &width, &height, &channels, 0);
    } else if (embedded) {
        // Raw texels, BGRA.
        width = static_cast<int>(embedded->mWidth);
        height = static_cast<int>(embedded->mHeight);
        channels = 4;
        pixels = static_cast<stbi_uc*>(malloc(size_t(width) * height * 4));
        for (size_t i = 0; pixels && i < size_t(width) * height; i++) {
            const aiTexel& texel = embedded->pcData[i];
            stbi_uc* pixel = pixels + i * 4;
            pixel[0] = texel.r;
            pixel[1] = texel.g;
            pixel[2] = texel.b;
            pixel[3] = texel.a;
        }
    } else {
        std::string file = reference;
        std::replace(file.begin(), file.end(), '\\', '/');
        if (file.empty() || file[0] != '/')
            file = modelFolder + "/" + file;
        pixels = stbi_load(file.c_str(), &width, &height, &channels, 0);
    }
    std::string name = "[none]";
    if (!pixels) {
        std::fprintf(stderr,
                     "pevrano-convert: warning: texture '%s' cannot be read, material left untextured\n",
                     reference.c_str());
    } else {
        const std::string candidate = prefix + "_" + std::to_string(converted.size()) + ".tga";
        if (writeTga(pixels, width, height, channels, candidate))
            name = candidate;
        stbi_image_free(pixels);
    }
    converted[reference] = name;
    return name;
}

// Shrinks to fit the largest side (keeping the proportions), drops grey
// formats to RGB and writes an uncompressed TGA.
bool TextureExport::writeTga(const unsigned char* pixels, int width, int height, int channels,
                             const std::string& name)
{
    const int outChannels = (channels == 2 || channels == 4) ? 4 : 3;
    std::vector<unsigned char> expanded(size_t(width) * height * outChannels);
    for (size_t i = 0; i < size_t(width) * height; i++)
        for (int c = 0; c < outChannels; c++) {
            const bool alpha = c == 3;
            const int source = channels <= 2 ? (alpha ? 1 : 0) : (alpha ? 3 : c);
            expanded[i * outChannels + c] = pixels[i * channels + source];
        }
    const double scale = std::min(1.0, double(largestSide) / std::max(width, height));
    const int outWidth = std::max(1, int(width * scale));
    const int outHeight = std::max(1, int(height * scale));
    std::vector<unsigned char> resized(size_t(outWidth) * outHeight * outChannels);
    if (outWidth == width && outHeight == height)
        resized = expanded;
    else if (!stbir_resize_uint8(expanded.data(), width, height, 0, resized.data(), outWidth, outHeight, 0,
                                 outChannels))
        return false;
    stbi_write_tga_with_rle = 0;
    // Picture rows run top to bottom; the file is written bottom row first.
    stbi_flip_vertically_on_write(0);
    const std::string path = outputFolder + "/" + name;
    if (!stbi_write_tga(path.c_str(), outWidth, outHeight, outChannels, resized.data())) {
        std::fprintf(stderr, "pevrano-convert: warning: cannot write %s\n", path.c_str());
        return false;
    }
    files.push_back(path);
    return true;
}
