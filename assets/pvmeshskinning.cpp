// Mesh: CPU skinning in 16.16, one influence at a time or, where the
// processor has AVX2, four lanes at a time with the same results.
#include "assets/pvmesh.h"

#include <immintrin.h>

#include "core/pvgl.h"
#include "foundation/kvflog.h"

bool PVMESH::vectorSkinning = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}();

namespace {

// Signed 32 x 32 -> 64-bit product shifted right by 16.
inline int32_t mulFixed(int32_t a, int32_t b) { return static_cast<int32_t>((int64_t(a) * b) >> 16); }

// 32-bit sums wrap, as the target's integer unit does.
inline int32_t add32(int32_t a, int32_t b) { return static_cast<int32_t>(uint32_t(a) + uint32_t(b)); }

struct SKINJOB {
    unsigned int vertexCount;
    unsigned int perVertex;
    const GLfixed* vertices;
    const GLfixed* normals;
    const uint8_t* boneIndex;
    const float* boneWeight;
    const GLfixed (*bone)[16];
    unsigned int boneCount;
    GLfixed* outP;
    GLfixed* outN;
};

// One influence at a time, every product a 64-bit multiply shifted by 16;
// every output is written.
void skinOneByOne(const SKINJOB& job)
{
    for (unsigned int v = 0; v < job.vertexCount; v++) {
        const GLfixed* p = job.vertices + 3 * v;
        const GLfixed* n = job.normals + 3 * v;
        int32_t outP[3] = {0, 0, 0}, outN[3] = {0, 0, 0};
        for (unsigned int j = 0; j < job.perVertex; j++) {
            const size_t influence = size_t(v) * job.perVertex + j;
            const int32_t w = PV_floatToFixed(job.boneWeight[influence]);
            if (w <= 0)
                continue;
            const GLfixed* m = job.bone[job.boneIndex[influence]];
            for (int c = 0; c < 3; c++) {
                const int32_t turned =
                    add32(add32(mulFixed(p[0], m[c]), mulFixed(p[1], m[4 + c])), mulFixed(p[2], m[8 + c]));
                const int32_t q = add32(turned, m[12 + c]);
                const int32_t nc =
                    add32(add32(mulFixed(n[0], m[c]), mulFixed(n[1], m[4 + c])), mulFixed(n[2], m[8 + c]));
                outP[c] = add32(outP[c], mulFixed(q, w));
                outN[c] = add32(outN[c], mulFixed(nc, w));
            }
        }
        for (int c = 0; c < 3; c++) {
            job.outP[3 * v + c] = outP[c];
            job.outN[3 * v + c] = outN[c];
        }
    }
}

// The same arithmetic in 64-bit lanes, two influences at a time in three
// registers: (q.x, q.y, q.z, n.x) of each, and (n.y, n.z) of both. A signed
// 32 x 32 -> 64 multiply reads the low 32 bits of each lane, and only bits
// 16 to 47 of a product survive the shift and the 32-bit truncation, so
// logical shifts and 64-bit sums give exactly the wrapped 32-bit results.
// A skipped influence weighs zero, which adds nothing.
struct BONELANES {
    __m256i x, y, z, t;
    __m256i nx, ny, nz;  // (n.y, n.z) coefficients, twice
    __m256i padding;  // 256 bytes: a bone index scales by a shift
};

struct VERTEXLANES {
    __m256i px, py, pz;  // (p, p, p, n) per coordinate
    __m256i nx, ny, nz;  // n per coordinate in every lane
};

__attribute__((target("avx2"))) inline __m256i mulShifted(__m256i a, __m256i b)
{
    return _mm256_srli_epi64(_mm256_mul_epi32(a, b), 16);
}

__attribute__((target("avx2"))) inline __m256i bothHalves(__m256i low, __m256i high)
{
    return _mm256_blend_epi32(low, high, 0xF0);
}

// Weights in 16.16 as PV_floatToFixed gives them, in 64-bit lanes, with
// those at or below zero (NaN included) as zero. The truncating conversion
// gives INT_MIN for NaN and out of range values: large positive ones are
// saturated by hand.
__attribute__((target("avx2"))) inline __m256i positiveWeights(__m128 weights)
{
    const __m128 scaled = _mm_mul_ps(weights, _mm_set1_ps(65536.0f));
    const __m128 tooLarge = _mm_cmpge_ps(scaled, _mm_set1_ps(2147483648.0f));
    __m128i w =
        _mm_blendv_epi8(_mm_cvttps_epi32(scaled), _mm_set1_epi32(2147483647), _mm_castps_si128(tooLarge));
    return _mm256_cvtepi32_epi64(_mm_max_epi32(w, _mm_setzero_si128()));
}

// (q.x, q.y, q.z, n.x) of one influence, weighted.
__attribute__((target("avx2"))) inline __m256i weightedPoint(const VERTEXLANES& v, const BONELANES& m,
                                                             __m256i w)
{
    __m256i q = _mm256_add_epi64(mulShifted(v.px, m.x), mulShifted(v.py, m.y));
    q = _mm256_add_epi64(q, _mm256_add_epi64(mulShifted(v.pz, m.z), m.t));
    return mulShifted(q, w);
}

// (n.y, n.z) of two influences, weighted by wa and wb.
__attribute__((target("avx2"))) inline __m256i weightedNormals(const VERTEXLANES& v, const BONELANES& a,
                                                               const BONELANES& b, __m256i wa, __m256i wb)
{
    __m256i t =
        _mm256_add_epi64(mulShifted(v.nx, bothHalves(a.nx, b.nx)), mulShifted(v.ny, bothHalves(a.ny, b.ny)));
    t = _mm256_add_epi64(t, mulShifted(v.nz, bothHalves(a.nz, b.nz)));
    return mulShifted(t, _mm256_blend_epi32(wa, wb, 0xF0));
}

// Only the low 32 bits of a lane take part in a multiply: the lanes are
// broadcasts of 32-bit values.
__attribute__((target("avx2"))) inline VERTEXLANES vertexLanes(const GLfixed* p, const GLfixed* n)
{
    const __m256i nx = _mm256_set1_epi32(n[0]), ny = _mm256_set1_epi32(n[1]), nz = _mm256_set1_epi32(n[2]);
    return {_mm256_blend_epi32(_mm256_set1_epi32(p[0]), nx, 0xC0),
            _mm256_blend_epi32(_mm256_set1_epi32(p[1]), ny, 0xC0),
            _mm256_blend_epi32(_mm256_set1_epi32(p[2]), nz, 0xC0),
            nx,
            ny,
            nz};
}

// The low 32 bits of the lanes (q.x, q.y, q.z, n.x) and of the two halves
// of (n.y, n.z, n.y, n.z), written four at a time: the fourth value lands on
// the next vertex, written after, or on the spare element past the end.
__attribute__((target("avx2"))) inline void storeVertex(__m256i point, __m256i normals, GLfixed* outP,
                                                        GLfixed* outN)
{
    const __m128i low = _mm256_castsi256_si128(point);
    const __m128i high = _mm256_extracti128_si256(point, 1);
    const __m128i q = _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(low), _mm_castsi128_ps(high), _MM_SHUFFLE(2, 0, 2, 0)));
    const __m128i yz = _mm_add_epi32(_mm256_castsi256_si128(normals), _mm256_extracti128_si256(normals, 1));
    const __m128i xyz =
        _mm_blend_epi32(_mm_shuffle_epi32(yz, _MM_SHUFFLE(0, 2, 0, 0)), _mm_shuffle_epi32(high, 2), 0x1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(outP), q);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(outN), xyz);
}

