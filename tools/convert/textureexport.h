// Turns the pictures a model refers to (files beside it or embedded in it,
// any format stb_image decodes) into TGA files the engine reads: uncompressed,
// at most 256 × 256, RGB or RGBA. Each source is converted once.
#ifndef PEVRANO_TOOLS_CONVERT_TEXTUREEXPORT_H
#define PEVRANO_TOOLS_CONVERT_TEXTUREEXPORT_H

#include <assimp/scene.h>

#include <map>
#include <string>
#include <vector>

class TextureExport {
public:
    // Written files are named prefix + "_" + number + ".tga" in outputFolder;
    // relative references are looked up in modelFolder.
    TextureExport(const aiScene* scene, const std::string& modelFolder, const std::string& outputFolder,
                  const std::string& prefix, int largestSide);

    // File name (without folder) of the converted diffuse texture of the
    // material, or "[none]" when it has none or it cannot be read (a
    // warning is printed then).
    std::string convert(const aiMaterial* material);
    // Paths of the files written so far.
    const std::vector<std::string>& writtenFiles() const { return files; }

private:
    std::string convertReference(const std::string& reference);
    bool writeTga(const unsigned char* pixels, int width, int height, int channels, const std::string& name);

    const aiScene* scene;
    std::string modelFolder;
    std::string outputFolder;
    std::string prefix;
    int largestSide;
    std::map<std::string, std::string> converted;
    std::vector<std::string> files;
};

#endif
