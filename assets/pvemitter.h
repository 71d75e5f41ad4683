/// \file
/// Particle emitter: a scene node that spawns, moves and draws small
/// camera-facing quads (fire, smoke, sparks, rain). Its behaviour comes from an
/// XML description; its particles come from one pool shared by every emitter,
/// allocated when the engine starts, so that nothing is allocated per frame.
/// Particles live in the emitter's own space and move with it.
#ifndef PEVRANO_ASSETS_PVEMITTER_H
#define PEVRANO_ASSETS_PVEMITTER_H

#include <GLES/gl.h>

#include <cstdint>

#include "math/k3mvector3d.h"
#include "math/k3mvector4d.h"
#include "scene/pvnode.h"

/// Particles in the pool when the settings ask for none, and the most it takes
/// (four vertices each must stay within 16-bit indices).
///@{
#define PV_EMITTER_DEFAULT_POOL 8192
#define PV_EMITTER_MAX_POOL 16384
///@}
/// Bursts an emitter description may list.
#define PV_EMITTER_MAX_BURSTS 16
/// Size of the texture file name of a description, terminator included.
#define PV_EMITTER_PATH_SIZE 256

class PVTEXTURE;

/// How particles blend with what is behind them: added, or by their alpha.
enum PV_EMITTER_BLENDING : int32_t { PV_EMITTER_ADDITIVE = 0, PV_EMITTER_ALPHA = 1 };

/// What an emitter is doing.
enum PV_EMITTER_STATE : int32_t {
    PV_EMITTER_STOPPED = 0,  ///< emits nothing; live particles finish their lives
    PV_EMITTER_RUNNING = 1,  ///< emits and moves its particles
    PV_EMITTER_PAUSED = 2,  ///< nothing moves, ages or is born
    PV_EMITTER_FINISHED = 3  ///< a one-shot emitter whose emission time is over
};

/// One particle of the pool, in the owning emitter's space.
struct PVPARTICLE {
    K3MVECTOR3D position;  ///< where it is
    K3MVECTOR3D velocity;  ///< units per second
    float age;  ///< seconds lived
    float life;  ///< seconds it lives
};

/// A burst: count particles at once, time seconds into each emission cycle.
struct PVBURST {
    float time;  ///< seconds into the cycle
    int count;  ///< particles born
};

/// Everything an emitter description sets.
struct PVEMITTERDEF {
    int maxParticles;  ///< most live particles
    float rate;  ///< particles per second
    float duration;  ///< seconds of one emission cycle; 0: endless
    bool looping;  ///< a new cycle starts when one ends
    PVBURST bursts[PV_EMITTER_MAX_BURSTS];  ///< the bursts of a cycle
    int numberOfBursts;  ///< bursts in use
    /// Lifetime range in seconds.
    ///@{
    float lifeMin, lifeMax;
    ///@}
    K3MVECTOR3D direction;  ///< centre of the spread cone (unit length)
    float spread;  ///< half angle of the cone, degrees
    /// Speed range, units per second.
    ///@{
    float speedMin, speedMax;
    ///@}
    K3MVECTOR3D acceleration;  ///< constant acceleration (gravity, wind)
    K3MVECTOR3D area;  ///< half extents of the box particles are born in
    /// Colour and quad width at birth and at death, interpolated between.
    ///@{
    K3MVECTOR4D colorBirth, colorDeath;
    float sizeBirth, sizeDeath;
    ///@}
    PV_EMITTER_BLENDING blending;  ///< how particles blend
    uint32_t seed;  ///< start of the random sequence
    char texture[PV_EMITTER_PATH_SIZE];  ///< texture file, empty for plain quads
};

/// A particle emitter: a scene node that spawns, moves and draws camera-facing
/// quads taken from the pool all emitters share. Nodes belong to the engine.
class PVEMITTER : public PVNODE {
public:
    /// Creates a stopped emitter with the default description. An emitter owns
    /// its particles: it cannot be copied.
    ///@{
    PVEMITTER();
    PVEMITTER(const PVEMITTER&) = delete;
    PVEMITTER& operator=(const PVEMITTER&) = delete;
    ///@}
    /// Gives the emitter's particles back to the pool and drops its texture.
    ~PVEMITTER() override;
    /// Draws every live particle in one call; advances the simulation by the
    /// frame time first, once per frame, when automatic update is on.
    bool render(void* element) override;

