#include "assets/pvemitter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "assets/pvtexture.h"
#include "core/pvframestate.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "scene/pvelement.h"
#include "scene/pvlight.h"

bool PVEMITTER::active = false;
unsigned int PVEMITTER::poolSize = 0;
PVPARTICLE* PVEMITTER::pool = nullptr;
unsigned int* PVEMITTER::freeSlots = nullptr;
unsigned int PVEMITTER::numberOfFreeSlots = 0;
unsigned int PVEMITTER::numberOfEmitting = 0;
GLfixed* PVEMITTER::vertices = nullptr;
GLubyte* PVEMITTER::colors = nullptr;
GLfixed* PVEMITTER::texCoords = nullptr;
GLushort* PVEMITTER::indices = nullptr;

namespace {

// Longest frame the automatic update simulates at once: a stall must not
// release a whole second of particles in one frame.
const float longestFrame = 0.25f;
const float pi = 3.14159265358979f;
// Largest eye-space coordinate a 16.16 fixed-point vertex holds.
const float fixedReach = 32767.0f;

float lerp(float a, float b, float t) { return a + (b - a) * t; }

GLubyte colourByte(float value)
{
    return static_cast<GLubyte>(std::min(1.0f, std::max(0.0f, value)) * 255.0f + 0.5f);
}

}  // namespace

PVEMITTERDEF PVEMITTER::defaultDefinition()
{
    PVEMITTERDEF d {};
    d.maxParticles = 100;
    d.rate = 10.0f;
    d.duration = 0.0f;
    d.looping = true;
    d.lifeMin = d.lifeMax = 1.0f;
    d.direction = K3MVECTOR3D(0.0f, 1.0f, 0.0f);
    d.speedMin = d.speedMax = 1.0f;
    d.colorBirth = K3MVECTOR4D(1.0f, 1.0f, 1.0f, 1.0f);
    d.colorDeath = K3MVECTOR4D(1.0f, 1.0f, 1.0f, 0.0f);
    d.sizeBirth = d.sizeDeath = 0.1f;
    d.blending = PV_EMITTER_ADDITIVE;
    d.seed = 1;
    return d;
}

// ---------------------------------------------------------------------------
// The class-wide pool.

bool PVEMITTER::init(unsigned int particles)
{
    if (active) {
        kvfLog("   [!] Already active @ PVEMITTER::init\n");
        return false;
    }
    if (particles == 0)
        particles = PV_EMITTER_DEFAULT_POOL;
    particles = std::min(particles, static_cast<unsigned int>(PV_EMITTER_MAX_POOL));
    pool = static_cast<PVPARTICLE*>(kvfMalloc(particles * sizeof(PVPARTICLE)));
    freeSlots = static_cast<unsigned int*>(kvfMalloc(particles * sizeof(unsigned int)));
    vertices = static_cast<GLfixed*>(kvfMalloc(particles * 12 * sizeof(GLfixed)));
    colors = static_cast<GLubyte*>(kvfMalloc(particles * 16));
    texCoords = static_cast<GLfixed*>(kvfMalloc(particles * 8 * sizeof(GLfixed)));
    indices = static_cast<GLushort*>(kvfMalloc(particles * 6 * sizeof(GLushort)));
    poolSize = particles;
    if (!pool || !freeSlots || !vertices || !colors || !texCoords || !indices) {
        kvfLog("   [!] Out of memory @ PVEMITTER::init\n");
        active = true;
        free();
        return false;
    }
    // Free slots are handed out lowest first.
    for (unsigned int i = 0; i < particles; i++)
        freeSlots[i] = particles - 1 - i;
    numberOfFreeSlots = particles;
    // Every quad has the whole texture and the same two triangles.
    const GLfixed corners[8] = {0, 0, 65536, 0, 65536, 65536, 0, 65536};
    const GLushort triangles[6] = {0, 1, 2, 0, 2, 3};
    for (unsigned int i = 0; i < particles; i++) {
        std::memcpy(texCoords + 8 * i, corners, sizeof(corners));
        for (int k = 0; k < 6; k++)
            indices[6 * i + k] = static_cast<GLushort>(4 * i + triangles[k]);
    }
    active = true;
    return true;
}

