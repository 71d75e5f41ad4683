// Converts a model Assimp reads into one scene file and one animation file
// per animation. Meshes are triangulated and split by Assimp to the scene
// file's limits (65535 vertices and faces, 100 bones, 4 influences per
// vertex). Skinned meshes hang below an added root named "HumanoidRoot",
// their vertices at the skin's bind pose, and the bones carry that pose, so
// that the engine's skinning relative to that root reproduces the model.
#ifndef PEVRANO_TOOLS_CONVERT_MODELCONVERTER_H
#define PEVRANO_TOOLS_CONVERT_MODELCONVERTER_H

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <string>
#include <vector>

#include "pvefile.h"
#include "skeletonpose.h"

class PVANIM;

struct ConvertOptions {
    std::string input;
    std::string output;  // the scene file; the others are written beside it
    int framesPerSecond = 30;  // of the animation files
    int textureSize = 256;  // largest side of a converted texture
    float scale = 1.0f;  // of the whole model
    float fitRadius = 0.0f;  // when above 0: the farthest vertex's distance from the origin
    int memoryLimit = 4096;  // megabytes the converter may take
};

class ModelConverter {
public:
    // Reads a model with the post-processing the conversion relies on;
    // null (and Assimp's message in error) when it cannot be read.
    static const aiScene* importModel(Assimp::Importer& importer, const std::string& path,
                                      std::string& error);
    // Name of the animation file written for animation index.
    static std::string animationFileName(const std::string& output, const aiAnimation& animation,
                                         unsigned int index);

    ModelConverter(const aiScene* scene, const ConvertOptions& options);
    ~ModelConverter();
    ModelConverter(const ModelConverter&) = delete;
    ModelConverter& operator=(const ModelConverter&) = delete;

    // Checks everything first and writes nothing on failure (error says why).
    bool convert(std::string& error);
    const std::vector<std::string>& writtenFiles() const { return written; }
    // What the conversion changed or left out, one sentence each.
    const std::vector<std::string>& notices() const { return notes; }

private:
    bool fitDepth(std::string& error);
    void noteShapeAnimations();
    bool check(std::string& error) const;
    void writeMaterials(PveFile& file);
    void writeNode(PveFile& file, int index);
    void writeSkinnedRoot(PveFile& file);
    void writeMeshRecord(PveFile& file, const std::string& name, const aiMatrix4x4& local, const aiMesh* mesh,
                         const aiMatrix4x4& bake, unsigned int children);
    void writeGeometry(PveFile& file, const aiMesh* mesh, const aiMatrix4x4& bake);
    void writeSkin(PveFile& file, const aiMesh* mesh);
    std::vector<unsigned int> staticMeshes(const aiNode* node) const;
    std::vector<unsigned int> skinnedMeshes() const;
    PVANIM* sampleAnimation(const aiAnimation& animation);
    void measureReach();
    void reachTo(const aiVector3D& point, const std::string& where);

    const aiScene* scene;
    ConvertOptions options;
    SkeletonPose pose;
    std::vector<std::string> materialNames;
    std::vector<std::string> written;
    std::vector<std::string> notes;
    float reach = 0;  // largest coordinate written or computed from the written transforms
    std::string reachWhere;
};

#endif