    /// Reads an emitter description; false, with a log line, for a file it
    /// cannot use (the emitter then keeps its previous description).
    bool load(const char* file);
    /// The same from XML text in memory; source names it in the log.
    bool loadFromText(const char* text, const char* source);
    /// The description in use.
    const PVEMITTERDEF& getDefinition() const { return definition; }

    /// Simulation. update advances by the given seconds; start begins (or
    /// resumes) emitting, stop ends emission and lets the particles die out,
    /// pause freezes everything, reset kills every particle and rewinds the
    /// cycle and the random sequence to the seed.
    ///@{
    void update(float seconds);
    void start();
    void stop();
    void pause();
    void reset();
    ///@}
    /// Sets the seed and restarts the random sequence from it.
    void setSeed(uint32_t value);
    /// What the emitter is doing; isRunning is getState() == PV_EMITTER_RUNNING.
    ///@{
    PV_EMITTER_STATE getState() const { return state; }
    bool isRunning() const { return state == PV_EMITTER_RUNNING; }
    ///@}
    /// With automatic update (the default) render advances by the engine's
    /// frame time; without it only update moves the particles.
    ///@{
    void setAutoUpdate(bool on) { autoUpdate = on; }
    bool isAutoUpdate() const { return autoUpdate; }
    ///@}

    /// Number of live particles.
    int getNumberOfParticles() const { return numberOfParticles; }
    /// Live particle i, null when i is not below the count.
    const PVPARTICLE* getParticle(int i) const;
    /// Distance from the emitter's origin that contains every live particle
    /// and its quad.
    float getRadius() const;

    /// The class-wide pool: particles particles (0 means the default, more
    /// than the maximum means the maximum), allocated by init (false when
    /// already active or out of memory) and released by free, for the engine;
    /// isActive between them; its size and the particles no emitter holds.
    ///@{
    static bool init(unsigned int particles = 0);
    static bool free();
    static bool isActive() { return active; }
    static unsigned int getPoolSize() { return poolSize; }
    static unsigned int getFreeParticles() { return numberOfFreeSlots; }
    ///@}

private:
    /// Simulation steps.
    void ageAndMove(float seconds);
    void emit(float seconds);
    void spawn(int count);
    bool spawnOne();
    void killAt(int index);
    void killAll();
    int fairShare() const;
    void setState(PV_EMITTER_STATE next);
    void randomDirection(K3MVECTOR3D& out);
    float randomRange(float low, float high);
    float random01();

    /// Drawing.
    void buildQuads(const float* modelView, int& quads) const;
    void applyBlending() const;
    void bindTexture() const;
    bool isClippedAway(const float* modelView) const;

    /// The description of a new emitter, and the one a file starts from.
    static PVEMITTERDEF defaultDefinition();
    bool replaceTexture(const char* name);
    bool applyDefinition(const PVEMITTERDEF& loaded, const char* source);

    PVEMITTERDEF definition;
    PVTEXTURE* texture;
    PV_EMITTER_STATE state;
    bool autoUpdate;
    bool exhaustionLogged;
    long updatedStamp;
    uint32_t randomState;
    double cycleTime;
    double emissionDebt;
    int nextBurst;
    /// Pool slots of the live particles, the first numberOfParticles in use.
    unsigned int* slots;
    int numberOfParticles;

    static bool active;
    static unsigned int poolSize;
    static PVPARTICLE* pool;
    static unsigned int* freeSlots;
    static unsigned int numberOfFreeSlots;
    /// Emitters currently wanting particles, among which the pool is shared.
    static unsigned int numberOfEmitting;
    /// Drawing arrays: four corners per particle, two triangles of six indices.
    static GLfixed* vertices;
    static GLubyte* colors;
    static GLfixed* texCoords;
    static GLushort* indices;
};

#endif