bool PVEMITTER::free()
{
    if (!active)
        return false;
    // Emitters that outlive the pool keep no particle of it.
    for (PVNODE* node = PVNODE::getFirstNode(); node; node = node->getNextNode())
        if (node->getType() == PV_TYPE_EMITTER)
            static_cast<PVEMITTER*>(node)->numberOfParticles = 0;
    void* blocks[] = {pool, freeSlots, vertices, colors, texCoords, indices};
    for (void* block : blocks)
        if (block)
            kvfFree(block);
    pool = nullptr;
    freeSlots = nullptr;
    vertices = nullptr;
    colors = nullptr;
    texCoords = nullptr;
    indices = nullptr;
    poolSize = numberOfFreeSlots = 0;
    active = false;
    return true;
}

// ---------------------------------------------------------------------------
// Life of an emitter.

PVEMITTER::PVEMITTER() :
    definition(defaultDefinition()),
    texture(nullptr),
    state(PV_EMITTER_STOPPED),
    autoUpdate(true),
    exhaustionLogged(false),
    updatedStamp(0),
    randomState(1),
    cycleTime(0.0),
    emissionDebt(0.0),
    nextBurst(0),
    slots(nullptr),
    numberOfParticles(0)
{
    type = PV_TYPE_EMITTER;
    setDefaultName("[emitter %d]");
    slots = static_cast<unsigned int*>(kvfMalloc(definition.maxParticles * sizeof(unsigned int)));
    reset();
}

PVEMITTER::~PVEMITTER()
{
    setState(PV_EMITTER_STOPPED);
    killAll();
    replaceTexture("");
    if (slots)
        kvfFree(slots);
}

void PVEMITTER::setState(PV_EMITTER_STATE next)
{
    if (state == PV_EMITTER_RUNNING && next != PV_EMITTER_RUNNING)
        numberOfEmitting--;
    else if (state != PV_EMITTER_RUNNING && next == PV_EMITTER_RUNNING)
        numberOfEmitting++;
    state = next;
}

void PVEMITTER::start()
{
    // A finished or stopped emitter begins a new emission cycle.
    if (state == PV_EMITTER_FINISHED || state == PV_EMITTER_STOPPED) {
        cycleTime = 0.0;
        emissionDebt = 0.0;
        nextBurst = 0;
    }
    setState(PV_EMITTER_RUNNING);
}

void PVEMITTER::stop() { setState(PV_EMITTER_STOPPED); }

void PVEMITTER::pause()
{
    if (state == PV_EMITTER_RUNNING)
        setState(PV_EMITTER_PAUSED);
}

void PVEMITTER::reset()
{
    killAll();
    cycleTime = 0.0;
    emissionDebt = 0.0;
    nextBurst = 0;
    randomState = definition.seed ? definition.seed : 0x9e3779b9u;
    exhaustionLogged = false;
    setState(PV_EMITTER_RUNNING);
}

void PVEMITTER::setSeed(uint32_t value)
{
    definition.seed = value;
    randomState = value ? value : 0x9e3779b9u;
}

const PVPARTICLE* PVEMITTER::getParticle(int i) const
{
    return (i >= 0 && i < numberOfParticles && pool) ? &pool[slots[i]] : nullptr;
}

float PVEMITTER::getRadius() const
{
    float radius = 0.0f;
    for (int i = 0; i < numberOfParticles; i++) {
        const PVPARTICLE& p = pool[slots[i]];
        const float half = 0.5f * std::max(definition.sizeBirth, definition.sizeDeath);
        radius = std::max(radius, std::sqrt(p.position % p.position) + half);
    }
    return radius;
}

