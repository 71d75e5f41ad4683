// A skinned character playing and blending its animations. The build converts
// Assimp's test model Testwuson.X with pevrano-convert into a scene file
// (character.pve: meshes skinned to a skeleton) and one animation file per
// take (character_0_Wuson_Run.pva, character_1_Wuson_Walk.pva). The
// character walks, breaks into a run and slows down again: every frame, the
// pose of both takes at the current time is mixed bone by bone, weighted by
// how fast it goes, into a one-frame animation that poses the skeleton.
//
// The calls that matter: PEVRANO::load, PVANIM::load, PVANIM::getKeyframe,
// PVANIM::setNumberOfBones/setNumberOfFrames/setBoneName, PVANIM::apply,
// PVANIM::setTranslating.
#include "galleryrun.h"

#include <pevrano.h>

#include <cmath>

namespace {

const float takeFramesPerSecond = 30.0f;  // pevrano-convert's default rate

PVANIM* loadTake(const char* file)
{
    PVANIM* take = new PVANIM();  // animations belong to the engine
    return take->load(const_cast<char*>(file)) && take->getNumberOfFrames() ? take : nullptr;
}

// The same bones as the take, one frame long: the mixed pose goes there.
PVANIM* poseLike(PVANIM* take)
{
    PVANIM* pose = new PVANIM();
    pose->setNumberOfBones(take->getNumberOfBones());
    pose->setNumberOfFrames(1);
    for (unsigned int bone = 0; bone < take->getNumberOfBones(); ++bone)
        pose->setBoneName(bone, take->getBoneName(bone));
    pose->setTranslating(true);  // converted takes move bones as well as turn them
    return pose;
}

// Angles in degrees go the short way round.
float mixAngle(float a, float b, float weight)
{
    const float turn = std::remainder(b - a, 360.0f);
    return a + turn * weight;
}

// pose = (1 - weight) * walk at its frame + weight * run at its frame, per bone.
void mix(PVANIM* pose, PVANIM* walk, unsigned int walkFrame, PVANIM* run, unsigned int runFrame, float weight)
{
    for (unsigned int bone = 0; bone < pose->getNumberOfBones(); ++bone) {
        const int other = walk->findBoneByName(run->getBoneName(bone));
        const PVBONEFRAME* a = other >= 0 ? walk->getKeyframe(walkFrame, other) : nullptr;
        const PVBONEFRAME* b = run->getKeyframe(runFrame, bone);
        PVBONEFRAME* out = pose->getKeyframe(0, bone);
        if (!a || !b)
            continue;
        out->rotation = K3MVECTOR3D(mixAngle(a->rotation.x, b->rotation.x, weight),
                                    mixAngle(a->rotation.y, b->rotation.y, weight),
                                    mixAngle(a->rotation.z, b->rotation.z, weight));
        out->position = a->position + (b->position - a->position) * weight;
        out->set = true;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "04_character");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.55f, 0.7f, 0.85f, 1.0f);
    PVOPENGL::setGlobalAmbientLight(0.3f, 0.3f, 0.3f, 1.0f);

    PEVRANO::setPVEPath(GALLERY_MADE);  // where the build converted the model
    PVANIM::setPVAPath(GALLERY_MADE);
    PVNODE* scene = new PVNODE();
    PVNODE* character = PEVRANO::load("character.pve");
    PVANIM* walking = loadTake("character_1_Wuson_Walk.pva");
    PVANIM* running = loadTake("character_0_Wuson_Run.pva");
    if (!character || !walking || !running)
        return run.finish();  // the log says what is missing
    character->setRotation(0.0f, 60.0f, 0.0f);  // its side towards the camera
    character->link(scene);
    PVANIM* pose = poseLike(running);

    PVLIGHT* light = new PVLIGHT();
    light->setPosition(3.0f, 5.0f, 5.0f);
    light->link(scene);
    PVCAMERA* camera = new PVCAMERA();
    camera->setPosition(0.0f, 1.5f, 5.0f);
    camera->setTargetNode(camera);
    camera->setTarget(0.0f, 0.5f, 0.0f);

    float clock = 0.0f;  // seconds
    while (run.nextFrame()) {
        run.pollEvents();  // PEVRANO::pollEvent until none is left; Escape ends the run
        clock += run.seconds();
        const float speed = 0.5f + 0.5f * std::sin(clock * 0.8f);  // 0 walking .. 1 running
        const unsigned int frame = static_cast<unsigned int>(clock * takeFramesPerSecond);
        mix(pose, walking, frame % walking->getNumberOfFrames(), running,
            frame % running->getNumberOfFrames(), speed);
        pose->apply(0, character);  // before the 3D pass: the skin follows the bones

        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(camera);
        scene->pass(false);
        PEVRANO::end3D(false);
        run.endFrame();
    }
    return run.finish();
}
