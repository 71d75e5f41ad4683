/// \file
/// Skeletal animation: for a list of bone names, one keyframe record per frame
/// and bone. Loaded from and saved to PVA files, edited frame by frame,
/// completed by linear interpolation and applied to a node tree by bone name.
#ifndef PEVRANO_ASSETS_PVANIM_H
#define PEVRANO_ASSETS_PVANIM_H

#include "assets/pvboneframe.h"
#include "core/pvregistry.h"
#include "math/k3mvector3d.h"

/// Size of names, most bones and most frames an animation holds.
///@{
#define PV_ANIM_NAME_SIZE 256
#define PV_ANIM_MAX_BONES 128
#define PV_ANIM_MAX_FRAMES 65535
///@}

class PVNODE;
class PVMESH;

/// A skeletal animation: a table of bone poses per frame, read from or saved
/// to PVA files and applied to the nodes named after the bones. Animations
/// register themselves; PEVRANO::free deletes those left.
class PVANIM {
public:
    /// Creation and deletion (joins and leaves the registry); not copyable.
    ///@{
    PVANIM();
    ~PVANIM();
    PVANIM(const PVANIM&) = delete;
    PVANIM& operator=(const PVANIM&) = delete;
    ///@}

    /// Registry of every live animation: cleanUp deletes them all (false when
    /// there was none), the others count, find (null if none) and walk them.
    ///@{
    /// Registry of every live animation.
    static bool cleanUp();
    static int getNumberOfAnims();
    static PVANIM* findByFilename(const char* name);
    static PVANIM* findById(unsigned int id);
    static PVANIM* getFirst();
    PVANIM* getNext();
    PVANIM* getPrevious();
    ///@}

    /// Folder prefix of the files load reads; a null path stores "".
    ///@{
    static void setPVAPath(const char* path);
    static char* getPVAPath();
    ///@}

    /// Reads a PVA file from the PVA path; false, with the log line naming
    /// the fault ("Unable to open file", "Invalid header", "Corrupted file",
    /// "Out of memory"), and the animation left as it was.
    bool load(char* file);
    /// Writes the animation as a PVA file; false with "Invalid params" or
    /// "Unable to open file".
    bool save(char* file);
    /// Clears every pose of the table (nothing set).
    void reset();

    /// Index of the bone with that name; -1 if none ("Invalid params" for null).
    int findBoneByName(char* name);
    /// Takes the bone count and names of a skinned mesh; false for a mesh
    /// without bones ("Invalid params" for null).
    bool acquireStructure(PVMESH* mesh);

    /// Sets a bone's rotation (degrees) in a frame, whole or one component,
    /// marking the pose set; false with "Invalid params" outside the table.
    ///@{
    bool setFrame(unsigned int frame, unsigned int bone, float x, float y, float z);
    bool setFrameRotationX(unsigned int frame, unsigned int bone, float value);
    bool setFrameRotationY(unsigned int frame, unsigned int bone, float value);
    bool setFrameRotationZ(unsigned int frame, unsigned int bone, float value);
    ///@}
    /// Marks a pose as not set; false outside the table.
    bool unsetFrame(unsigned int frame, unsigned int bone);
    /// Null when the record lies outside the table.
    /// The pose record (owned by the animation), or its rotation (zero outside).
    ///@{
    PVBONEFRAME* getKeyframe(unsigned int frame, unsigned int bone);
    K3MVECTOR3D getFrameRotation(unsigned int frame, unsigned int bone);
    ///@}

    /// Fills the unset poses of frames from..to by straight-line interpolation
    /// between the set ones; false with "Invalid params" for a bad range.
    bool createKeyframes(unsigned int from, unsigned int to);
    /// Poses the nodes under root named after the bones as in frame (positions
    /// too when translating); false with "Invalid params" for a bad frame or root.
    bool apply(unsigned int frame, PVNODE* root);

    /// Registry id, name and the file it was read from.
    ///@{
    unsigned int getId() { return id; }
    char* getName() { return name; }
    char* getFilename() { return fileName; }
    ///@}
    /// Whether apply sets bone positions as well as rotations.
    ///@{
    void setTranslating(bool on) { translating = on; }
    bool getTranslating() { return translating; }
    ///@}
    /// Counts beyond 128 bones or 65535 frames, or a table that cannot grow,
    /// are refused and leave the animation unchanged.
    ///@{
    bool setNumberOfBones(unsigned int count);
    unsigned int getNumberOfBones() { return nbBones; }
    bool setNumberOfFrames(unsigned int count);
    unsigned int getNumberOfFrames() { return nbFrames; }
    ///@}
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
