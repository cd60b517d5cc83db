// FillDotMatrix: draws the dot cloud from the probability grid, keeping each mirror image of a
// grid point with a probability proportional to the point's level.
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "render/orbital_renderer.h"
#include "support/convert.h"
#include "support/modRand.h"
#include "support/simd_dispatch.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace veltara {

namespace detail {
void MarkDrawsBelowAvx512(uint32_t seed, const uint32_t* powers, const int32_t* accept, int32_t n,
                          uint8_t* hit);
}  // namespace detail

namespace {

constexpr int32_t kLast = ProbGrid::kSize - 1;

// The most draws taken from one state at once: the eight images of each point of a row.
constexpr int32_t kMaxRun = 8 * kLast;

// Powers()[k] = 48271^k mod 2147483647: the multiplier of k steps of the generator.
struct GeneratorPowers {
    std::array<uint32_t, kMaxRun + 1> p{};
    constexpr GeneratorPowers() {
        p[0] = 1;
        for (size_t k = 1; k < p.size(); ++k) {
            p[k] = static_cast<uint32_t>(uint64_t{p[k - 1]} * 48271u % 2147483647u);
        }
    }
};
constexpr GeneratorPowers kGeneratorPowers{};
static_assert(kGeneratorPowers.p[2] == 182605794u);

// hit[j] = whether one of the draws powers[8j..8j+8) x seed mod 2^31 - 1 lies below accept[j].
// Integer arithmetic: every path marks the same points.
void MarkDrawsBelowBaseline(uint32_t seed, const uint32_t* powers, const int32_t* accept, int32_t n,
                            uint8_t* hit) {
#if defined(__SSE2__)
    // Four draws a register: the products of the even and odd lanes in 64 bits, reduced as in
    // InlineRandom::Run, then put back in order as four 32-bit lanes.
    const __m128i s = _mm_set1_epi64x(static_cast<int64_t>(seed));
    const __m128i mod64 = _mm_set1_epi64x(2147483647);
    const __m128i mod32 = _mm_set1_epi32(2147483647);
    auto four = [&](const uint32_t* p) {
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const __m128i te = _mm_mul_epu32(w, s);
        const __m128i to = _mm_mul_epu32(_mm_srli_epi64(w, 32), s);
        const __m128i re = _mm_add_epi64(_mm_and_si128(te, mod64), _mm_srli_epi64(te, 31));
        const __m128i ro = _mm_add_epi64(_mm_and_si128(to, mod64), _mm_srli_epi64(to, 31));
        const __m128i r = _mm_or_si128(re, _mm_slli_epi64(ro, 32));
        // r less the modulus when that is not negative, else r.
        const __m128i d = _mm_sub_epi32(r, mod32);
        const __m128i negative = _mm_srai_epi32(d, 31);
        return _mm_or_si128(_mm_and_si128(negative, r), _mm_andnot_si128(negative, d));
    };
    for (int32_t j = 0; j < n; ++j) {
        const __m128i a = _mm_set1_epi32(accept[j]);
        const __m128i below = _mm_or_si128(_mm_cmplt_epi32(four(powers + 8 * j), a),
                                           _mm_cmplt_epi32(four(powers + 8 * j + 4), a));
        hit[j] = _mm_movemask_epi8(below) != 0;
    }
#else
    for (int32_t j = 0; j < n; ++j) {
        hit[j] = 0;
        for (int32_t k = 0; k < 8; ++k) {
            const uint64_t t = uint64_t{powers[8 * j + k]} * seed;
            const uint64_t r = (t & 2147483647u) + (t >> 31);
            const uint64_t draw = r >= 2147483647u ? r - 2147483647u : r;
            if (draw < static_cast<uint64_t>(accept[j])) hit[j] = 1;
        }
    }
#endif
}

void MarkDrawsBelow(uint32_t seed, const uint32_t* powers, const int32_t* accept, int32_t n,
                    uint8_t* hit) {
#if defined(__x86_64__)
    static const bool wide = ActiveSimd().path == SimdPath::Avx512;
    if (wide) return detail::MarkDrawsBelowAvx512(seed, powers, accept, n, hit);
#endif
    MarkDrawsBelowBaseline(seed, powers, accept, n, hit);
}

// The shared generator, stepped inline for the length of one fill. It starts from the module's
// state and hands the state back when the fill ends, also when it ends in an error, so the
// sequence is exactly that of one modRand::NextRandom per draw.
//
// For a state s in 1..2147483646 a step of the generator is 48271 x s mod 2147483647, and k
// steps are 48271^k x s mod 2147483647: a run of draws (the images of one point, or of a
// whole row of points) is worked out side by side from the run's first state, rather than one
// after the other. States 0 and 2147483647 are the stuck generator, which gives 2147483647
// for ever.
class InlineRandom {
  public:
    static constexpr uint32_t kModulus = 2147483647;