// ---------------------------------------------------------------------------
// Simulation.

void PVEMITTER::update(float seconds)
{
    if (!(seconds > 0.0f) || !std::isfinite(seconds) || state == PV_EMITTER_PAUSED || !pool)
        return;
    ageAndMove(seconds);
    if (state == PV_EMITTER_RUNNING)
        emit(seconds);
}

void PVEMITTER::ageAndMove(float seconds)
{
    const K3MVECTOR3D gained = definition.acceleration * seconds;
    int i = 0;
    while (i < numberOfParticles) {
        PVPARTICLE& p = pool[slots[i]];
        p.age += seconds;
        if (p.age >= p.life) {
            killAt(i);
            continue;
        }
        p.velocity += gained;
        p.position += p.velocity * seconds;
        i++;
    }
}

void PVEMITTER::emit(float seconds)
{
    const double duration = definition.duration;
    const bool endless = duration <= 0.0;
    const double before = cycleTime;
    double after = before + seconds;
    const double emitUntil = (endless || definition.looping) ? after : std::min(after, duration);
    emissionDebt += definition.rate * std::max(0.0, emitUntil - before);
    // No more can be born at once than the emitter holds.
    emissionDebt = std::min(emissionDebt, double(definition.maxParticles));
    const int due = static_cast<int>(emissionDebt);
    emissionDebt -= due;
    spawn(due);

    const double cycleEnd = endless ? after : std::min(after, duration);
    while (nextBurst < definition.numberOfBursts && definition.bursts[nextBurst].time < cycleEnd)
        spawn(definition.bursts[nextBurst++].count);
    if (!endless && after >= duration) {
        if (!definition.looping) {
            setState(PV_EMITTER_FINISHED);
            return;
        }
        // Missed whole cycles are skipped: their bursts are not replayed.
        after = std::fmod(after, duration);
        nextBurst = 0;
        while (nextBurst < definition.numberOfBursts && definition.bursts[nextBurst].time < after)
            spawn(definition.bursts[nextBurst++].count);
    }
    cycleTime = after;
}

// Every running emitter may hold an equal part of the pool, so that one
// emitter cannot starve the others; particles beyond what it may hold are
// not born (they are not postponed).
int PVEMITTER::fairShare() const
{
    return static_cast<int>(std::max(1u, poolSize / std::max(1u, numberOfEmitting)));
}

void PVEMITTER::spawn(int count)
{
    const int share = fairShare();
    const int limit = std::min(definition.maxParticles, share);
    int born = 0;
    while (born < count && numberOfParticles < limit && spawnOne())
        born++;
    // Logged once: demand the emitter's own maximum allows but the pool refuses.
    const bool refusedByPool = born < count && numberOfParticles < definition.maxParticles;
    if (refusedByPool && !exhaustionLogged) {
        kvfLog("   [!] Particle pool exhausted by %s @ PVEMITTER::update\n", name);
        exhaustionLogged = true;
    }
}

bool PVEMITTER::spawnOne()
{
    if (!numberOfFreeSlots || !slots)
        return false;
    const unsigned int slot = freeSlots[--numberOfFreeSlots];
    slots[numberOfParticles++] = slot;
    PVPARTICLE& p = pool[slot];
    p.age = 0.0f;
    p.life = randomRange(definition.lifeMin, definition.lifeMax);
    K3MVECTOR3D direction;
    randomDirection(direction);
    p.velocity = direction * randomRange(definition.speedMin, definition.speedMax);
    const K3MVECTOR3D& area = definition.area;
    p.position =
        K3MVECTOR3D(randomRange(-area.x, area.x), randomRange(-area.y, area.y), randomRange(-area.z, area.z));
    return true;
}

void PVEMITTER::killAt(int index)
{
    freeSlots[numberOfFreeSlots++] = slots[index];
    slots[index] = slots[--numberOfParticles];
}

