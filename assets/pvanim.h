/// \file
/// Skeletal animation: for a list of bone names, one keyframe record per frame
/// and bone. Loaded from and saved to PVA files, edited frame by frame,
/// completed by linear interpolation and applied to a node tree by bone name.
#ifndef PEVRANO_ASSETS_PVANIM_H
#define PEVRANO_ASSETS_PVANIM_H

#include "assets/pvboneframe.h"
#include "core/pvregistry.h"
#include "math/k3mvector3d.h"

#define PV_ANIM_NAME_SIZE 256
#define PV_ANIM_MAX_BONES 128
#define PV_ANIM_MAX_FRAMES 65535

class PVNODE;
class PVMESH;

class PVANIM {
public:
    PVANIM();
    ~PVANIM();
    PVANIM(const PVANIM&) = delete;
    PVANIM& operator=(const PVANIM&) = delete;

    /// Registry of every live animation.
    static bool cleanUp();
    static int getNumberOfAnims();
    static PVANIM* findByFilename(const char* name);
    static PVANIM* findById(unsigned int id);
    static PVANIM* getFirst();
    PVANIM* getNext();
    PVANIM* getPrevious();

    /// Folder prefix of the files load reads; a null path stores "".
    static void setPVAPath(const char* path);
    static char* getPVAPath();

    bool load(char* file);
    bool save(char* file);
    void reset();

    int findBoneByName(char* name);
    bool acquireStructure(PVMESH* mesh);

    bool setFrame(unsigned int frame, unsigned int bone, float x, float y, float z);
    bool setFrameRotationX(unsigned int frame, unsigned int bone, float value);
    bool setFrameRotationY(unsigned int frame, unsigned int bone, float value);
    bool setFrameRotationZ(unsigned int frame, unsigned int bone, float value);
    bool unsetFrame(unsigned int frame, unsigned int bone);
    /// Null when the record lies outside the table.
    PVBONEFRAME* getKeyframe(unsigned int frame, unsigned int bone);
    K3MVECTOR3D getFrameRotation(unsigned int frame, unsigned int bone);

    bool createKeyframes(unsigned int from, unsigned int to);
    bool apply(unsigned int frame, PVNODE* root);

    unsigned int getId() { return id; }
    char* getName() { return name; }
    char* getFilename() { return fileName; }
    void setTranslating(bool on) { translating = on; }
    bool getTranslating() { return translating; }
    /// Counts beyond 128 bones or 65535 frames, or a table that cannot grow,
    /// are refused and leave the animation unchanged.
    bool setNumberOfBones(unsigned int count);
    unsigned int getNumberOfBones() { return nbBones; }
    bool setNumberOfFrames(unsigned int count);
    unsigned int getNumberOfFrames() { return nbFrames; }
    /// Copies only names shorter than 256 characters.
    bool setBoneName(unsigned int index, const char* boneName);
    /// Null for an index of 128 or more.
    char* getBoneName(unsigned int index);

private:
    bool editable(unsigned int frame, unsigned int bone) const;
    bool editComponent(unsigned int frame, unsigned int bone, int component, float value,
                       const char* operation);
    bool growTable(unsigned int frames, unsigned int bones);
    PVBONEFRAME& record(unsigned int frame, unsigned int bone)
    {
        return keyframes[frame * tableBones + bone];
    }
    bool readFile(const char* file, char* data, unsigned int size);
    bool parse(const char* file, const unsigned char* data, unsigned int size);
    void interpolateBone(unsigned int bone, unsigned int from, unsigned int to);

    unsigned int id;
    char name[PV_ANIM_NAME_SIZE];
    char fileName[PV_ANIM_NAME_SIZE];
    bool translating;
    unsigned short nbBones;
    unsigned short nbFrames;
    char boneNames[PV_ANIM_MAX_BONES][PV_ANIM_NAME_SIZE];
    /// tableFrames frames of tableBones records each; always at least
    /// nbFrames + 1 frames, so that the frame one past the last exists, of at
    /// least nbBones records.
    PVBONEFRAME* keyframes;
    unsigned int tableFrames;
    unsigned int tableBones;
    PVANIM* previous;
    PVANIM* next;

    static char pvaPath[PV_ANIM_NAME_SIZE];
    static PVANIM* firstAnim;

    using Registry = PVREGISTRY<PVANIM, &PVANIM::firstAnim, &PVANIM::previous, &PVANIM::next>;
};

#endif
