// Skeletal animations: registry, PVA files, frame editing, interpolation and
// posing of a node tree by bone name.
#include "assets/pvanim.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "assets/pvmesh.h"
#include "foundation/kvffile.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfreader.h"
#include "foundation/kvfstring.h"
#include "scene/pvnode.h"

char PVANIM::pvaPath[PV_ANIM_NAME_SIZE] = "";
PVANIM* PVANIM::firstAnim = nullptr;

namespace {

const char pvaHeader[] = "PVA file v1.6a";
const unsigned int pvaHeaderSize = 14;
const unsigned char pvaMarker = 26;
// Rotation and position (3 floats each) and the set flag.
const unsigned int pvaRecordSize = 25;

bool readVector(KVFREADER& reader, K3MVECTOR3D& value)
{
    return reader.readFloat(value.x) && reader.readFloat(value.y) && reader.readFloat(value.z);
}

void writeU16(std::string& out, unsigned int value)
{
    out += char(value & 0xFF);
    out += char((value >> 8) & 0xFF);
}

void writeFloat(std::string& out, float value)
{
    unsigned int bits;
    std::memcpy(&bits, &value, sizeof(bits));
    for (int shift = 0; shift < 32; shift += 8)
        out += char((bits >> shift) & 0xFF);
}

void writeVector(std::string& out, const K3MVECTOR3D& value)
{
    writeFloat(out, value.x);
    writeFloat(out, value.y);
    writeFloat(out, value.z);
}

float& component(K3MVECTOR3D& vector, int index)
{
    return index == 0 ? vector.x : index == 1 ? vector.y : vector.z;
}

}  // namespace

PVANIM::PVANIM() :
    id(kvfNewId()),
    translating(false),
    nbBones(0),
    nbFrames(0),
    keyframes(nullptr),
    tableFrames(0),
    tableBones(0),
    previous(nullptr),
    next(nullptr)
{
    snprintf(name, sizeof(name), "[anim %d]", id);
    fileName[0] = '\0';
    std::memset(boneNames, 0, sizeof(boneNames));
    growTable(1, 0);
    Registry::append(this);
}

PVANIM::~PVANIM()
{
    kvfReleaseId(id);
    Registry::remove(this);
    kvfFree(keyframes);
}

bool PVANIM::cleanUp()
{
    if (!firstAnim)
        return false;
    kvfLog("   %d animation(s) released\n", Registry::deleteAll());
    return true;
}

int PVANIM::getNumberOfAnims() { return static_cast<int>(Registry::count()); }
PVANIM* PVANIM::findByFilename(const char* wanted) { return Registry::findByText(&PVANIM::fileName, wanted); }
PVANIM* PVANIM::findById(unsigned int wanted) { return Registry::findByValue(&PVANIM::id, wanted); }
PVANIM* PVANIM::getFirst() { return firstAnim; }
PVANIM* PVANIM::getNext() { return next; }
PVANIM* PVANIM::getPrevious() { return previous; }

void PVANIM::setPVAPath(const char* path)
{
    if (!path)
        pvaPath[0] = '\0';
    else
        kvfCopyIfFits(pvaPath, sizeof pvaPath, path);
}

char* PVANIM::getPVAPath() { return pvaPath; }

// Makes the table hold at least frames × bones records, keeping the ones it
// has at their frame and bone.
bool PVANIM::growTable(unsigned int frames, unsigned int bones)
{
    if (frames <= tableFrames && bones <= tableBones)
        return true;
    frames = frames > tableFrames ? frames : tableFrames;
    bones = bones > tableBones ? bones : tableBones;
    const unsigned int bytes = frames * bones * sizeof(PVBONEFRAME);
    PVBONEFRAME* grown = static_cast<PVBONEFRAME*>(kvfMalloc(bytes > 0 ? bytes : 1));
    if (!grown)
        return false;
    std::memset(static_cast<void*>(grown), 0, bytes);
    for (unsigned int f = 0; f < tableFrames; f++)
        for (unsigned int b = 0; b < tableBones; b++)
            grown[f * bones + b] = record(f, b);
    // Every kvfFree is counted, a null one too: the first table has nothing to give back.
    if (keyframes)
        kvfFree(keyframes);
    keyframes = grown;
    tableFrames = frames;
    tableBones = bones;
    return true;
}

bool PVANIM::setNumberOfBones(unsigned int count)
{
    if (count > PV_ANIM_MAX_BONES || !growTable(nbFrames + 1, count))
        return false;
    nbBones = count;
    return true;
}

bool PVANIM::setNumberOfFrames(unsigned int count)
{
    if (count > PV_ANIM_MAX_FRAMES || !growTable(count + 1, nbBones))
        return false;
    nbFrames = count;
    return true;
}

bool PVANIM::setBoneName(unsigned int index, const char* boneName)
{
    return index < PV_ANIM_MAX_BONES && kvfCopyIfFits(boneNames[index], sizeof boneNames[index], boneName);
}