void PVEMITTER::killAll()
{
    while (numberOfParticles > 0 && pool)
        killAt(numberOfParticles - 1);
    numberOfParticles = 0;
}

// Uniform over the spherical cap of the spread cone around the direction.
void PVEMITTER::randomDirection(K3MVECTOR3D& out)
{
    const K3MVECTOR3D& axis = definition.direction;
    const float cosLimit = std::cos(definition.spread * pi / 180.0f);
    const float cosTheta = randomRange(cosLimit, 1.0f);
    const float sinTheta = std::sqrt(std::max(0.0f, 1.0f - cosTheta * cosTheta));
    const float phi = randomRange(0.0f, 2.0f * pi);
    // Two unit vectors perpendicular to the axis and to each other.
    const K3MVECTOR3D helper =
        std::fabs(axis.x) < 0.9f ? K3MVECTOR3D(1.0f, 0.0f, 0.0f) : K3MVECTOR3D(0.0f, 1.0f, 0.0f);
    K3MVECTOR3D u = axis ^ helper;
    u /= std::sqrt(u % u);
    const K3MVECTOR3D v = axis ^ u;
    out = axis * cosTheta + (u * std::cos(phi) + v * std::sin(phi)) * sinTheta;
}

float PVEMITTER::randomRange(float low, float high) { return low + (high - low) * random01(); }

// xorshift32: a short, fast sequence that repeats exactly for a given seed.
float PVEMITTER::random01()
{
    uint32_t x = randomState;
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    randomState = x;
    return static_cast<float>(x >> 8) * (1.0f / 16777216.0f);
}

// ---------------------------------------------------------------------------
// Drawing.

bool PVEMITTER::render(void* element)
{
    PVELEMENT* record = static_cast<PVELEMENT*>(element);
    if (!record || PVOPENGL::getProfile() != PV_OPENGL_PROFILE_NORMAL)
        return false;
    if (autoUpdate && updatedStamp != PVFRAMESTATE::getTimeStamp()) {
        updatedStamp = PVFRAMESTATE::getTimeStamp();
        update(std::min(PVFRAMESTATE::getFPSfactor(), longestFrame));
    }
    const float* modelView = record->getMatrix()->m;
    if (!numberOfParticles || !active || isClippedAway(modelView))
        return true;
    int quads = 0;
    buildQuads(modelView, quads);

    PVLIGHT::lightingOff();
    applyBlending();
    bindTexture();
    glDepthMask(GL_FALSE);
    PVOPENGL::vertexArrayOn();
    PVOPENGL::normalArrayOff();
    PVOPENGL::colorArrayOn();
    // The quads are built in eye space.
    PV_glLoadIdentity();
    glVertexPointer(3, GL_FIXED, 0, vertices);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colors);
    glTexCoordPointer(2, GL_FIXED, 0, texCoords);
    glDrawElements(GL_TRIANGLES, quads * 6, GL_UNSIGNED_SHORT, indices);
    glDepthMask(GL_TRUE);
    // Meshes never set the colour array: left on, it would colour the next
    // unlit draw, a pick's colour codes among them.
    PVOPENGL::colorArrayOff();
    return true;
}

// Same distance test as the render list applies to meshes, with the extent of
// the particles as radius.
bool PVEMITTER::isClippedAway(const float* modelView) const
{
    if (!PVELEMENT::isClipping())
        return false;
    const float distance = std::sqrt(modelView[12] * modelView[12] + modelView[13] * modelView[13] +
                                     modelView[14] * modelView[14]);
    if (distance <= PVELEMENT::getClippingRadius() + 2.0f * getRadius())
        return false;
    kvfLog(" (clipped) %s at distance %.2f\n", name, static_cast<double>(distance));
    return true;
}