// Influences per vertex known at compile time (or 0: read from the job) let
// the common counts run unrolled.
template <unsigned int PERVERTEX>
__attribute__((target("avx2"))) void skinVertices(const SKINJOB& job, const BONELANES* lanes)
{
    const unsigned int perVertex = PERVERTEX ? PERVERTEX : job.perVertex;
    for (unsigned int v = 0; v < job.vertexCount; v++) {
        const VERTEXLANES vertex = vertexLanes(job.vertices + 3 * v, job.normals + 3 * v);
        const uint8_t* index = job.boneIndex + size_t(v) * perVertex;
        const float* weight = job.boneWeight + size_t(v) * perVertex;
        __m256i accumulated = _mm256_setzero_si256();
        __m256i accumulatedNormals = _mm256_setzero_si256();
        for (unsigned int j = 0; j < perVertex; j += 2) {
            // An odd last influence pairs with itself at weight zero.
            const bool pair = j + 1 < perVertex;
            const BONELANES& a = lanes[index[j]];
            const BONELANES& b = lanes[index[pair ? j + 1 : j]];
            const __m256i w = positiveWeights(
                pair ? _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(weight + j)))
                     : _mm_load_ss(weight + j));
            const __m256i wa = _mm256_permute4x64_epi64(w, 0x00);
            const __m256i wb = _mm256_permute4x64_epi64(w, 0x55);
            accumulated = _mm256_add_epi64(accumulated, weightedPoint(vertex, a, wa));
            accumulated = _mm256_add_epi64(accumulated, weightedPoint(vertex, b, wb));
            accumulatedNormals = _mm256_add_epi64(accumulatedNormals, weightedNormals(vertex, a, b, wa, wb));
        }
        storeVertex(accumulated, accumulatedNormals, job.outP + 3 * v, job.outN + 3 * v);
    }
}

