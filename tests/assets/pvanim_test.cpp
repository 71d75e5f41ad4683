// PVANIM: PVA files byte for byte, refused files, frame editors and their
// bounds, interpolation between keyframes and posing a skeleton.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "assets/pvanim.h"
#include "foundation/kvfmemory.h"
#include "scene/pvnode.h"
#include "support/glfixture.h"

namespace {

using Anims = pvtest::RecordingTest;

// Two bones, two frames, every record different.
void fillTwoBones(PVANIM& anim)
{
    anim.setNumberOfBones(2);
    anim.setNumberOfFrames(2);
    anim.setBoneName(0, "hip");
    anim.setBoneName(1, "knee");
    anim.setFrame(0, 0, 1, 2, 3);
    anim.getKeyframe(0, 0)->position = K3MVECTOR3D(0.5f, 0, 0);
    anim.getKeyframe(0, 1)->rotation = K3MVECTOR3D(0, 0, 90);
    anim.setFrame(1, 0, 10, 20, 30);
    anim.getKeyframe(1, 0)->position = K3MVECTOR3D(0, 1, 0);
    anim.setFrame(1, 1, -45, 0, 0);
    anim.getKeyframe(1, 1)->position = K3MVECTOR3D(0, 0, 2);
}

// What fillTwoBones saves: the header, 26, the counts, the names, then each
// frame's records (rotation, position, set flag).
const std::string twoBonesFile = pvtest::readFile(PEVRANO_TEST_DATA "/pva/two_bones.pva");

void expectRecord(PVANIM& anim, unsigned int frame, unsigned int bone, K3MVECTOR3D rotation,
                  K3MVECTOR3D position, bool set)
{
    const PVBONEFRAME* keyframe = anim.getKeyframe(frame, bone);
    SCOPED_TRACE("frame " + std::to_string(frame) + " bone " + std::to_string(bone));
    EXPECT_LT((keyframe->rotation - rotation).length() + (keyframe->position - position).length(), 1e-5f);
    EXPECT_EQ(keyframe->set, set);
}

// The file read back is the marker-0 copy of two_bones.pva, through the path
// prefix: saved again, it gives the same bytes.
TEST_F(Anims, SaveWritesTheLayoutAndLoadReadsItBack)
{
    PVANIM saved;
    fillTwoBones(saved);
    char name[] = "walk.pva", marker[] = "marker_zero.pva", copy[] = "copy.pva";
    ASSERT_TRUE(saved.save(name));
    EXPECT_EQ(pvtest::readFile(dir.file(name)), twoBonesFile);

    PVANIM loaded;
    PVANIM::setPVAPath(PEVRANO_TEST_DATA "/pva/");
    EXPECT_TRUE(loaded.load(marker));
    PVANIM::setPVAPath(nullptr);
    EXPECT_EQ(log.text(), "\n   Saving PVA file 'walk.pva'...\n\n   Loading PVA file 'marker_zero.pva'...\n"
                          "   Header: PVA file v1.6a\n");
    ASSERT_TRUE(loaded.save(copy));
    EXPECT_EQ(pvtest::readFile(dir.file(copy)), twoBonesFile);
    EXPECT_EQ(PVANIM::findByFilename("marker_zero.pva"), &loaded);
    // The record one past the last frame exists and is empty.
    expectRecord(loaded, 2, 1, {0, 0, 0}, {0, 0, 0}, false);
}

// Growing the table after keyframes exist keeps every record at its frame and
// bone, whichever count grows first; the new records are empty.
TEST_F(Anims, GrowingTheTableKeepsEveryRecordInPlace)
{
    for (const bool bonesFirst : {true, false}) {
        SCOPED_TRACE(bonesFirst ? "bones first" : "frames first");
        PVANIM anim;
        fillTwoBones(anim);
        anim.setBoneName(2, "foot");
        ASSERT_TRUE(bonesFirst ? anim.setNumberOfBones(3) : anim.setNumberOfFrames(3));
        ASSERT_TRUE(bonesFirst ? anim.setNumberOfFrames(3) : anim.setNumberOfBones(3));
        char name[] = "grown.pva";
        ASSERT_TRUE(anim.save(name));
        // The same with a third bone and a third frame, empty.
        EXPECT_EQ(pvtest::readFile(dir.file(name)), pvtest::readFile(PEVRANO_TEST_DATA "/pva/grown.pva"));
        expectRecord(anim, 3, 2, {0, 0, 0}, {0, 0, 0}, false);
    }
}

// Refused files leave the animation exactly as it was.
TEST_F(Anims, RefusedFilesLeaveTheAnimationUnchanged)
{
    const std::string corrupted = "\n   Loading PVA file '%s'...\n   Header: PVA file v1.6a\n"
                                  "   [!] Corrupted file %s @ PVANIM::load\n";
    const std::string badHeader =
        "\n   Loading PVA file '%s'...\n   [!] Invalid header in file %s @ PVANIM::load\n";
    const std::pair<std::string, std::vector<std::string>> groups[] = {
        {corrupted,
         {"truncated_records.pva", "truncated_names.pva", "truncated_counts.pva", "too_many_bones.pva",
          "long_bone_name.pva", "huge_frames.pva"}},
        {badHeader, {"truncated_header.pva", "wrong_header.pva"}},
        {"   [!] Invalid params or file not found @ PVANIM::load\n", {"missing.pva"}},
    };
    PVANIM::setPVAPath(PEVRANO_TEST_DATA "/pva/");
    for (const auto& group : groups)
        for (std::string file : group.second) {
            SCOPED_TRACE(file);
            pvtest::LogCapture caseLog;
            PVANIM anim;
            fillTwoBones(anim);
            EXPECT_FALSE(anim.load(&file[0]));
            std::string expected = group.first;
            for (size_t at; (at = expected.find("%s")) != std::string::npos;)
                expected.replace(at, 2, file);
            EXPECT_EQ(caseLog.text(), expected);
            char saved[] = "unchanged.pva";
            ASSERT_TRUE(anim.save(saved));
            EXPECT_EQ(pvtest::readFile(dir.file(saved)), twoBonesFile);
        }
    PVANIM::setPVAPath(nullptr);
}

TEST_F(Anims, FrameEditorsAcceptOnePastTheLastFrameOnly)
{
    PVANIM anim;
    anim.setNumberOfBones(3);
    anim.setNumberOfFrames(10);
    // Each edits one axis of the rotation (setFrame all three) to the value given.
    const struct {
        const char* name;
        bool (PVANIM::*axis)(unsigned int, unsigned int, float);
        K3MVECTOR3D rotation;  // of the record edited
    } editors[] = {{"setFrame", nullptr, {1, 2, 3}},
                   {"setFrameRotationX", &PVANIM::setFrameRotationX, {4, 0, 0}},
                   {"setFrameRotationY", &PVANIM::setFrameRotationY, {0, 5, 0}},
                   {"setFrameRotationZ", &PVANIM::setFrameRotationZ, {0, 0, 6}}};
    for (const auto& editor : editors) {
        SCOPED_TRACE(editor.name);
        const K3MVECTOR3D r = editor.rotation;
        auto edit = [&](unsigned int f, unsigned int b) {
            return editor.axis ? (anim.*editor.axis)(f, b, r.x + r.y + r.z)
                               : anim.setFrame(f, b, r.x, r.y, r.z);
        };
        anim.reset();
        anim.unsetFrame(10, 2);
        EXPECT_TRUE(edit(10, 2));
        EXPECT_TRUE(anim.getKeyframe(10, 2)->set);
        EXPECT_TRUE(edit(0, 0));
        EXPECT_EQ(anim.getFrameRotation(0, 0), editor.rotation);
        EXPECT_FALSE(edit(11, 0));
        EXPECT_FALSE(edit(0, 3));
        const std::string message = std::string("   [!] Invalid params @ PVANIM::") + editor.name + "\n";
        EXPECT_EQ(log.fresh(), message + message);
    }

    EXPECT_TRUE(anim.unsetFrame(10, 2));
    EXPECT_FALSE(anim.unsetFrame(10, 2));
    EXPECT_FALSE(anim.unsetFrame(11, 2));
    EXPECT_EQ(log.fresh(), "   [!] Invalid params @ PVANIM::unsetFrame\n");
}

TEST_F(Anims, CreateKeyframesInterpolatesRotationsBetweenSetFrames)
{
    PVANIM anim;
    anim.setNumberOfBones(2);
    anim.setNumberOfFrames(11);
    anim.setFrame(0, 0, 0, 0, 0);
    anim.setFrame(10, 0, 10, 20, -30);
    anim.getKeyframe(5, 0)->position = K3MVECTOR3D(7, 7, 7);
    // Bone 1: keys at 0, 4 and 8; the last stretch runs to frame 10, unset.
    anim.setFrame(0, 1, 0, 0, 0);
    anim.setFrame(4, 1, 8, 0, 0);
    anim.setFrame(8, 1, 0, 0, 40);
    anim.getKeyframe(10, 1)->rotation = K3MVECTOR3D(0, 0, 60);
    ASSERT_TRUE(anim.createKeyframes(0, 10));

    expectRecord(anim, 5, 0, {5, 10, -15}, {7, 7, 7}, false);
    expectRecord(anim, 10, 0, {10, 20, -30}, {0, 0, 0}, true);
    const float bone1X[] = {0, 2, 4, 6, 8, 6, 4, 2, 0, 0, 0};
    const float bone1Z[] = {0, 0, 0, 0, 0, 10, 20, 30, 40, 50, 60};
    for (unsigned int f = 0; f <= 10; f++) {
        SCOPED_TRACE(f);
        EXPECT_FLOAT_EQ(anim.getFrameRotation(f, 1).x, bone1X[f]);
        EXPECT_FLOAT_EQ(anim.getFrameRotation(f, 1).z, bone1Z[f]);
        EXPECT_EQ(anim.getKeyframe(f, 1)->set, f == 0 || f == 4 || f == 8);
    }

    EXPECT_FALSE(anim.createKeyframes(11, 11));
    EXPECT_FALSE(anim.createKeyframes(0, 12));
    EXPECT_FALSE(anim.createKeyframes(5, 5));
    const std::string line = "   [!] Invalid params @ PVANIM::createKeyframes\n";
    EXPECT_EQ(log.text(), line + line + line);
}

TEST_F(Anims, ApplyPosesBonesByNameAndMovesThemOnlyWhenTranslating)
{
    PVANIM anim;
    fillTwoBones(anim);
    PVNODE root, hip, knee, other;
    hip.setName("hip");
    knee.setName("knee");
    hip.link(&root);
    knee.link(&hip);
    other.link(&root);
    knee.setPosition(9, 9, 9);

    using Pose = std::vector<K3MVECTOR3D>;  // rotation and position of hip, knee, other
    auto pose = [&] {
        return Pose {hip.getRotation(),  hip.getPosition(),   knee.getRotation(),
                     knee.getPosition(), other.getRotation(), other.getPosition()};
    };
    ASSERT_TRUE(anim.apply(1, &root));
    EXPECT_EQ(pose(), (Pose {{10, 20, 30}, {0, 0, 0}, {-45, 0, 0}, {9, 9, 9}, {0, 0, 0}, {0, 0, 0}}));
    anim.setTranslating(true);
    ASSERT_TRUE(anim.apply(0, &root));
    EXPECT_EQ(pose(), (Pose {{1, 2, 3}, {0.5f, 0, 0}, {0, 0, 90}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}));

    EXPECT_FALSE(anim.apply(2, &root));
    EXPECT_FALSE(anim.apply(0, nullptr));
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVANIM::apply\n   [!] Invalid params @ PVANIM::apply\n");
}

TEST_F(Anims, RegistryNamesFindsAndReleases)
{
    const int ratioBefore = kvfGetMemoryStats().ratio;
    PVANIM* first = new PVANIM;
    PVANIM* second = new PVANIM;
    EXPECT_EQ(first->getName(), "[anim " + std::to_string(first->getId()) + "]");
    EXPECT_EQ(PVANIM::getNumberOfAnims(), 2);
    EXPECT_EQ(PVANIM::findById(second->getId()), second);
    fillTwoBones(*second);
    char knee[] = "knee";
    EXPECT_EQ(second->findBoneByName(knee), 1);
    EXPECT_EQ(first->findBoneByName(knee), -1);
    EXPECT_EQ(first->findBoneByName(nullptr), -1);
    EXPECT_FALSE(second->setNumberOfBones(129));
    EXPECT_EQ(second->getNumberOfBones(), 2u);
    EXPECT_TRUE(PVANIM::cleanUp());
    EXPECT_FALSE(PVANIM::cleanUp());
    EXPECT_EQ(kvfGetMemoryStats().ratio, ratioBefore) << "every counted block given back, no more";
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVANIM::findBoneByName\n   2 animation(s) released\n");
}

}  // namespace