    InlineRandom() : mSeed(static_cast<uint32_t>(modRand::State())) {
        mStuck = mSeed == 0 || mSeed == kModulus;
    }
    ~InlineRandom() { modRand::Randomize(static_cast<int32_t>(mSeed)); }
    InlineRandom(const InlineRandom&) = delete;
    InlineRandom& operator=(const InlineRandom&) = delete;

    /// The next `count` draws (1..kMaxRun) into out[0..count).
    void Run(int32_t count, int32_t* out) {
        if (mStuck) {
            for (int32_t k = 0; k < count; ++k) out[k] = static_cast<int32_t>(kModulus);
            mSeed = kModulus;
            return;
        }
        const uint32_t* pw = kGeneratorPowers.p.data() + 1;
        const uint64_t s = mSeed;
        for (int32_t k = 0; k < count; ++k) {
            // Both factors are below 2^31 - 1, so the product is below 2^62; as 2^31 = 1
            // modulo the modulus, its low 31 bits plus the rest (below 2^32) are congruent,
            // and one subtraction, done in signed 32 bits, brings that into 0..2147483646.
            const uint64_t t = uint64_t{pw[k]} * s;
            const uint32_t r = static_cast<uint32_t>(t & kModulus) + static_cast<uint32_t>(t >> 31);
            const int32_t d = static_cast<int32_t>(r - kModulus);
            out[k] = d < 0 ? static_cast<int32_t>(r) : d;
        }
        mSeed = static_cast<uint32_t>(out[count - 1]);
    }

    /// The draws of `n` points of eight images each (8n <= kMaxRun), point j's eight taken
    /// k = 8j..8j+7 after the current state: decide(j, r) receives point j's eight draws r only
    /// when one of them lies below accept[j], the points in order. The state passes all 8n
    /// draws first, as Run's does.
    template <class Decide>
    void Sweep8(int32_t n, const int32_t* accept, Decide&& decide) {
        if (mStuck) {
            // The stuck generator's 2147483647 never lies below an acceptance threshold.
            mSeed = kModulus;
            return;
        }
        const uint32_t* pw = kGeneratorPowers.p.data() + 1;
        const uint64_t s = mSeed;
        mSeed = static_cast<uint32_t>(Step(pw[8 * n - 1], s));
        std::array<uint8_t, kLast> hit;
        MarkDrawsBelow(static_cast<uint32_t>(s), pw, accept, n, hit.data());
        for (int32_t j = 0; j < n; ++j) {
            if (hit[j] == 0) continue;
            int32_t r[8];
            for (int32_t k = 0; k < 8; ++k) r[k] = Step(pw[8 * j + k], s);
            decide(j, r);
        }
    }

    /// Puts the state back to the draw `drawn` of the last run: a fill that stops in the
    /// middle of a run has taken only the draws up to there.
    void RewindTo(int32_t drawn) {
        if (!mStuck) mSeed = static_cast<uint32_t>(drawn);
    }

  private:
    // w x s mod the modulus for w, s in 1..2147483646 (see Run).
    static int32_t Step(uint32_t w, uint64_t s) {
        const uint64_t t = uint64_t{w} * s;
        const uint32_t r = static_cast<uint32_t>(t & kModulus) + static_cast<uint32_t>(t >> 31);
        const int32_t d = static_cast<int32_t>(r - kModulus);
        return d < 0 ? static_cast<int32_t>(r) : d;
    }

    uint32_t mSeed;
    bool mStuck;
};

// The indices x = 1..127 of a grid row whose level lies above `thr`, in increasing order, into
// out; returns their number.
int32_t PointsAbove(const uint8_t* row, uint8_t thr, int32_t* out) {
    if (thr == 255) return 0;
    int32_t n = 0;
#if defined(__SSE2__)
    // Sixteen levels at a time: v > thr exactly when max(v, thr + 1) == v.
    const __m128i bound = _mm_set1_epi8(static_cast<char>(thr + 1));
    for (int32_t base = 0; base < ProbGrid::kSize; base += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + base));
        uint32_t mask =
            static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(v, bound), v)));
        if (base == 0) mask &= ~1u;  // x = 0 belongs to a plane, not to the open octant
        while (mask != 0) {
            out[n++] = base + std::countr_zero(mask);
            mask &= mask - 1;
        }
    }