// Each particle becomes a square facing the eye, coloured and sized between
// its birth and death values by the fraction of its life spent.
void PVEMITTER::buildQuads(const float* m, int& quads) const
{
    const PVEMITTERDEF& d = definition;
    for (int i = 0; i < numberOfParticles; i++) {
        const PVPARTICLE& p = pool[slots[i]];
        const float t = std::min(1.0f, p.age / p.life);
        const float half = 0.5f * lerp(d.sizeBirth, d.sizeDeath, t);
        const float x = m[0] * p.position.x + m[4] * p.position.y + m[8] * p.position.z + m[12];
        const float y = m[1] * p.position.x + m[5] * p.position.y + m[9] * p.position.z + m[13];
        const float z = m[2] * p.position.x + m[6] * p.position.y + m[10] * p.position.z + m[14];
        // A quad beyond the reach of 16.16 fixed point is far out of view.
        if (!(std::fabs(x) + half < fixedReach && std::fabs(y) + half < fixedReach &&
              std::fabs(z) < fixedReach))
            continue;
        const float corners[4][2] = {{-half, -half}, {half, -half}, {half, half}, {-half, half}};
        const GLubyte rgba[4] = {colourByte(lerp(d.colorBirth.x, d.colorDeath.x, t)),
                                 colourByte(lerp(d.colorBirth.y, d.colorDeath.y, t)),
                                 colourByte(lerp(d.colorBirth.z, d.colorDeath.z, t)),
                                 colourByte(lerp(d.colorBirth.w, d.colorDeath.w, t))};
        GLfixed* v = vertices + 12 * quads;
        GLubyte* c = colors + 16 * quads;
        for (int k = 0; k < 4; k++) {
            v[3 * k] = PV_floatToFixed(x + corners[k][0]);
            v[3 * k + 1] = PV_floatToFixed(y + corners[k][1]);
            v[3 * k + 2] = PV_floatToFixed(z);
            std::memcpy(c + 4 * k, rgba, 4);
        }
        quads++;
    }
}

void PVEMITTER::applyBlending() const
{
    PVOPENGL::blendingOn();
    if (definition.blending == PV_EMITTER_ADDITIVE)
        glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    else
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

// ---------------------------------------------------------------------------
// Descriptions.

// The particles of the previous description die; the random sequence starts
// again from the new seed.
bool PVEMITTER::applyDefinition(const PVEMITTERDEF& loaded, const char* source)
{
    unsigned int* newSlots = slots;
    if (loaded.maxParticles != definition.maxParticles || !slots)
        newSlots = static_cast<unsigned int*>(kvfMalloc(loaded.maxParticles * sizeof(unsigned int)));
    if (!newSlots) {
        kvfLog("   [!] Out of memory @ PVEMITTER::load\n");
        return false;
    }
    if (!replaceTexture(loaded.texture)) {
        if (newSlots != slots)
            kvfFree(newSlots);
        return false;
    }
    killAll();
    if (newSlots != slots) {
        if (slots)
            kvfFree(slots);
        slots = newSlots;
    }
    definition = loaded;
    reset();
    kvfLog("   Emitter %s loaded from %s\n", name, source);
    return true;
}

// Emitters share a texture of the same file; each holds one reference.
bool PVEMITTER::replaceTexture(const char* file)
{
    PVTEXTURE* replacement = nullptr;
    if (*file) {
        bool loadedNow = false;
        replacement = PVTEXTURE::acquire(file, &loadedNow);
        // A texture read now is uploaded at once, so that a file that gives
        // no pixels is refused here rather than at the first draw.
        if (replacement && loadedNow && !replacement->update()) {
            delete replacement;
            replacement = nullptr;
        }
        if (!replacement) {
            kvfLog("   [!] Unable to load texture %s @ PVEMITTER::load\n", file);
            return false;
        }
    }
    if (texture)
        texture->decReferences();
    texture = replacement;
    return true;
}

void PVEMITTER::bindTexture() const
{
    if (texture) {
        PVOPENGL::textureArrayOn();
        texture->render(nullptr);
    } else {
        PVOPENGL::textureArrayOff();
        PVTEXTURE::texturingOff(0);
    }
}
