// FillDotMatrix: draws the dot cloud from the probability grid, keeping each mirror image of a
// grid point with a probability proportional to the point's level.
#include <cmath>

#include "render/orbital_renderer.h"
#include "support/convert.h"
#include "support/modRand.h"

namespace veltara {

namespace {

constexpr int32_t kLast = ProbGrid::kSize - 1;

// The shared generator, stepped inline for the length of one fill. It starts from the module's
// state and hands the state back when the fill ends, also when the fill ends in an error, so
// the sequence is exactly that of calling modRand::NextRandom once per draw.
class InlineRandom {
public:
    InlineRandom() : mSeed(modRand::State()) {}
    ~InlineRandom() { modRand::Randomize(mSeed); }
    InlineRandom(const InlineRandom&) = delete;
    InlineRandom& operator=(const InlineRandom&) = delete;

    int32_t Next() {
        const int32_t hi = mSeed / 44488;
        const int32_t lo = mSeed % 44488;
        mSeed = 48271 * lo - 3399 * hi;
        if (mSeed <= 0) mSeed += 2147483647;
        return mSeed;
    }

private:
    int32_t mSeed;
};

// Appends the accepted dots of one fill. The first append replaces the previous cloud; the
// 16-bit counter overflows when the 32768th dot has been stored.
class DotSink {
public:
    DotSink(std::vector<PointArray>& dots, const int32_t* accept)
        : mDots(dots), mAccept(accept) {}

    // One draw for one mirror image of a point of level p.
    void Offer(InlineRandom& rng, uint8_t p, int32_t x, int32_t y, int32_t z) {
        if (rng.Next() < mAccept[p]) Append(p, x, y, z);
    }

private:
    void Append(uint8_t p, int32_t x, int32_t y, int32_t z) {
        if (mCount == 0) mDots.clear();
        PointArray d;
        d.X = static_cast<int16_t>(x);
        d.Y = static_cast<int16_t>(y);
        d.Z = static_cast<int16_t>(z);
        d.P = p;
        mDots.push_back(d);
        mCount = Add16(mCount, 1);
    }

    std::vector<PointArray>& mDots;
    const int32_t* mAccept;
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
    DotSink sink(mDots, Accept);

    // The visit: origin, the three half-axes, the three quarter-planes, the open octant; each
    // point's mirror images drawn in a fixed order, so a seed decides the cloud dot for dot.
    if (const uint8_t p = g(0, 0, 0); p > thr) sink.Offer(rng, p, 0, 0, 0);
    for (int32_t x = 1; x <= kLast; ++x) {
        if (const uint8_t p = g(x, 0, 0); p > thr) {
            sink.Offer(rng, p, x, 0, 0);
            sink.Offer(rng, p, -x, 0, 0);
        }
    }
    for (int32_t y = 1; y <= kLast; ++y) {
        if (const uint8_t p = g(0, y, 0); p > thr) {
            sink.Offer(rng, p, 0, y, 0);
            sink.Offer(rng, p, 0, -y, 0);
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        if (const uint8_t p = g(0, 0, z); p > thr) {
            sink.Offer(rng, p, 0, 0, z);
            sink.Offer(rng, p, 0, 0, -z);
        }
    }
    for (int32_t y = 1; y <= kLast; ++y) {
        for (int32_t x = 1; x <= kLast; ++x) {
            if (const uint8_t p = g(x, y, 0); p > thr) {
                sink.Offer(rng, p, x, y, 0);
                sink.Offer(rng, p, -x, y, 0);
                sink.Offer(rng, p, x, -y, 0);
                sink.Offer(rng, p, -x, -y, 0);
            }
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t x = 1; x <= kLast; ++x) {
            if (const uint8_t p = g(x, 0, z); p > thr) {
                sink.Offer(rng, p, x, 0, z);
                sink.Offer(rng, p, -x, 0, z);
                sink.Offer(rng, p, x, 0, -z);
                sink.Offer(rng, p, -x, 0, -z);
            }
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t y = 1; y <= kLast; ++y) {
            if (const uint8_t p = g(0, y, z); p > thr) {
                sink.Offer(rng, p, 0, y, z);
                sink.Offer(rng, p, 0, -y, z);
                sink.Offer(rng, p, 0, y, -z);
                sink.Offer(rng, p, 0, -y, -z);
            }
        }
    }
    for (int32_t z = 1; z <= kLast; ++z) {
        for (int32_t y = 1; y <= kLast; ++y) {
            const uint8_t* row = g.Data() + ProbGrid::Index(0, y, z);
            for (int32_t x = 1; x <= kLast; ++x) {
                const uint8_t p = row[x];
                if (p <= thr) continue;
                sink.Offer(rng, p, x, y, z);
                sink.Offer(rng, p, -x, y, z);
                sink.Offer(rng, p, x, -y, z);
                sink.Offer(rng, p, x, y, -z);
                sink.Offer(rng, p, -x, -y, z);
                sink.Offer(rng, p, -x, y, -z);
                sink.Offer(rng, p, x, -y, -z);
                sink.Offer(rng, p, -x, -y, -z);
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
