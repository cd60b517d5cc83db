// The dot fill: visit and draw order, acceptance, growth, the kept cloud and its edge cases.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "render/orbital_renderer.h"
#include "renderer_test_access.h"
#include "support/modRand.h"
#include "test_support.h"

namespace veltara {
namespace {

using A = RendererTestAccess;
constexpr int64_t kModulus = 2147483647;

PointArray Dot(int x, int y, int z, int p) {
    PointArray d;
    d.X = static_cast<int16_t>(x);
    d.Y = static_cast<int16_t>(y);
    d.Z = static_cast<int16_t>(z);
    d.P = static_cast<uint8_t>(p);
    return d;
}

// A renderer with an empty grid (all 0), no counts, and the given target and threshold.
struct Fill {
    cOrbitalPDF r;
    explicit Fill(int16_t target, uint8_t threshold) {
        A::ProbMatrix(r).Reset();
        A::SetupRec(r).DotTarget = target;
        A::SetupRec(r).DotThreshold = threshold;
    }
    void Put(int x, int y, int z, int p) { A::ProbMatrix(r)(x, y, z) = static_cast<uint8_t>(p); }
    int32_t* Freqs() { return A::Stats(r).ProbFreqs; }
    std::vector<PointArray>& Dots() { return A::Dots(r); }
    void Run() { A::FillDotMatrix(r); }
};

// The mirror images of a grid point in the order the fill draws them, by hand from the
// number of non-zero coordinates.
std::vector<PointArray> Images(int x, int y, int z, int p) {
    if (x == 0 && y == 0 && z == 0) return {Dot(0, 0, 0, p)};
    if (y == 0 && z == 0) return {Dot(x, 0, 0, p), Dot(-x, 0, 0, p)};
    if (x == 0 && z == 0) return {Dot(0, y, 0, p), Dot(0, -y, 0, p)};
    if (x == 0 && y == 0) return {Dot(0, 0, z, p), Dot(0, 0, -z, p)};
    if (z == 0) return {Dot(x, y, 0, p), Dot(-x, y, 0, p), Dot(x, -y, 0, p), Dot(-x, -y, 0, p)};
    if (y == 0) return {Dot(x, 0, z, p), Dot(-x, 0, z, p), Dot(x, 0, -z, p), Dot(-x, 0, -z, p)};
    if (x == 0) return {Dot(0, y, z, p), Dot(0, -y, z, p), Dot(0, y, -z, p), Dot(0, -y, -z, p)};
    return {Dot(x, y, z, p),   Dot(-x, y, z, p),  Dot(x, -y, z, p),  Dot(x, y, -z, p),
            Dot(-x, -y, z, p), Dot(-x, y, -z, p), Dot(x, -y, -z, p), Dot(-x, -y, -z, p)};
}

// (base ^ e) mod kModulus, for the generator state that precedes a wanted output.
int64_t PowMod(int64_t base, int64_t e) {
    int64_t result = 1;
    base %= kModulus;
    while (e > 0) {
        if (e & 1) result = result * base % kModulus;
        base = base * base % kModulus;
        e >>= 1;
    }
    return result;
}

TEST(FillDotMatrix, VisitsBlocksInOrderAndDrawsEveryMirrorImage) {
    // Every level saturates, so every image of every point above the threshold becomes a dot
    // and the cloud lists them in visit order. Points are placed in every block, two in the
    // plane Z = 0 and two in the open octant to show which loop runs innermost.
    Fill f(32767, 0);
    struct P {
        int x, y, z;
    };
    const std::vector<P> inVisitOrder = {{0, 0, 0}, {5, 0, 0}, {0, 6, 0}, {0, 0, 7}, {3, 1, 0},
                                         {1, 2, 0}, {4, 0, 9}, {0, 2, 8}, {2, 1, 3}, {1, 2, 3}};
    for (const P& p : inVisitOrder) f.Put(p.x, p.y, p.z, 200);
    f.Freqs()[200] = 1;
    modRand::Randomize(12345);
    f.Run();

    std::vector<PointArray> expected;
    for (const P& p : inVisitOrder) {
        for (const PointArray& d : Images(p.x, p.y, p.z, 200)) expected.push_back(d);
    }
    ASSERT_EQ(expected.size(), 39u);  // 1 + 3 x 2 + 4 x 4 + 2 x 8
    EXPECT_EQ(f.Dots(), expected);
    EXPECT_EQ(A::LastDot(f.r), 38);
    // The farthest dot is (+-4, 0, +-9): 127 / sqrt(97).
    EXPECT_DOUBLE_EQ(A::DotDepthScale(f.r), 127.0 / std::sqrt(97.0));
}

TEST(FillDotMatrix, ZeroTargetOrZeroSumGivesOneDotAtTheOrigin) {
    struct Case {
        const char* name;
        int16_t target;
        uint8_t threshold;
        int level;  // the one level with a count (100 points)
    };
    const Case cases[] = {
        {"zero target", 0, 0, 80},
        {"nothing at or above the threshold", 500, 90, 80},
        {"only level 0 counted", 500, 0, 0},
    };
    for (const Case& c : cases) {
        Fill f(c.target, c.threshold);
        f.Put(4, 4, 4, c.level);
        f.Freqs()[c.level] = 100;
        f.Dots() = {Dot(1, 2, 3, 4), Dot(5, 6, 7, 8)};
        A::LastDot(f.r) = 1;
        A::DotDepthScale(f.r) = 3.5;
        modRand::Randomize(777);
        f.Run();
        EXPECT_EQ(f.Dots(), std::vector<PointArray>{PointArray{}}) << c.name;
        // These describe the last scanned cloud and stay as they were.
        EXPECT_EQ(A::LastDot(f.r), 1) << c.name;
        EXPECT_EQ(A::DotDepthScale(f.r), 3.5) << c.name;
    }
}

TEST(FillDotMatrix, ScanWithoutADotKeepsThePreviousCloud) {
    struct Case {
        const char* name;
        uint8_t threshold;
        int32_t seed;
    };
    // Threshold 255: no level lies above it although level 255 makes Sum non-zero.
    // Seed 0: the generator sticks at 2147483647, which no acceptance threshold exceeds.
    const Case cases[] = {{"threshold 255", 255, 4242}, {"seed 0", 0, 0}};
    for (const Case& c : cases) {
        Fill f(32767, c.threshold);
        f.Put(2, 2, 2, 255);
        f.Put(3, 0, 0, 255);
        f.Freqs()[255] = 10;
        const std::vector<PointArray> old = {Dot(3, 4, 0, 9), Dot(-1, 0, 0, 9)};
        f.Dots() = old;
        modRand::Randomize(c.seed);
        f.Run();
        EXPECT_EQ(f.Dots(), old) << c.name;
        EXPECT_EQ(A::LastDot(f.r), 1) << c.name;
        EXPECT_DOUBLE_EQ(A::DotDepthScale(f.r), 127.0 / 5.0) << c.name;  // (3, 4, 0)
    }
}

TEST(FillDotMatrix, FirstFillWithoutADotRaises9) {
    Fill f(1000, 0);
    f.Put(1, 1, 1, 50);
    f.Freqs()[50] = 8;
    modRand::Randomize(0);
    EXPECT_VT_ERROR(f.Run(), 9);
}

TEST(FillDotMatrix, KeptCloudAtTheOriginRaises11) {
    // The one-dot cloud of a zero target has its farthest dot at distance 0.
    Fill f(0, 255);
    f.Put(1, 1, 1, 255);
    f.Freqs()[255] = 8;
    f.Run();
    A::SetupRec(f.r).DotTarget = 100;
    modRand::Randomize(99);
    EXPECT_VT_ERROR(f.Run(), 11);
}

TEST(FillDotMatrix, AcceptanceOfExactlyOneTakesEveryDraw) {
    // The state before the largest output 2147483646 is 2147483646 / 48271 mod 2147483647;
    // only an acceptance threshold of 2147483647 takes that draw.
    const int64_t inverse = PowMod(48271, kModulus - 2);
    const int32_t seed = static_cast<int32_t>((kModulus - 1) * inverse % kModulus);
    ASSERT_EQ(std::minstd_rand(static_cast<uint32_t>(seed))(), 2147483646u);

    struct Case {
        const char* name;
        int32_t extraCount;  // points counted at level 1, which lowers A below 1
        bool dot;
    };
    // Level 100 alone with a target of 1: A = 100 / 100 x 1 = 1 exactly. The point lies on the
    // X axis; the draw of its second image, 2147483647 - 48271, is taken in the first case
    // and refused in the second as well.
    const Case cases[] = {{"A exactly 1", 0, true}, {"A = 100 / 101", 1, false}};
    for (const Case& c : cases) {
        Fill f(1, 0);
        f.Put(2, 0, 0, 100);
        f.Freqs()[100] = 1;
        f.Freqs()[1] = c.extraCount;
        f.Dots() = {Dot(7, 0, 0, 1)};
        modRand::Randomize(seed);
        f.Run();
        const std::vector<PointArray> expected =
            c.dot ? std::vector<PointArray>{Dot(2, 0, 0, 100), Dot(-2, 0, 0, 100)}
                  : std::vector<PointArray>{Dot(7, 0, 0, 1)};
        EXPECT_EQ(f.Dots(), expected) << c.name;
    }
}

TEST(FillDotMatrix, The32768thDotRaises6WithAllDotsKept) {
    // Every point at level 255 and a saturating target: the origin, the 762 half-axis images,
    // then the plane Z = 0 four images per point. 32768 - 763 = 32005 images there: 8001 whole
    // points (the rows Y = 1..63 of 127 points each) and the first image of the next, (1, 64, 0).
    Fill f(32767, 0);
    std::fill(A::ProbMatrix(f.r).Data(), A::ProbMatrix(f.r).Data() + 128 * 128 * 128,
              static_cast<uint8_t>(255));
    f.Freqs()[255] = 1;
    modRand::Randomize(2024);
    EXPECT_VT_ERROR(f.Run(), 6);
    ASSERT_EQ(f.Dots().size(), 32768u);
    EXPECT_EQ(f.Dots().front(), Dot(0, 0, 0, 255));
    EXPECT_EQ(f.Dots()[763], Dot(1, 1, 0, 255));
    EXPECT_EQ(f.Dots()[32766], Dot(-127, -63, 0, 255));
    EXPECT_EQ(f.Dots()[32767], Dot(1, 64, 0, 255));
    // The fill stopped after the draw of the 32768th dot: the state is 48271^32768 x seed.
    EXPECT_EQ(modRand::State(), PowMod(48271, 32768) * 2024 % kModulus);
}

TEST(FillDotMatrix, LevelWeightBeyond32BitsRaises6) {
    // 255^3 points at level 255 weigh 4228250625, beyond the 32-bit range.
    Fill f(100, 0);
    f.Freqs()[255] = 16581375;
    EXPECT_VT_ERROR(f.Run(), 6);
}

// A plain reference fill: one draw at a time from the standard library's minimal-standard
// generator, the blocks visited by explicit loops. The engine's fill must match it dot for dot
// on a whole catalogue grid.
std::vector<PointArray> ReferenceFill(const ProbGrid& g, const int32_t* freqs, int target, int thr,
                                      uint32_t seed) {
    double sum = 0;
    for (int v = thr; v < 256; ++v) sum += static_cast<double>(freqs[v]) * v;
    int64_t accept[256] = {};
    for (int v = thr; v < 256; ++v) {
        const double a = v / sum * target;
        accept[v] = a <= 1 ? static_cast<int64_t>(std::nearbyint(a * 2147483647.0)) : kModulus;
    }
    std::minstd_rand rng(seed);
    std::vector<PointArray> dots;
    auto visit = [&](int x, int y, int z) {
        const int p = g(x, y, z);
        if (p <= thr) return;
        for (const PointArray& d : Images(x, y, z, p)) {
            if (static_cast<int64_t>(rng()) < accept[p]) dots.push_back(d);
        }
    };
    visit(0, 0, 0);
    for (int x = 1; x < 128; ++x) visit(x, 0, 0);
    for (int y = 1; y < 128; ++y) visit(0, y, 0);
    for (int z = 1; z < 128; ++z) visit(0, 0, z);
    for (int y = 1; y < 128; ++y)
        for (int x = 1; x < 128; ++x) visit(x, y, 0);
    for (int z = 1; z < 128; ++z)
        for (int x = 1; x < 128; ++x) visit(x, 0, z);
    for (int z = 1; z < 128; ++z)
        for (int y = 1; y < 128; ++y) visit(0, y, z);
    for (int z = 1; z < 128; ++z) {
        for (int y = 1; y < 128; ++y) {
            for (int x = 1; x < 128; ++x) visit(x, y, z);
        }
    }
    return dots;
}

TEST(FillDotMatrix, MatchesAPlainReferenceFillOnWholeGrids) {
    struct Case {
        int16_t index;
        ViewMode view;
        int16_t radius;
        int16_t target;
        uint8_t threshold;
    };
    const Case cases[] = {{9, ViewMode::PDF, 18, 5000, 30},
                          {36, ViewMode::DRPDF, 32, 25000, 50},
                          {1, ViewMode::PDF, 8, 12000, 0},
                          {26, ViewMode::DRPDF, 32, 3000, 200}};
    for (const Case& c : cases) {
        vt_test::FixedClock clock(1000000000);
        auto r = std::make_unique<OrbitalRenderer>(c.view);
        r->Setup({c.radius, c.target, c.threshold, 0, c.index, c.view});
        for (uint32_t seed : {1u, 30517u, 65536u}) {
            modRand::Randomize(static_cast<int32_t>(seed));
            A::FillDotMatrix(*r);
            const std::vector<PointArray> expected = ReferenceFill(
                A::ProbMatrix(*r), A::Stats(*r).ProbFreqs, c.target, c.threshold, seed);
            ASSERT_GT(expected.size(), 500u);
            EXPECT_EQ(A::Dots(*r), expected) << c.index << " seed " << seed;
        }
    }
}

}  // namespace
}  // namespace veltara
