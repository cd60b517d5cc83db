// FillDotMatrix: draws the dot cloud from the probability grid, keeping each mirror image of a
// grid point with a probability proportional to the point's level.
#include <array>
#include <cmath>
#include <cstdint>

#include "render/orbital_renderer.h"
#include "support/convert.h"
#include "support/modRand.h"

namespace veltara {

namespace {

constexpr int32_t kLast = ProbGrid::kSize - 1;

// kPowers[k] = 48271^k mod 2147483647: the multiplier of k steps of the generator.
constexpr std::array<uint64_t, 9> GeneratorPowers() {
    std::array<uint64_t, 9> p{};
    p[0] = 1;
    for (size_t k = 1; k < p.size(); ++k) p[k] = p[k - 1] * 48271u % 2147483647u;
    return p;
}
static_assert(GeneratorPowers()[2] == 182605794u);

// The shared generator, stepped inline for the length of one fill. It starts from the module's
// state and hands the state back when the fill ends, also when it ends in an error, so the
// sequence is exactly that of one modRand::NextRandom per draw.
//
// For a state s in 1..2147483646 a step of the generator is 48271 x s mod 2147483647, and k
// steps are 48271^k x s mod 2147483647: the draws of one point's mirror images are worked out
// side by side from the point's first state, rather than one after the other. States 0 and
// 2147483647 are the stuck generator, which gives 2147483647 for ever.
class InlineRandom {
public:
    static constexpr uint64_t kModulus = 2147483647;

    InlineRandom() : mSeed(static_cast<uint64_t>(modRand::State())) {
        mStuck = mSeed == 0 || mSeed == kModulus;
    }
    ~InlineRandom() { modRand::Randomize(static_cast<int32_t>(mSeed)); }
    InlineRandom(const InlineRandom&) = delete;
    InlineRandom& operator=(const InlineRandom&) = delete;

    /// The next N draws into out[0..N); true when any of them lies below `accept`.
    template <int N>
    bool Next(int32_t* out, int32_t accept) {
        if (mStuck) {
            for (int k = 0; k < N; ++k) out[k] = static_cast<int32_t>(kModulus);
            mSeed = kModulus;
            return false;  // 2147483647 is below no acceptance threshold
        }
        int32_t below = 0;
        for (int k = 0; k < N; ++k) {
            out[k] = MulMod(kPowers[k + 1], mSeed);
            below |= static_cast<int32_t>(out[k] < accept);
        }
        mSeed = static_cast<uint64_t>(out[N - 1]);
        return below != 0;
    }

    /// Puts the state back to the draw `drawn` of the last batch: a fill that stops in the
    /// middle of a point's images has taken only the draws up to there.
    void RewindTo(int32_t drawn) {
        if (!mStuck) mSeed = static_cast<uint64_t>(drawn);
    }

private:
    static int32_t MulMod(uint64_t a, uint64_t s) {
        // a, s < 2^31 - 1: the product is below 2^62, and 2^31 = 1 modulo the modulus, so the
        // low 31 bits plus the rest is below 2^32 and congruent; one subtraction, done in
        // signed 32 bits, brings it into 0..2147483646.
        const uint64_t t = a * s;
        const uint32_t r = static_cast<uint32_t>((t & kModulus) + (t >> 31));
        const int32_t d = static_cast<int32_t>(r - static_cast<uint32_t>(kModulus));
        return d < 0 ? static_cast<int32_t>(r) : d;
    }
    static constexpr std::array<uint64_t, 9> kPowers = GeneratorPowers();

    uint64_t mSeed;
    bool mStuck;
};

// Appends the accepted dots of one fill. The first append replaces the previous cloud; the
// 16-bit counter overflows when the 32768th dot has been stored.
class DotSink {
public:
    DotSink(std::vector<PointArray>& dots, const int32_t* accept, InlineRandom& rng)
        : mDots(dots), mAccept(accept), mRng(rng) {}

    // One point of level p and its N mirror images (x, y, z signs from the table), one draw
    // each, in the order given.
    template <int N>
    void Offer(uint8_t p, const int32_t (&images)[N][3]) {
        int32_t r[N];
        const int32_t accept = mAccept[p];
        // Most images are refused: the draws are tested together first.
        if (!mRng.Next<N>(r, accept)) return;
        for (int k = 0; k < N; ++k) {
            if (r[k] < accept) Append(p, images[k], r[k]);
        }
    }

private:
    void Append(uint8_t p, const int32_t (&c)[3], int32_t drawn) {
        if (mCount == 0) mDots.clear();
        PointArray d;
        d.X = static_cast<int16_t>(c[0]);
        d.Y = static_cast<int16_t>(c[1]);
        d.Z = static_cast<int16_t>(c[2]);
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
    if (const uint8_t p = g(0, 0, 0); p > thr) sink.Offer<1>(p, {{0, 0, 0}});
    for (int32_t x = 1; x <= kLast; ++x) {
        if (const uint8_t p = g(x, 0, 0); p > thr) sink.Offer<2>(p, {{x, 0, 0}, {-x, 0, 0}});
    }
    for (int32_t y = 1; y <= kLast; ++y) {
        if (const uint8_t p = g(0, y, 0); p > thr) sink.Offer<2>(p, {{0, y, 0}, {0, -y, 0}});
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        if (const uint8_t p = g(0, 0, z); p > thr) sink.Offer<2>(p, {{0, 0, z}, {0, 0, -z}});
    }
    for (int32_t y = 1; y <= kLast; ++y) {
        for (int32_t x = 1; x <= kLast; ++x) {
            if (const uint8_t p = g(x, y, 0); p > thr) {
                sink.Offer<4>(p, {{x, y, 0}, {-x, y, 0}, {x, -y, 0}, {-x, -y, 0}});
            }
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t x = 1; x <= kLast; ++x) {
            if (const uint8_t p = g(x, 0, z); p > thr) {
                sink.Offer<4>(p, {{x, 0, z}, {-x, 0, z}, {x, 0, -z}, {-x, 0, -z}});
            }
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t y = 1; y <= kLast; ++y) {
            if (const uint8_t p = g(0, y, z); p > thr) {
                sink.Offer<4>(p, {{0, y, z}, {0, -y, z}, {0, y, -z}, {0, -y, -z}});
            }
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t y = 1; y <= kLast; ++y) {
            const uint8_t* row = g.Data() + ProbGrid::Index(0, y, z);
            for (int32_t x = 1; x <= kLast; ++x) {
                const uint8_t p = row[x];
                if (p <= thr) continue;
                sink.Offer<8>(p, {{x, y, z},
                                  {-x, y, z},
                                  {x, -y, z},
                                  {x, y, -z},
                                  {-x, -y, z},
                                  {-x, y, -z},
                                  {x, -y, -z},
                                  {-x, -y, -z}});
            }
        }
    }

    // A scan that accepted nothing leaves the previous cloud in place (intended: the picture
    // keeps its dots); a first fill without any dot has no cloud to take the bound of.
    if (mDots.empty()) Raise(kErrSubscript);
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