#else
    for (int32_t x = 1; x <= kLast; ++x) {
        if (row[x] > thr) out[n++] = x;
    }
#endif
    return n;
}

// The mirror image of a point: the sign of each coordinate.
struct Signs {
    int32_t x, y, z;
};

// Mirror images in draw order: a point on an axis, in a coordinate plane, in the open octant.
// (A zero coordinate takes any sign; the tables give the images' order only.)
constexpr Signs kOrigin[1] = {{1, 1, 1}};
constexpr Signs kAxisX[2] = {{1, 1, 1}, {-1, 1, 1}};
constexpr Signs kAxisY[2] = {{1, 1, 1}, {1, -1, 1}};
constexpr Signs kAxisZ[2] = {{1, 1, 1}, {1, 1, -1}};
constexpr Signs kPlaneXY[4] = {{1, 1, 1}, {-1, 1, 1}, {1, -1, 1}, {-1, -1, 1}};
constexpr Signs kPlaneXZ[4] = {{1, 1, 1}, {-1, 1, 1}, {1, 1, -1}, {-1, 1, -1}};
constexpr Signs kPlaneYZ[4] = {{1, 1, 1}, {1, -1, 1}, {1, 1, -1}, {1, -1, -1}};
constexpr Signs kOctant[8] = {{1, 1, 1},   {-1, 1, 1},  {1, -1, 1},  {1, 1, -1},
                              {-1, -1, 1}, {-1, 1, -1}, {1, -1, -1}, {-1, -1, -1}};

// Appends the accepted dots of one fill. The first append replaces the previous cloud; the
// 16-bit counter overflows when the 32768th dot has been stored.
class DotSink {
  public:
    DotSink(std::vector<PointArray>& dots, const int32_t* accept, InlineRandom& rng)
        : mDots(dots), mAccept(accept), mRng(rng) {}

    // One point (x, y, z) of level p and its N mirror images, one draw each: image k has the
    // coordinates signs[k] x (x, y, z). Inline, as Append: a call from the fill, whose cleanups
    // make WebAssembly route each call through a JavaScript trampoline, costs more than these.
    template <int N>
    [[gnu::always_inline]] void Offer(uint8_t p, int32_t x, int32_t y, int32_t z,
                                      const Signs (&signs)[N]) {
        int32_t r[N];
        mRng.Run(N, r);
        Decide(p, x, y, z, signs, r);
    }

    // The same with the point's N draws already taken.
    template <int N>
    void Decide(uint8_t p, int32_t x, int32_t y, int32_t z, const Signs (&signs)[N],
                const int32_t* r) {
        const int32_t accept = mAccept[p];
        // Most images are refused: the draws are tested together first.
        int32_t below = 0;
        for (int k = 0; k < N; ++k) below |= static_cast<int32_t>(r[k] < accept);
        if (below == 0) return;
        for (int k = 0; k < N; ++k) {
            if (r[k] < accept) {
                Append(p, signs[k].x * x, signs[k].y * y, signs[k].z * z, r[k]);
            }
        }
    }

  private:
    [[gnu::always_inline]] void Append(uint8_t p, int32_t x, int32_t y, int32_t z, int32_t drawn) {
        if (mCount == 0) mDots.clear();
        PointArray d;
        d.X = static_cast<int16_t>(x);
        d.Y = static_cast<int16_t>(y);
        d.Z = static_cast<int16_t>(z);
        d.P = p;
        mDots.push_back(d);
        if (mCount == INT16_MAX) mRng.RewindTo(drawn);
        mCount = Add16(mCount, 1);
    }

    std::vector<PointArray>& mDots;
    const int32_t* mAccept;
    InlineRandom& mRng;
    int16_t mCount = 0;
};

}  // namespace

