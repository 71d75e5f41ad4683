/// \file
/// What the frame shares with the classes that draw it: the frame stamp, the
/// frame timer, the video-memory account and the shadow switch. PEVRANO sets
/// them and offers them to applications through its own getters; textures,
/// materials, nodes, lights, emitters and text fields read them here, so they
/// need nothing from the engine class above them.
#ifndef PEVRANO_CORE_PVFRAMESTATE_H
#define PEVRANO_CORE_PVFRAMESTATE_H

/// Frame stamp, frame timer, video-memory account and shadow switch; static only.
class PVFRAMESTATE {
public:
    /// The frame counter: 65536 before the first frame, one more each 3D pass.
    static long getTimeStamp() { return timeStamp; }
    /// Frames per second and seconds of the last frame; -1 without a timer.
    ///@{
    static float getFPS();
    static float getFPSfactor();
    ///@}

    /// Video-memory budget; the counters wrap, they are never checked.
    ///@{
    static unsigned int getVideoMemory() { return videoMemoryTotal; }
    static unsigned int getUsedVideoMemory() { return videoMemoryUsed; }
    static unsigned int getFreeVideoMemory() { return videoMemoryTotal - videoMemoryUsed; }
    static unsigned int pushVideoMemory(unsigned int bytes) { return videoMemoryUsed += bytes; }
    static unsigned int popVideoMemory(unsigned int bytes) { return videoMemoryUsed -= bytes; }
    ///@}

    /// Whether shadowing is switched on (PEVRANO::shadowingOn).
    static bool isShadowed() { return shadowing; }

private:
    friend class PEVRANO;
    friend struct PVTESTACCESS;

    static long timeStamp;
    static int timer;
    static unsigned int videoMemoryTotal;
    static unsigned int videoMemoryUsed;
    static bool shadowing;
};

#endif