__attribute__((target("avx2"))) void skinWithAvx2(const SKINJOB& job)
{
    BONELANES lanes[PV_MESH_BONES];
    for (unsigned int b = 0; b < job.boneCount; b++) {
        const GLfixed* m = job.bone[b];
        lanes[b] = {_mm256_setr_epi64x(m[0], m[1], m[2], m[0]),   _mm256_setr_epi64x(m[4], m[5], m[6], m[4]),
                    _mm256_setr_epi64x(m[8], m[9], m[10], m[8]),  _mm256_setr_epi64x(m[12], m[13], m[14], 0),
                    _mm256_setr_epi64x(m[1], m[2], m[1], m[2]),   _mm256_setr_epi64x(m[5], m[6], m[5], m[6]),
                    _mm256_setr_epi64x(m[9], m[10], m[9], m[10]), _mm256_setzero_si256()};
    }
    if (job.perVertex == 4)
        skinVertices<4>(job, lanes);
    else
        skinVertices<0>(job, lanes);
}

}  // namespace

// ---------------------------------------------------------------- skinning

// Each bone's matrix of this frame relative to the mesh, in 16.16: the pose
// from the cache taken back through the mesh's world matrix, after the
// bone's inverse bind matrix.
void PVMESH::computeBoneMatrices(unsigned int slot, GLfixed (*fixed)[16])
{
    const K3MMATRIX invRoot = getFinalMatrix(PV_MESH_SKELETON_ROOT).inverse();
    const K3MMATRIX* pose = getSkeleton(slot);
    const K3MMATRIX identity;
    for (unsigned int b = 0; b < nbBones; b++) {
        K3MMATRIX m = (pose ? pose[b] : identity) * invRoot;
        m = bones[b].inverseBind * m;
        for (int i = 0; i < 16; i++)
            fixed[b][i] = PV_floatToFixed(m.m[i]);
    }
}

bool PVMESH::animate(unsigned int slot)
{
    if (bonesPerVertex == 0)
        return true;
    if (slot >= PV_MESH_SKELETONS) {
        kvfLog("   [!] Animation not computed (cache full) @ PVMESH::animate\n");
        return false;
    }
    if (!skinnedVertices)
        return true;
    GLfixed fixed[PV_MESH_BONES][16];
    computeBoneMatrices(slot, fixed);

    const SKINJOB job = {nbVertices, bonesPerVertex, vertices, normals,         boneIndex,
                         boneWeight, fixed,          nbBones,  skinnedVertices, skinnedNormals};
    if (vectorSkinning)
        skinWithAvx2(job);
    else
        skinOneByOne(job);
    return true;
}