char* PVANIM::getBoneName(unsigned int index)
{
    return index < PV_ANIM_MAX_BONES ? boneNames[index] : nullptr;
}

// Reads the whole file at path into data; false with its message otherwise.
bool PVANIM::readFile(const char* file, char* data, unsigned int size)
{
    const std::string path = std::string(pvaPath) + file;
    FILE* input = kvfOpenReadable(path.c_str());
    if (!input) {
        kvfLog("   [!] Unable to open file %s @ PVANIM::load\n", file);
        return false;
    }
    const size_t got = fread(data, 1, size, input);
    fclose(input);
    if (got < size) {
        kvfLog("   [!] Corrupted file %s @ PVANIM::load\n", file);
        return false;
    }
    return true;
}

bool PVANIM::load(char* file)
{
    const std::string path = std::string(pvaPath) + (file ? file : "");
    if (!file || !kvfFileExists(path.c_str())) {
        kvfLog("   [!] Invalid params or file not found @ PVANIM::load\n");
        return false;
    }
    kvfLog("\n   Loading PVA file '%s'...\n", file);
    const int size = kvfFileSize(path.c_str());
    char* data = size >= 0 ? static_cast<char*>(kvfMalloc(size > 0 ? size : 1)) : nullptr;
    if (!data) {
        kvfLog("   [!] Out of memory for file %s @ PVANIM::load\n", file);
        return false;
    }
    bool loaded = readFile(file, data, size) && parse(file, reinterpret_cast<unsigned char*>(data), size);
    kvfFree(data);
    if (loaded)
        kvfCopyIfFits(fileName, sizeof fileName, file);
    return loaded;
}

// Checks the whole layout before changing anything, so that a refused file
// leaves the animation as it was.
bool PVANIM::parse(const char* file, const unsigned char* data, unsigned int size)
{
    // A file shorter than the header cannot hold it.
    if (size < pvaHeaderSize || std::memcmp(data, pvaHeader, pvaHeaderSize) != 0) {
        kvfLog("   [!] Invalid header in file %s @ PVANIM::load\n", file);
        return false;
    }
    kvfLog("   Header: %s\n", pvaHeader);
    KVFREADER reader(data, size, pvaHeaderSize);
    uint16_t bones = 0, frames = 0;
    // Names wait here until the whole file has been checked (one rendering thread).
    static char names[PV_ANIM_MAX_BONES][PV_ANIM_NAME_SIZE];
    bool intact =
        reader.skip(1) && reader.readU16(bones) && reader.readU16(frames) && bones <= PV_ANIM_MAX_BONES;
    for (unsigned int b = 0; intact && b < bones; b++)
        intact = reader.readString(names[b], PV_ANIM_NAME_SIZE);
    intact = intact && reader.remaining() / pvaRecordSize >= size_t(frames) * bones;
    if (!intact) {
        kvfLog("   [!] Corrupted file %s @ PVANIM::load\n", file);
        return false;
    }
    if (!growTable(frames + 1, bones)) {
        kvfLog("   [!] Out of memory for file %s @ PVANIM::load\n", file);
        return false;
    }
    nbBones = bones;
    nbFrames = frames;
    for (unsigned int b = 0; b < bones; b++)
        kvfCopyIfFits(boneNames[b], sizeof boneNames[b], names[b]);
    for (unsigned int f = 0; f < frames; f++)
        for (unsigned int b = 0; b < bones; b++) {
            PVBONEFRAME& target = record(f, b);
            uint8_t flag = 0;
            readVector(reader, target.rotation);
            readVector(reader, target.position);
            reader.readU8(flag);
            target.set = flag != 0;
        }
    return true;
}

bool PVANIM::save(char* file)
{
    if (!file) {
        kvfLog("   [!] Invalid params @ PVANIM::save\n");
        return false;
    }
    kvfLog("\n   Saving PVA file '%s'...\n", file);
    FILE* output = fopen(file, "wb");
    if (!output) {
        kvfLog("   [!] Unable to open file %s @ PVANIM::save\n", file);
        return false;
    }
    std::string out(pvaHeader, pvaHeaderSize);
    out += char(pvaMarker);
    writeU16(out, nbBones);
    writeU16(out, nbFrames);
    for (unsigned int b = 0; b < nbBones; b++)
        out.append(boneNames[b], strlen(boneNames[b]) + 1);
    for (unsigned int f = 0; f < nbFrames; f++)
        for (unsigned int b = 0; b < nbBones; b++) {
            const PVBONEFRAME& source = record(f, b);
            writeVector(out, source.rotation);
            writeVector(out, source.position);
            out += char(source.set ? 1 : 0);
        }
    const bool written = fwrite(out.data(), 1, out.size(), output) == out.size();
    return fclose(output) == 0 && written;
}

void PVANIM::reset()
{
    for (unsigned int f = 0; f < nbFrames; f++)
        for (unsigned int b = 0; b < nbBones; b++)
            record(f, b) = PVBONEFRAME();
}