void OrbitalRenderer::FillDotMatrix() {
    // A state's dots are exact samples of its view, not draws from the grid.
    if (mStateElectron != nullptr) {
        FillStateDots();
        return;
    }
    const int16_t target = mSetup.DotTarget;
    const uint8_t thr = mSetup.DotThreshold;

    // No dots wanted: a single dot at the origin stands in for the cloud.
    if (target == 0) {
        mDots.assign(1, PointArray{});
        return;
    }

    // The weight of every level from the threshold up. The threshold level itself can never
    // yield a dot but counts here, so the cloud comes out a little below the target; intended,
    // and the cloud sizes hosts have seen depend on it.
    double Sum = 0.0;
    for (int32_t v = thr; v <= 255; ++v) {
        Sum += static_cast<double>(Mul32(mStats.ProbFreqs[v], v));
    }
    if (Sum == 0.0) {
        mDots.assign(1, PointArray{});
        return;
    }

    // Acceptance threshold of each level against the generator's output.
    int32_t Accept[256] = {};
    for (int32_t v = thr; v <= 255; ++v) {
        const double A = static_cast<double>(v) / Sum * static_cast<double>(target);
        Accept[v] = A <= 1.0 ? ToInt32(A * 2147483647.0) : 2147483647;
    }

    if (mProbMatrix.Empty()) Raise(kErrSubscript);
    const ProbGrid& g = mProbMatrix;
    InlineRandom rng;
    DotSink sink(mDots, Accept, rng);

    // The visit: origin, the three half-axes, the three quarter-planes, the open octant; each
    // point's mirror images drawn in a fixed order, so a seed decides the cloud dot for dot.
    if (const uint8_t p = g(0, 0, 0); p > thr) sink.Offer(p, 0, 0, 0, kOrigin);
    for (int32_t x = 1; x <= kLast; ++x) {
        if (const uint8_t p = g(x, 0, 0); p > thr) sink.Offer(p, x, 0, 0, kAxisX);
    }
    for (int32_t y = 1; y <= kLast; ++y) {
        if (const uint8_t p = g(0, y, 0); p > thr) sink.Offer(p, 0, y, 0, kAxisY);
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        if (const uint8_t p = g(0, 0, z); p > thr) sink.Offer(p, 0, 0, z, kAxisZ);
    }
    for (int32_t y = 1; y <= kLast; ++y) {
        for (int32_t x = 1; x <= kLast; ++x) {
            if (const uint8_t p = g(x, y, 0); p > thr) sink.Offer(p, x, y, 0, kPlaneXY);
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t x = 1; x <= kLast; ++x) {
            if (const uint8_t p = g(x, 0, z); p > thr) sink.Offer(p, x, 0, z, kPlaneXZ);
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t y = 1; y <= kLast; ++y) {
            if (const uint8_t p = g(0, y, z); p > thr) sink.Offer(p, 0, y, z, kPlaneYZ);
        }
    }

    // The open octant, a row at a time: the points of the row above the threshold first,
    // then all their draws from the row's first state, then the decisions in order.
    // Most draws are refused, so only the points with a draw below their threshold go on.
    std::array<int32_t, kLast> above{}, accept{};
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t y = 1; y <= kLast; ++y) {
            const uint8_t* row = g.Data() + ProbGrid::Index(0, y, z);
            const int32_t n = PointsAbove(row, thr, above.data());
            if (n == 0) continue;
            for (int32_t j = 0; j < n; ++j) accept[j] = Accept[row[above[j]]];
            rng.Sweep8(n, accept.data(), [&](int32_t j, const int32_t* r) {
                const int32_t x = above[j];
                sink.Decide(row[x], x, y, z, kOctant, r);
            });
        }
    }

    // A scan that accepted nothing leaves the previous cloud in place (intended: the picture
    // keeps its dots); a first fill without any dot has no cloud to take the bound of.
    if (mDots.empty()) Raise(kErrSubscript);
    FinishCloud();
}

void OrbitalRenderer::FinishCloud() {
    mLastDot = Narrow32(static_cast<int64_t>(mDots.size()) - 1);

    // Depth scale from the farthest dot, in grid units.
    double MaxR2 = 0.0;
    for (const PointArray& d : mDots) {
        const double r2 = static_cast<double>(Mul16(d.X, d.X)) +
                          static_cast<double>(Mul16(d.Y, d.Y)) +
                          static_cast<double>(Mul16(d.Z, d.Z));
        if (r2 > MaxR2) MaxR2 = r2;
    }
    mDotDepthScale = Divide(127.0, std::sqrt(MaxR2));
}

}  // namespace veltara
