#include "modelconverter.h"

#include <assimp/postprocess.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "assets/pvanim.h"
#include "textureexport.h"

namespace {

const char skinRootName[] = "HumanoidRoot";
const unsigned int largestCount = 65535;
const unsigned int largestBoneCount = 100;
const unsigned int largestInfluences = 4;
// Materials of geometry-free records: an empty name is looked up silently.
const char noMaterial[] = "";
// Drawing a node holds one matrix of the engine's 32-deep stack for it and
// one for each of its ancestors, the base taking the first: 31 levels. The
// skeleton pass of a skinned mesh holds three more above its skeleton (the
// mesh's level, the added root's and the pass's own).
const unsigned int largestDepth = 31;
const unsigned int skeletonPassLevels = 3;
// Coordinates the engine's 16.16 fixed point holds.
const float fixedRange = 32767.0f;

std::string folderOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string stemOf(const std::string& path)
{
    const size_t slash = path.find_last_of('/');
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

aiMatrix3x3 normalMatrix(const aiMatrix4x4& transform)
{
    aiMatrix3x3 normals(transform);
    return normals.Inverse().Transpose();
}

aiVector3D unit(const aiVector3D& vector)
{
    const float length = vector.Length();
    return length > 0 ? vector / length : aiVector3D(0, 0, 0);
}

bool isIdentityRotation(const aiMatrix4x4& local)
{
    return local.a1 == 1 && local.b2 == 1 && local.c3 == 1 && local.a2 == 0 && local.a3 == 0 &&
           local.b1 == 0 && local.b3 == 0 && local.c1 == 0 && local.c2 == 0;
}

// The (up to 4) strongest influences of every vertex, weights summing to 1.
std::vector<std::vector<std::pair<unsigned int, float>>> influences(const aiMesh* mesh)
{
    std::vector<std::vector<std::pair<unsigned int, float>>> perVertex(mesh->mNumVertices);
    for (unsigned int b = 0; b < mesh->mNumBones; b++)
        for (unsigned int w = 0; w < mesh->mBones[b]->mNumWeights; w++) {
            const aiVertexWeight& weight = mesh->mBones[b]->mWeights[w];
            if (weight.mVertexId < mesh->mNumVertices && weight.mWeight > 0)
                perVertex[weight.mVertexId].emplace_back(b, weight.mWeight);
        }
    for (auto& vertex : perVertex) {
        std::stable_sort(vertex.begin(), vertex.end(),
                         [](const auto& a, const auto& b) { return a.second > b.second; });
        if (vertex.size() > largestInfluences)
            vertex.resize(largestInfluences);
        float total = 0;
        for (const auto& influence : vertex)
            total += influence.second;
        for (auto& influence : vertex)
            influence.second /= total;
    }
    return perVertex;
}

// Why Assimp's scene cannot be converted, in words for the user.
std::string importFailure(const Assimp::Importer& importer, const aiScene* scene)
{
    const std::string error = importer.GetErrorString();
    // Assimp's words when the primitive sorting has removed every mesh, and
    // when a point cloud reaches its validation.
    if (error == "No meshes remaining")
        return error + ": the model's points and lines are dropped, the engine draws only triangles";
    if (error.find("contains no faces") != std::string::npos)
        return error + ": points are not converted, the engine draws only triangles";
    if (!error.empty())
        return error;
    // An incomplete scene has no geometry of its own (Assimp may add a placeholder).
    if (scene && scene->mNumCameras + scene->mNumLights > 0)
        return "the model holds " + std::to_string(scene->mNumCameras) + " cameras, " +
               std::to_string(scene->mNumLights) +
               " lights and no geometry; cameras and lights are not converted";
    return "the model is incomplete";
}

// Distance from the origin of the farthest vertex below node, as the scene places it.
float farthestVertex(const aiScene* scene, const aiNode* node, const aiMatrix4x4& parentWorld)
{
    const aiMatrix4x4 world = parentWorld * node->mTransformation;
    float farthest = 0;
    for (unsigned int m = 0; m < node->mNumMeshes; m++) {
        const aiMesh* mesh = scene->mMeshes[node->mMeshes[m]];
        for (unsigned int v = 0; v < mesh->mNumVertices; v++)
            farthest = std::max(farthest, (world * mesh->mVertices[v]).Length());
    }
    for (unsigned int c = 0; c < node->mNumChildren; c++)
        farthest = std::max(farthest, farthestVertex(scene, node->mChildren[c], world));
    return farthest;
}

float modelScale(const aiScene* scene, const ConvertOptions& options)
{
    if (options.fitRadius <= 0)
        return options.scale;
    const float farthest = farthestVertex(scene, scene->mRootNode, aiMatrix4x4());
    return farthest > 0 ? options.fitRadius / farthest : 1.0f;
}

}  // namespace

const aiScene* ModelConverter::importModel(Assimp::Importer& importer, const std::string& path,
                                           std::string& error)
{
    importer.SetPropertyInteger(AI_CONFIG_PP_SLM_VERTEX_LIMIT, largestCount);
    importer.SetPropertyInteger(AI_CONFIG_PP_SLM_TRIANGLE_LIMIT, largestCount);
    importer.SetPropertyInteger(AI_CONFIG_PP_LBW_MAX_WEIGHTS, largestInfluences);
    importer.SetPropertyInteger(AI_CONFIG_PP_SBBC_MAX_BONES, largestBoneCount);
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE, aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    const unsigned int steps = aiProcess_Triangulate | aiProcess_JoinIdenticalVertices |
                               aiProcess_GenSmoothNormals | aiProcess_LimitBoneWeights |
                               aiProcess_SplitLargeMeshes | aiProcess_SplitByBoneCount |
                               aiProcess_SortByPType | aiProcess_ValidateDataStructure;
    const aiScene* scene = importer.ReadFile(path, steps);
    if (!scene || !scene->mRootNode || (scene->mFlags & AI_SCENE_FLAGS_INCOMPLETE)) {
        error = importFailure(importer, scene);
        return nullptr;
    }
    return scene;
}

std::string ModelConverter::animationFileName(const std::string& output, const aiAnimation& animation,
                                              unsigned int index)
{
    std::string name = animation.mName.length ? animation.mName.C_Str() : "anim" + std::to_string(index);
    for (char& c : name)
        if (!isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_')
            c = '_';
    return folderOf(output) + "/" + stemOf(output) + "_" + std::to_string(index) + "_" + name.substr(0, 64) +
           ".pva";
}

ModelConverter::ModelConverter(const aiScene* scene, const ConvertOptions& options) :
    scene(scene),
    options(options),
    pose(scene, skinRootName, modelScale(scene, options))
{
}

ModelConverter::~ModelConverter() = default;

std::vector<unsigned int> ModelConverter::staticMeshes(const aiNode* node) const
{
    std::vector<unsigned int> meshes;
    for (unsigned int m = 0; m < node->mNumMeshes; m++)
        if (!scene->mMeshes[node->mMeshes[m]]->HasBones())
            meshes.push_back(node->mMeshes[m]);
    return meshes;
}

// Skinned meshes in scene order; each is written once even if several nodes hold it.
std::vector<unsigned int> ModelConverter::skinnedMeshes() const
{
    std::vector<unsigned int> meshes;
    for (unsigned int m = 0; m < scene->mNumMeshes; m++)
        if (scene->mMeshes[m]->HasBones() && pose.meshOwner(m) >= 0)
            meshes.push_back(m);
    return meshes;
}

bool ModelConverter::check(std::string& error) const
{
    for (unsigned int m = 0; m < scene->mNumMeshes; m++) {
        const aiMesh* mesh = scene->mMeshes[m];
        const std::string which = "mesh '" + std::string(mesh->mName.C_Str()) + "'";
        if (mesh->mNumVertices > largestCount || mesh->mNumFaces > largestCount)
            error = which + " has more than 65535 vertices or faces";
        else if (mesh->mNumBones > largestBoneCount)
            error = which + " uses more than 100 bones";
        for (unsigned int b = 0; error.empty() && b < mesh->mNumBones; b++)
            if (pose.indexOfName(mesh->mBones[b]->mName) < 0)
                error = which + " names bone '" + mesh->mBones[b]->mName.C_Str() + "' that no node has";
        if (!error.empty())
            return false;
    }
    if (skinnedMeshes().size() + 1 > largestCount) {
        error = "too many skinned meshes";
        return false;
    }
    for (const PoseNode& node : pose.nodes())
        if (node.children.size() + node.source->mNumMeshes > largestCount) {
            error = "node '" + node.name + "' has more than 65535 children";
            return false;
        }
    for (unsigned int a = 0; a < scene->mNumAnimations; a++) {
        const aiAnimation& animation = *scene->mAnimations[a];
        const double ticksPerSecond = animation.mTicksPerSecond > 0 ? animation.mTicksPerSecond : 25.0;
        if (pose.drivenNodes(animation).size() > PV_ANIM_MAX_BONES)
            error = "animation " + std::to_string(a) + " drives more than 128 nodes";
        else if (animation.mDuration / ticksPerSecond * options.framesPerSecond >= PV_ANIM_MAX_FRAMES)
            error = "animation " + std::to_string(a) + " has more than 65535 frames at this frame rate";
        if (!error.empty())
            return false;
    }
    return true;
}

// A tree deeper than the engine can draw loses its nodes that carry no
// geometry, no animation and no bone; deeper than that it is refused.
bool ModelConverter::fitDepth(std::string& error)
{
    const unsigned int addedRoot = pose.hasSkin() ? 1 : 0;
    const unsigned int limit = pose.hasSkin() ? largestDepth - skeletonPassLevels : largestDepth;
    const unsigned int depth = pose.depth() + addedRoot;
    if (depth <= limit)
        return true;
    const unsigned int folded = pose.foldEmptyNodes();
    const unsigned int foldedDepth = pose.depth() + addedRoot;
    if (foldedDepth > limit) {
        error = "the tree is " + std::to_string(foldedDepth) + " levels deep (node '" + pose.deepest().name +
                "') even with the nodes that carry no geometry and no animation folded away; the engine "
                "draws at most " +
                std::to_string(limit) + " levels";
        return false;
    }
    notes.push_back("the tree is " + std::to_string(depth) + " levels deep, more than the engine draws (" +
                    std::to_string(limit) + "): " + std::to_string(folded) +
                    " nodes that carry no geometry and no animation are folded into their children, " +
                    std::to_string(foldedDepth) + " levels remain");
    return true;
}

// Morph targets and mesh replacement change a mesh's shape, which the
// engine's animations cannot: those channels are left out.
void ModelConverter::noteShapeAnimations()
{
    for (unsigned int a = 0; a < scene->mNumAnimations; a++) {
        const aiAnimation& animation = *scene->mAnimations[a];
        if (animation.mNumMorphMeshChannels + animation.mNumMeshChannels == 0)
            continue;
        const std::string what = "animation " + std::to_string(a) + " '" + animation.mName.C_Str() + "'";
        notes.push_back(animation.mNumChannels == 0
                            ? what + " is not converted: it changes mesh shapes (morph targets or mesh "
                                     "replacement), which the engine's animations cannot"
                            : what + " is converted without its channels that change mesh shapes (morph "
                                     "targets or mesh replacement), which the engine's animations cannot");
    }
}

bool ModelConverter::convert(std::string& error)
{
    if (!fitDepth(error) || !check(error))
        return false;
    noteShapeAnimations();
    PveFile file;
    file.text("PVE file v1.6a");
    writeMaterials(file);
    if (pose.hasSkin())
        writeSkinnedRoot(file);
    else
        writeNode(file, 0);

    std::vector<PVANIM*> animations;
    for (unsigned int a = 0; a < scene->mNumAnimations; a++)
        if (scene->mAnimations[a]->mNumChannels > 0)
            animations.push_back(sampleAnimation(*scene->mAnimations[a]));
    measureReach();
    if (std::isinf(reach))
        notes.push_back("the model has coordinates that are not finite numbers (" + reachWhere +
                        "), which the engine cannot place");
    else if (reach > fixedRange)
        notes.push_back("the model reaches " + std::to_string(int(std::ceil(reach))) +
                        " units from the origin (" + reachWhere +
                        "), beyond the engine's fixed-point range of -32767 to 32767: " +
                        "--scale or --fit brings it within");
    bool saved = file.save(options.output);
    if (saved)
        written.push_back(options.output);
    else
        error = "cannot write " + options.output;
    for (unsigned int a = 0, next = 0; a < scene->mNumAnimations; a++) {
        if (scene->mAnimations[a]->mNumChannels == 0)
            continue;
        PVANIM* animation = animations[next++];
        std::string name = animationFileName(options.output, *scene->mAnimations[a], a);
        if (saved && !animation->save(&name[0])) {
            error = "cannot write " + name;
            saved = false;
        } else if (saved) {
            written.push_back(name);
        }
        delete animation;
    }
    return saved;
}

void ModelConverter::writeMaterials(PveFile& file)
{
    // Texture names stay well below the engine's 256 characters.
    TextureExport textures(scene, folderOf(options.input), folderOf(options.output),
                           stemOf(options.output).substr(0, 200), options.textureSize);
    std::set<std::string> used;
    file.u16(scene->mNumMaterials);
    for (unsigned int m = 0; m < scene->mNumMaterials; m++) {
        const aiMaterial* material = scene->mMaterials[m];
        aiString wanted;
        material->Get(AI_MATKEY_NAME, wanted);
        // Materials are found by name engine-wide: the model's name keeps
        // those of different models apart.
        std::string base = stemOf(options.output).substr(0, 100) + ":" +
                           (wanted.length ? std::string(wanted.C_Str()).substr(0, 140) : "material");
        std::string name = base;
        for (int suffix = 1; used.count(name); suffix++)
            name = base + "#" + std::to_string(suffix);
        used.insert(name);
        materialNames.push_back(name);

        aiColor4D ambient(0.2f, 0.2f, 0.2f, 1), diffuse(0.8f, 0.8f, 0.8f, 1), specular(0, 0, 0, 1),
            emission(0, 0, 0, 1);
        float opacity = 1, shininess = 0;
        material->Get(AI_MATKEY_COLOR_AMBIENT, ambient);
        material->Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
        material->Get(AI_MATKEY_COLOR_SPECULAR, specular);
        material->Get(AI_MATKEY_COLOR_EMISSIVE, emission);
        material->Get(AI_MATKEY_OPACITY, opacity);
        material->Get(AI_MATKEY_SHININESS, shininess);
        file.text(name);
        file.text(textures.convert(material));
        file.text("[none]");
        for (const aiColor4D& colour : {ambient, diffuse, specular, emission}) {
            file.f32(colour.r);
            file.f32(colour.g);
            file.f32(colour.b);
            file.f32(colour.a);
        }
        file.f32(std::min(1.0f, std::max(0.0f, opacity)));
        // The fixed-function pipeline takes exponents up to 128.
        file.f32(std::min(128.0f, std::max(0.0f, shininess)));
    }
    for (const std::string& name : textures.writtenFiles())
        written.push_back(name);
}

// The added root, the whole node tree below it, then every skinned mesh at
// its bind pose in the root's space.
void ModelConverter::writeSkinnedRoot(PveFile& file)
{
    const std::vector<unsigned int> skinned = skinnedMeshes();
    file.u8(0);
    file.u32(0);
    file.text(skinRootName);
    file.vec3(aiVector3D());
    file.vec3(aiVector3D());
    file.u16(1 + skinned.size());
    writeNode(file, 0);
    for (unsigned int m : skinned) {
        const aiMesh* mesh = scene->mMeshes[m];
        const PoseNode& owner = pose.nodes()[pose.meshOwner(m)];
        const std::string name = pose.uniqueName(owner.name + "_" + mesh->mName.C_Str());
        writeMeshRecord(file, name, aiMatrix4x4(), mesh, owner.sceneWorld, 0);
    }
}

// A node carries the rigid part of its bind pose. Bones and rotated nodes
// are mesh records (plain records hold no rotation); the node's unskinned
// meshes become geometry of its own record when it has exactly one and is no
// bone, child records otherwise, with what the rigid part leaves out baked in.
void ModelConverter::writeNode(PveFile& file, int index)
{
    const PoseNode& node = pose.nodes()[index];
    const aiMatrix4x4 local = pose.bindLocal(index);
    const aiMatrix4x4 bake = SkeletonPose::rigid(node.bindWorld).Inverse() * node.bindWorld;
    std::vector<unsigned int> meshes = staticMeshes(node.source);
    const unsigned int children = node.children.size();
    if (meshes.size() == 1 && !node.bone) {
        writeMeshRecord(file, node.name, local, scene->mMeshes[meshes[0]], bake, children);
    } else if (node.bone || !isIdentityRotation(local)) {
        writeMeshRecord(file, node.name, local, nullptr, bake, children + meshes.size());
    } else {
        file.u8(0);
        file.u32(0);
        file.text(node.name);
        file.vec3(SkeletonPose::translation(local));
        file.vec3(aiVector3D());
        file.u16(children + meshes.size());
    }
    if (meshes.size() == 1 && !node.bone)
        meshes.clear();
    for (unsigned int m : meshes)
        writeMeshRecord(file, pose.uniqueName(node.name + "_" + scene->mMeshes[m]->mName.C_Str()),
                        aiMatrix4x4(), scene->mMeshes[m], bake, 0);
    for (int child : node.children)
        writeNode(file, child);
}

void ModelConverter::writeMeshRecord(PveFile& file, const std::string& name, const aiMatrix4x4& local,
                                     const aiMesh* mesh, const aiMatrix4x4& bake, unsigned int children)
{
    file.u8(2);
    file.u32(0);
    file.text(name);
    file.vec3(SkeletonPose::translation(local));
    file.vec3(SkeletonPose::eulerDegrees(local));
    file.vec3(aiVector3D());
    file.text(mesh ? materialNames[mesh->mMaterialIndex] : noMaterial);

    aiVector3D minimum, maximum;
    float radius = 0;
    for (unsigned int v = 0; mesh && v < mesh->mNumVertices; v++) {
        const aiVector3D p = bake * mesh->mVertices[v];
        minimum =
            v == 0 ? p
                   : aiVector3D(std::min(minimum.x, p.x), std::min(minimum.y, p.y), std::min(minimum.z, p.z));
        maximum =
            v == 0 ? p
                   : aiVector3D(std::max(maximum.x, p.x), std::max(maximum.y, p.y), std::max(maximum.z, p.z));
        radius = std::max(radius, p.Length());
    }
    file.f32(radius);
    file.vec3(minimum);
    file.vec3(maximum);
    file.u8(0);
    const unsigned int vertices = mesh ? mesh->mNumVertices : 0;
    file.u16(vertices);
    file.u16(mesh && mesh->HasTextureCoords(0) ? vertices : 0);
    unsigned int faces = 0;
    for (unsigned int f = 0; mesh && f < mesh->mNumFaces; f++)
        faces += mesh->mFaces[f].mNumIndices == 3;
    file.u16(faces);
    file.u16(children);
    unsigned int influenceCount = 0;
    if (mesh && mesh->HasBones())
        for (const auto& vertex : influences(mesh))
            influenceCount = std::max<unsigned int>(influenceCount, vertex.size());
    file.u16(influenceCount);
    if (mesh)
        writeGeometry(file, mesh, bake);
    if (influenceCount > 0)
        writeSkin(file, mesh);
}

void ModelConverter::writeGeometry(PveFile& file, const aiMesh* mesh, const aiMatrix4x4& bake)
{
    const aiMatrix3x3 normals = normalMatrix(bake);
    std::vector<aiVector3D> positions;
    for (unsigned int v = 0; v < mesh->mNumVertices; v++)
        positions.push_back(bake * mesh->mVertices[v]);
    for (const aiVector3D& p : positions)
        file.vec3(p);
    for (unsigned int v = 0; v < mesh->mNumVertices; v++)
        file.vec3(mesh->HasNormals() ? unit(normals * mesh->mNormals[v]) : aiVector3D(0, 0, 1));
    for (unsigned int v = 0; mesh->HasTextureCoords(0) && v < mesh->mNumVertices; v++) {
        file.f32(mesh->mTextureCoords[0][v].x);
        file.f32(mesh->mTextureCoords[0][v].y);
    }
    for (unsigned int f = 0; f < mesh->mNumFaces; f++)
        if (mesh->mFaces[f].mNumIndices == 3)
            for (int k = 0; k < 3; k++)
                file.u16(mesh->mFaces[f].mIndices[k]);
    for (unsigned int f = 0; f < mesh->mNumFaces; f++) {
        const aiFace& face = mesh->mFaces[f];
        if (face.mNumIndices != 3)
            continue;
        const aiVector3D& a = positions[face.mIndices[0]];
        file.vec3(unit((positions[face.mIndices[1]] - a) ^ (positions[face.mIndices[2]] - a)));
    }
}

// Indices and weights padded with zero weights to the mesh's largest
// influence count, then the bone names as the engine's nodes are named.
void ModelConverter::writeSkin(PveFile& file, const aiMesh* mesh)
{
    const auto perVertex = influences(mesh);
    size_t count = 0;
    for (const auto& vertex : perVertex)
        count = std::max(count, vertex.size());
    for (const auto& vertex : perVertex)
        for (size_t j = 0; j < count; j++)
            file.u8(j < vertex.size() ? vertex[j].first : 0);
    for (const auto& vertex : perVertex)
        for (size_t j = 0; j < count; j++)
            file.f32(j < vertex.size() ? vertex[j].second : 0.0f);
    file.u16(mesh->mNumBones);
    for (unsigned int b = 0; b < mesh->mNumBones; b++)
        file.text(pose.nodes()[pose.indexOfName(mesh->mBones[b]->mName)].name);
}

// Infinite and NaN coordinates count as infinitely far.
void ModelConverter::reachTo(const aiVector3D& point, const std::string& where)
{
    const bool finite = std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
    const float largest = finite ? std::max({std::fabs(point.x), std::fabs(point.y), std::fabs(point.z)})
                                 : std::numeric_limits<float>::infinity();
    if (largest <= reach)
        return;
    reach = largest;
    reachWhere = where;
}

// The engine holds vertices, node positions and whatever its transforms make
// of them in 16.16 fixed point: the written values and the vertices as the
// scene places them at rest must all stay within its range.
void ModelConverter::measureReach()
{
    for (size_t n = 0; n < pose.nodes().size(); n++) {
        const PoseNode& node = pose.nodes()[n];
        const std::string where = "node '" + node.name + "'";
        if (!node.folded)
            reachTo(SkeletonPose::translation(pose.bindLocal(int(n))), where);
        const aiMatrix4x4 bake = SkeletonPose::rigid(node.bindWorld).Inverse() * node.bindWorld;
        for (unsigned int m = 0; m < node.source->mNumMeshes; m++) {
            const aiMesh* mesh = scene->mMeshes[node.source->mMeshes[m]];
            const aiMatrix4x4& world = mesh->HasBones() ? node.sceneWorld : node.bindWorld;
            for (unsigned int v = 0; v < mesh->mNumVertices; v++) {
                reachTo(world * mesh->mVertices[v], where);
                if (!mesh->HasBones())
                    reachTo(bake * mesh->mVertices[v], where);
            }
        }
    }
}

// Every driven node's rigid local transform at each frame, as rotation and
// position keyframes; all records are set.
PVANIM* ModelConverter::sampleAnimation(const aiAnimation& animation)
{
    const double ticksPerSecond = animation.mTicksPerSecond > 0 ? animation.mTicksPerSecond : 25.0;
    const unsigned int frames = static_cast<unsigned int>(std::floor(
                                    animation.mDuration / ticksPerSecond * options.framesPerSecond + 1e-6)) +
                                1;
    const std::vector<int> driven = pose.drivenNodes(animation);
    PVANIM* result = new PVANIM;
    result->setNumberOfBones(driven.size());
    result->setNumberOfFrames(frames);
    for (size_t k = 0; k < driven.size(); k++)
        result->setBoneName(k, pose.nodes()[driven[k]].name.c_str());
    const std::string where = "animation '" + std::string(animation.mName.C_Str()) + "'";
    for (unsigned int f = 0; f < frames; f++) {
        const std::vector<aiMatrix4x4> worlds =
            pose.worldsAt(animation, double(f) / options.framesPerSecond * ticksPerSecond);
        for (size_t k = 0; k < driven.size(); k++) {
            const int parent = pose.nodes()[driven[k]].parent;
            const aiMatrix4x4 local =
                SkeletonPose::rigidLocal(parent < 0 ? aiMatrix4x4() : worlds[parent], worlds[driven[k]]);
            const aiVector3D angles = SkeletonPose::eulerDegrees(local);
            const aiVector3D position = SkeletonPose::translation(local);
            result->setFrame(f, k, angles.x, angles.y, angles.z);
            result->getKeyframe(f, k)->position = K3MVECTOR3D(position.x, position.y, position.z);
            reachTo(position, where);
            reachTo(SkeletonPose::translation(worlds[driven[k]]), where);
        }
    }
    return result;
}