int PVANIM::findBoneByName(char* wanted)
{
    if (!wanted) {
        kvfLog("   [!] Invalid params @ PVANIM::findBoneByName\n");
        return -1;
    }
    for (unsigned int b = 0; b < nbBones; b++)
        if (strcmp(boneNames[b], wanted) == 0)
            return static_cast<int>(b);
    return -1;
}

bool PVANIM::editable(unsigned int frame, unsigned int bone) const
{
    return frame <= nbFrames && bone < nbBones && frame < tableFrames && bone < tableBones;
}

bool PVANIM::setFrame(unsigned int frame, unsigned int bone, float x, float y, float z)
{
    if (!editable(frame, bone)) {
        kvfLog("   [!] Invalid params @ PVANIM::setFrame\n");
        return false;
    }
    record(frame, bone).rotation = K3MVECTOR3D(x, y, z);
    record(frame, bone).set = true;
    return true;
}

bool PVANIM::editComponent(unsigned int frame, unsigned int bone, int index, float value,
                           const char* operation)
{
    if (!editable(frame, bone)) {
        kvfLog("   [!] Invalid params @ PVANIM::%s\n", operation);
        return false;
    }
    component(record(frame, bone).rotation, index) = value;
    record(frame, bone).set = true;
    return true;
}

bool PVANIM::setFrameRotationX(unsigned int frame, unsigned int bone, float value)
{
    return editComponent(frame, bone, 0, value, "setFrameRotationX");
}

bool PVANIM::setFrameRotationY(unsigned int frame, unsigned int bone, float value)
{
    return editComponent(frame, bone, 1, value, "setFrameRotationY");
}

bool PVANIM::setFrameRotationZ(unsigned int frame, unsigned int bone, float value)
{
    return editComponent(frame, bone, 2, value, "setFrameRotationZ");
}

bool PVANIM::unsetFrame(unsigned int frame, unsigned int bone)
{
    if (!editable(frame, bone)) {
        kvfLog("   [!] Invalid params @ PVANIM::unsetFrame\n");
        return false;
    }
    if (!record(frame, bone).set)
        return false;
    record(frame, bone).set = false;
    return true;
}

PVBONEFRAME* PVANIM::getKeyframe(unsigned int frame, unsigned int bone)
{
    if (frame >= tableFrames || bone >= tableBones)
        return nullptr;
    return &record(frame, bone);
}

K3MVECTOR3D PVANIM::getFrameRotation(unsigned int frame, unsigned int bone)
{
    const PVBONEFRAME* keyframe = getKeyframe(frame, bone);
    return keyframe ? keyframe->rotation : K3MVECTOR3D();
}

bool PVANIM::createKeyframes(unsigned int from, unsigned int to)
{
    if (from >= nbFrames || to > nbFrames || from >= to) {
        kvfLog("   [!] Invalid params @ PVANIM::createKeyframes\n");
        return false;
    }
    for (unsigned int b = 0; b < nbBones; b++)
        interpolateBone(b, from, to);
    return true;
}

// Walks from one set keyframe to the next (or to `to`), giving every unset
// record in between the rotation of its place on the straight line.
void PVANIM::interpolateBone(unsigned int bone, unsigned int from, unsigned int to)
{
    unsigned int start = from;
    bool found = true;
    while (found && start < to) {
        unsigned int end = start + 1;
        while (end < to && !record(end, bone).set)
            end++;
        found = end < to;
        const K3MVECTOR3D first = record(start, bone).rotation;
        const K3MVECTOR3D last = record(end, bone).rotation;
        const float span = static_cast<float>(end - start);
        const K3MVECTOR3D step((last.x - first.x) / span, (last.y - first.y) / span,
                               (last.z - first.z) / span);
        K3MVECTOR3D current = first;
        for (unsigned int f = start; f < end; f++) {
            if (record(f, bone).set)
                continue;
            current = K3MVECTOR3D(current.x + step.x, current.y + step.y, current.z + step.z);
            record(f, bone).rotation = current;
        }
        start = end;
    }
}

bool PVANIM::apply(unsigned int frame, PVNODE* root)
{
    if (frame >= nbFrames || !root) {
        kvfLog("   [!] Invalid params @ PVANIM::apply\n");
        return false;
    }
    for (unsigned int b = 0; b < nbBones; b++) {
        PVNODE* node = root->findByNameInHierarchy(boneNames[b]);
        if (!node)
            continue;
        node->setRotation(record(frame, b).rotation);
        if (translating)
            node->setPosition(record(frame, b).position);
    }
    return true;
}

bool PVANIM::acquireStructure(PVMESH* mesh)
{
    if (!mesh) {
        kvfLog("   [!] Invalid params @ PVANIM::acquireStructure\n");
        return false;
    }
    const unsigned int count = mesh->getNumberOfBones();
    if (count == 0 || !setNumberOfBones(count))
        return false;
    for (unsigned int b = 0; b < count; b++)
        setBoneName(b, mesh->getBone(b)->name);
    return true;
}
