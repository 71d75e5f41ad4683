// The tool tests' helpers, beside the test kit's fixtures: a command-line
// tool of the engine run as a user would, in a folder of its own (a tool
// linked with the engine writes its log in its working folder); the sample
// models, their pictures and their scenes.
#ifndef PEVRANO_TESTS_TOOLS_RUNTOOL_H
#define PEVRANO_TESTS_TOOLS_RUNTOOL_H

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

#include <stb/stb_image.h>

#include <gtest/gtest.h>

#include <pevrano.h>

#include "modelconverter.h"
#include "support/glfixture.h"

namespace pvtest {

struct ToolRun {
    int status = -1;  // exit status, -1 when the tool did not exit normally
    std::string output, error;
};

// Runs tool with arguments from scratch/tool-run; its standard output and
// error are kept.
inline ToolRun runTool(const std::string& tool, const std::string& arguments, const ScratchDir& scratch)
{
    const std::string folder = scratch.file("tool-run");
    mkdir(folder.c_str(), 0755);
    const int status =
        std::system(("cd " + folder + " && " + tool + " " + arguments + " >out.txt 2>err.txt").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(folder + "/out.txt"),
            readFile(folder + "/err.txt")};
}

// The sample models the tests convert.
const std::string models = PEVRANO_MODELS;

// Converts a sample model into scratch/pve, options before the paths.
inline ToolRun convertModel(const std::string& model, const std::string& pve, const ScratchDir& scratch,
                            const std::string& options = "")
{
    return runTool(PEVRANO_CONVERT, options + " " + models + model + " " + scratch.file(pve), scratch);
}

// Converts a sample model into scratch/pve and loads it; a failed conversion
// fails the test with the converter's errors.
inline PVNODE* convertAndLoad(const std::string& model, const std::string& pve, const ScratchDir& scratch,
                              const std::string& options = "")
{
    const ToolRun run = convertModel(model, pve, scratch, options);
    EXPECT_EQ(run.status, 0) << run.error;
    return PEVRANO::load(scratch.file(pve).c_str());
}

// The index-th of the 16.16 x, y, z triples at values.
inline aiVector3D vectorAt(const GLfixed* values, unsigned int index)
{
    return aiVector3D(values[3 * index] / 65536.0f, values[3 * index + 1] / 65536.0f,
                      values[3 * index + 2] / 65536.0f);
}

// A picture file decoded to 8-bit RGB, top row first; empty when unreadable.
struct Picture {
    int width = 0, height = 0;
    std::vector<unsigned char> rgb;
};

inline Picture readPicture(const std::string& path)
{
    Picture picture;
    int channels;
    unsigned char* pixels = stbi_load(path.c_str(), &picture.width, &picture.height, &channels, 3);
    if (pixels)
        picture.rgb.assign(pixels, pixels + size_t(picture.width) * picture.height * 3);
    stbi_image_free(pixels);
    return picture;
}

// Assimp's scene of a source model, as the converter imports it; null (and a
// test failure) when it does not import.
inline const aiScene* importSource(Assimp::Importer& importer, const std::string& path)
{
    std::string error;
    const aiScene* scene = ModelConverter::importModel(importer, path, error);
    EXPECT_NE(scene, nullptr) << path << ": " << error;
    return scene;
}

}  // namespace pvtest

#endif
